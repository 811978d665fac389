#include "toolkit/zoom_spectrum.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>

#include "toolkit/bessel.h"
#include "toolkit/polynomial.h"
#include "toolkit/scalar.h"
#include "toolkit/simd.h"

namespace coder {
namespace {

constexpr int taps = 18;  // values of the transform that a bin is computed from
constexpr int halfSupport = taps / 2;
constexpr std::size_t margin = halfSupport - 1;  // values of the transform below DC
constexpr std::size_t lanes = 8;                 // bins computed side by side: a block
constexpr std::size_t blocks = 2;                // blocks computed side by side
constexpr std::size_t width = taps + 3;          // values that the bins of a block are computed from, at most

// Half the kernel's bandwidth: just below 3/4 of pi * taps, where the first alias begins. The kernel reaches e^42, so
// rounding its arguments to doubles would cost 42 units in the last place.
constexpr long double beta = 0.997L * 0.75L * piL * taps;

// The kernel's Fourier transform at a sample whose squared distance from the row's middle is v (n/2)^2, 0 <= v <= 1, is
// taps * sinh(s) / s with s^2 = beta^2 - edge^2 v: a power series in s^2.
constexpr long double edge = piL * taps / 4;
constexpr int sinhTerms = 100;
constexpr auto sinhRatio = [](int k) { return 1.0L / (2 * k) / (2 * k + 1); };
constexpr long double sinhAtEdge = seriesAround<1>(beta * beta - edge * edge, 0.0L, sinhTerms, sinhRatio)[0];

/// Weight of a sample: 1 over the kernel's transform, scaled to 1 at v = 1, in powers of 2 v - 1. The nearest pole is
/// near v = 9, 17 times as far from the centre of the series as its ends; the terms left out are below 1e-17.
constexpr auto sampleWeightSeries = [] {
    constexpr std::size_t terms = 24;
    const auto transform =
        seriesAround<terms>(beta * beta - edge * edge / 2.0L, -edge * edge / 2.0L, sinhTerms, sinhRatio);
    std::array<long double, terms> inverse{sinhAtEdge / transform[0]};
    for (std::size_t m = 1; m < terms; ++m) {
        for (std::size_t i = 1; i <= m; ++i) {
            inverse[m] -= transform[i] * inverse[m - i] / transform[0];
        }
    }
    return rounded(inverse);
}();

ALWAYS_INLINE inline void multiplyBySampleWeights(double* x, int n) {
    const int middle = n / 2;
    const double perLength = 2.0 / n;
    for (int t = 0; t < n; ++t) {
        const double distance = perLength * (t - middle);
        x[t] *= polynomial(sampleWeightSeries, 2.0 * distance * distance - 1.0);
    }
}

/// Kernel weights of the values around a bin at a fraction of the way from one value to the next, scaled like the
/// sample weights. The kernel ends with a step; a value exactly at the step has weight 0.
std::array<double, taps> kernelAt(long double fraction) {
    assert(fraction >= 0.0L && fraction < 1.0L);
    std::array<double, taps> square{};
    std::array<double, taps> squareLow{};
    for (std::size_t j = 0; j < taps; ++j) {
        const long double ratio = (fraction + (halfSupport - 1) - static_cast<long double>(j)) / halfSupport;
        const long double exact = beta * beta * (1.0L - ratio) * (1.0L + ratio);
        square[j] = static_cast<double>(exact);
        squareLow[j] = static_cast<double>(exact - static_cast<long double>(square[j]));
    }
    std::array<double, taps> kernel{};
    besseliOfSquare(square, squareLow, kernel.data());
    for (std::size_t j = 0; j < taps; ++j) {
        kernel[j] = square[j] > 0.0 ? kernel[j] / static_cast<double>(taps * sinhAtEdge) : 0.0;
    }
    return kernel;
}

int checkedLength(int n, int factor) {
    const std::int64_t length = std::int64_t{n} * factor;
    if (length > std::numeric_limits<int>::max()) {
        throw std::bad_array_new_length();
    }
    return static_cast<int>(length);
}

/// The largest of |x[i]|, NaN skipped; 0 when there is none.
ALWAYS_INLINE inline double largestOf(const double* x, std::size_t n) {
    double largest[4 * lanes] = {};
    const auto see = [&](std::size_t lane, double value) {
        const double a = std::fabs(value);
        largest[lane] = a > largest[lane] ? a : largest[lane];
    };
    std::size_t i = 0;
    for (; i + 4 * lanes <= n; i += 4 * lanes) {
        for (std::size_t lane = 0; lane < 4 * lanes; ++lane) {
            see(lane, x[i + lane]);
        }
    }
    for (; i < n; ++i) {
        see(0, x[i]);
    }
    return *std::max_element(std::begin(largest), std::end(largest));
}

double largestMagnitude(samples x) {
    return vectorized<largestOf>(x.data(), x.size());
}

/// A plain root of squares suffices: the scaled samples of a row are of the order of 1.
inline double magnitude(double re, double im) {
    return std::sqrt(re * re + im * im);
}

/// out[k] = scale |z[k]| for k < count.
ALWAYS_INLINE inline void scaledMagnitudes(const creal_T* z, double scale, std::size_t count, double* out) {
    for (std::size_t k = 0; k < count; ++k) {
        out[k] = scale * magnitude(z[k].re, z[k].im);
    }
}

/// to[lanes block + lane] = scale |sum over j of kernel[j][lane] z[step block + j]|. The blocks share each load of the
/// kernel.
ALWAYS_INLINE inline void filteredBlocks(const creal_T* z, const double* kernel, double scale, std::size_t step,
                                         double* to) {
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        double re[blocks] = {};
        double im[blocks] = {};
#pragma GCC unroll 32
        for (std::size_t j = 0; j < width; ++j) {
            const double weight = kernel[j * lanes + lane];
#pragma GCC unroll 4
            for (std::size_t block = 0; block < blocks; ++block) {
                re[block] += weight * z[step * block + j].re;
                im[block] += weight * z[step * block + j].im;
            }
        }
#pragma GCC unroll 4
        for (std::size_t block = 0; block < blocks; ++block) {
            to[lanes * block + lane] = scale * magnitude(re[block], im[block]);
        }
    }
}

/// Writes `count` magnitudes, `blocks` blocks at a time; the last ones go through a local buffer.
ALWAYS_INLINE inline void filteredMagnitudes(const creal_T* z, const double* kernel, double scale, std::size_t step,
                                             std::size_t count, double* out) {
    constexpr std::size_t atOnce = blocks * lanes;
    const std::size_t whole = count / atOnce * atOnce;
    for (std::size_t done = 0; done < whole; done += atOnce, z += blocks * step) {
        filteredBlocks(z, kernel, scale, step, out + done);
    }
    if (whole < count) {
        double last[atOnce];
        filteredBlocks(z, kernel, scale, step, last);
        std::copy_n(last, count - whole, out + whole);
    }
}

}  // namespace

// Layout of kernel_, for 8 lanes and factor 16, thus 8 bins per value: lane l is the bin at l/8 of the way from one
// value to the next, and all lanes use the same 18 values (rows j; K(l) are the weights of kernelAt(l/8)):
//
//              lane 0      lane 1     ...  lane 7
//     j =  0   K(0)[0]     K(1)[0]         K(7)[0]
//     ...
//     j = 17   K(0)[17]    K(1)[17]        K(7)[17]
//     j = 18   0           0               0          (and up to width - 1)
//
// For factor 4 there are 2 bins per value: a block of 8 bins goes over 4 values, and each pair of lanes starts one
// value later:
//
//              lane 0   lane 1   lane 2   lane 3   lane 4   ...  lane 7
//     j =  0   K(0)[0]  K(1)[0]  0        0        0             0
//     j =  1   K(0)[1]  K(1)[1]  K(0)[0]  K(1)[0]  0             0
//     j =  2   K(0)[2]  K(1)[2]  K(0)[1]  K(1)[1]  K(0)[0]       0
//     ...
//     j = 20   0        0        0        0        0             K(1)[17]
ZoomSpectrum::ZoomSpectrum(int n, int factor, std::span<const double> window)
    : n_(n),
      binsPerValue_(factor / 2),
      bins_(checkedLength(n, factor) / 2 + 1),
      weights_(window.begin(), window.end()),
      fft_(2 * n),
      spectrum_(static_cast<std::size_t>(n) + blocks * width) {
    assert(static_cast<int>(window.size()) == n && (factor == 2 || factor == 4 || factor == 16));
    if (binsPerValue_ == 1) {
        return;
    }
    vectorized<multiplyBySampleWeights>(weights_.data(), n);  // none is larger than 1
    kernel_.resize(width * lanes);
    const auto perValue = static_cast<std::size_t>(binsPerValue_);
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        const std::size_t firstValue = lane / perValue;
        assert(firstValue + taps <= width);
        const std::array kernel = kernelAt(static_cast<long double>(lane % perValue) / binsPerValue_);
        for (std::size_t j = 0; j < taps; ++j) {
            kernel_[(firstValue + j) * lanes + lane] = kernel[j];
        }
        kernelSum_ = std::max(kernelSum_, std::accumulate(kernel.begin(), kernel.end(), 0.0));
    }
}

void ZoomSpectrum::load(samples x) {
    assert(static_cast<int>(x.size()) == n_);
    const double largest = largestMagnitude(x);
    const int exponent = largest > 0.0 && std::isfinite(largest) ? std::clamp(std::ilogb(largest), -1000, 1000) : 0;
    const double perScale = std::ldexp(1.0, -exponent);
    blockScale_ = std::ldexp(1.0, exponent);
    // The kernel is even about the row's middle, so the middle goes to index 0 of the transform, and the first half of
    // the row to the end.
    const int middle = binsPerValue_ == 1 ? 0 : n_ / 2;
    const auto weighted = [perScale](double sample, double weight) { return sample * perScale * weight; };
    double* const padded = fft_.workspace();
    double* const firstHalf = padded + 2 * static_cast<std::size_t>(n_) - middle;
    double* const zeros = std::transform(x.begin() + middle, x.end(), weights_.begin() + middle, padded, weighted);
    std::fill(zeros, firstHalf, 0.0);
    std::transform(x.begin(), x.begin() + middle, weights_.begin(), firstHalf, weighted);
    creal_T* const half = spectrum_.data() + margin;
    fft_.forward({padded, 2 * static_cast<std::size_t>(n_)}, half);
    // The transform of a real row is continued below 0 and above half the rate by symmetry, with period 2n.
    const auto continued = [&](int k) {
        const int wrapped = (k % (2 * n_) + 2 * n_) % (2 * n_);
        const creal_T mirrored = half[2 * n_ - std::max(wrapped, n_)];
        return wrapped > n_ ? creal_T{mirrored.re, -mirrored.im} : half[wrapped];
    };
    for (int k = 1; k <= halfSupport; ++k) {
        half[n_ + k] = continued(n_ + k);
        if (k < halfSupport) {
            half[-k] = continued(-k);
        }
    }
}

void ZoomSpectrum::magnitudes(int count, double* out) const {
    assert(count <= bins_);
    magnitudesFrom(0, count, out);
}

void ZoomSpectrum::magnitudesFrom(int bin, int count, double* out) const {
    assert(bin % static_cast<int>(lanes) == 0 && count >= 0 && bin + count <= bins_);
    const creal_T* const first = spectrum_.data() + bin / binsPerValue_;
    const auto total = static_cast<std::size_t>(count);
    if (binsPerValue_ == 1) {
        vectorized<scaledMagnitudes>(first + margin, blockScale_, total, out);
    } else {
        const std::size_t step = lanes / static_cast<std::size_t>(binsPerValue_);
        vectorized<filteredMagnitudes>(first, static_cast<const double*>(kernel_.data()), blockScale_, step, total,
                                       out);
    }
}

double ZoomSpectrum::largest(samples known) const {
    const double largestKnown = largestMagnitude(known);
    // A bin is a weighted sum of values up to halfSupport away. Its magnitude is at most the sum of the weights times
    // the largest magnitude of these values, which is at most sqrt(2) times their largest part.
    const int first = static_cast<int>(known.size() / lanes * lanes);
    const std::span values = std::span(spectrum_).subspan(static_cast<std::size_t>(first / binsPerValue_));
    const double largestPart = largestMagnitude({&values.data()->re, 2 * values.size()});
    if (largestPart * 1.4142136 * kernelSum_ * blockScale_ <= largestKnown) {
        return largestKnown;
    }
    std::vector<double> rest(static_cast<std::size_t>(bins_ - first));
    magnitudesFrom(first, bins_ - first, rest.data());
    return std::max(largestKnown, largestMagnitude(rest));
}

}  // namespace coder
