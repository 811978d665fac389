#include "toolkit/zoom_spectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>

#include "toolkit/polynomial.h"
#include "toolkit/scalar.h"
#include "toolkit/special_functions.h"
#include "toolkit/vector_clones.h"

namespace coder {
namespace {

constexpr int taps = 18;
constexpr int reach = taps / 2;
constexpr std::size_t margin = reach - 1;  // values of the transform below DC
constexpr std::size_t lanes = 8;           // bins that are made side by side
constexpr std::size_t blocks = 2;          // of so many
constexpr std::size_t width = taps + 3;    // values that so many bins are made from, at most

// Half the kernel's bandwidth: just inside 3/4 of pi * taps, where the first alias begins. Values around e^42 follow
// from it, so arguments rounded to doubles would cost 42 units in the last place.
constexpr long double beta = 0.997L * 0.75L * piL * taps;

// The kernel's Fourier transform for samples at v (n/2)^2 square distance from the row's middle, 0 <= v <= 1, is taps *
// sinh(s) / s with s^2 = beta^2 - edge^2 v: a power series in s^2.
constexpr long double edge = piL * taps / 4;
constexpr int sinhTerms = 100;
constexpr auto sinhRatio = [](int k) { return 1.0L / (2 * k) / (2 * k + 1); };
constexpr long double sinhAtEdge = seriesAround<1>(beta * beta - edge * edge, 0.0L, sinhTerms, sinhRatio)[0];

/// What samples are multiplied with: 1 over the kernel's transform, scaled to 1 at v = 1, in powers of 2 v - 1. The
/// nearest pole lies near v = 9, 17 times as far from the series' middle as its ends; the terms left out are below
/// 1e-17.
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

RT305_4_VECTOR_CLONES void multiplyBySampleWeights(double* x, int n) {
    const int middle = n / 2;
    const double perLength = 2.0 / n;
    for (int t = 0; t < n; ++t) {
        const double distance = perLength * (t - middle);
        x[t] *= polynomial(sampleWeightSeries, 2.0 * distance * distance - 1.0);
    }
}

/// Kernel weights of the values around a bin at a fraction of the way from one value to the next, scaled like the
/// samples' weights. The kernel ends with a step; a value that stands right on it has no weight.
std::array<double, taps> kernelAt(long double fraction) {
    std::array<double, taps> square{};
    std::array<double, taps> squareLow{};
    for (std::size_t j = 0; j < taps; ++j) {
        const long double ratio = (fraction + (reach - 1) - static_cast<long double>(j)) / reach;
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
RT305_4_VECTOR_CLONES double largestMagnitude(const double* x, std::size_t n) {
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

/// The magnitudes below are plain roots of sums of squares: a row's samples are of the order of 1.
inline double magnitude(double re, double im) {
    return std::sqrt(re * re + im * im);
}

/// out[k] = unit |z[k]| for k < count.
RT305_4_VECTOR_CLONES void scaledMagnitudes(const creal_T* z, double unit, std::size_t count, double* out) {
    for (std::size_t k = 0; k < count; ++k) {
        out[k] = unit * magnitude(z[k].re, z[k].im);
    }
}

/// to[lanes block + lane] = unit |sum over j of kernel[j][lane] z[step block + j]|. Several blocks share the kernel's
/// way into the registers.
[[gnu::always_inline]] inline void filteredBlocks(const creal_T* z, const double* kernel, double unit, std::size_t step,
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
            to[lanes * block + lane] = unit * magnitude(re[block], im[block]);
        }
    }
}

/// The same on and on, `count` results.
RT305_4_VECTOR_CLONES void filteredMagnitudes(const creal_T* z, const double* kernel, double unit, std::size_t step,
                                              std::size_t count, double* out) {
    constexpr std::size_t atOnce = blocks * lanes;
    const std::size_t whole = count / atOnce * atOnce;
    for (std::size_t done = 0; done < whole; done += atOnce, z += blocks * step) {
        filteredBlocks(z, kernel, unit, step, out + done);
    }
    if (whole < count) {
        double last[atOnce];
        filteredBlocks(z, kernel, unit, step, last);
        std::copy_n(last, count - whole, out + whole);
    }
}

}  // namespace

ZoomSpectrum::ZoomSpectrum(int n, int factor, std::span<const double> window)
    : n_(n),
      phases_(factor / 2),
      bins_(checkedLength(n, factor) / 2 + 1),
      weights_(window.begin(), window.end()),
      fft_(2 * n),
      circle_(2 * static_cast<std::size_t>(n)),
      spectrum_(static_cast<std::size_t>(n) + blocks * width) {
    assert(static_cast<int>(window.size()) == n && (factor == 2 || factor == 4 || factor == 16));
    if (phases_ == 1) {
        return;
    }
    // The largest sample weight is 1.
    multiplyBySampleWeights(weights_.data(), n);
    kernel_.resize(width * lanes);
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        const auto phases = static_cast<std::size_t>(phases_);
        const std::array kernel = kernelAt(static_cast<long double>(lane % phases) / phases_);
        for (std::size_t j = 0; j < taps; ++j) {
            kernel_[(j + lane / phases) * lanes + lane] = kernel[j];
        }
        kernelSum_ = std::max(kernelSum_, std::accumulate(kernel.begin(), kernel.end(), 0.0));
    }
}

void ZoomSpectrum::load(samples x) {
    assert(static_cast<int>(x.size()) == n_);
    const double largest = largestMagnitude(x.data(), x.size());
    const int exponent = largest > 0.0 && std::isfinite(largest) ? std::clamp(std::ilogb(largest), -1000, 1000) : 0;
    const double perUnit = std::ldexp(1.0, -exponent);
    unit_ = std::ldexp(1.0, exponent);
    // The kernel is even about the row's middle, which therefore stands at index 0 of the transformed circle.
    const int middle = phases_ == 1 ? 0 : n_ / 2;
    const auto weighted = [perUnit](double sample, double weight) { return sample * perUnit * weight; };
    std::transform(x.begin(), x.begin() + middle, weights_.begin(), circle_.end() - middle, weighted);
    std::transform(x.begin() + middle, x.end(), weights_.begin() + middle, circle_.begin(), weighted);
    creal_T* const half = spectrum_.data() + margin;
    fft_.forward(circle_, half);
    // A real row's transform goes on by symmetry below 0 and above half the rate, with period 2n.
    const auto continued = [&](int k) {
        const int wrapped = (k % (2 * n_) + 2 * n_) % (2 * n_);
        const creal_T mirrored = half[2 * n_ - std::max(wrapped, n_)];
        return wrapped > n_ ? creal_T{mirrored.re, -mirrored.im} : half[wrapped];
    };
    for (int k = 1; k <= reach; ++k) {
        half[n_ + k] = continued(n_ + k);
        if (k < reach) {
            half[-k] = continued(-k);
        }
    }
}

void ZoomSpectrum::magnitudes(int count, double* out) const {
    assert(count <= bins_);
    magnitudesFrom(0, count, out);
}

void ZoomSpectrum::magnitudesFrom(int bin, int count, double* out) const {
    const creal_T* const first = spectrum_.data() + bin / phases_;
    const auto total = static_cast<std::size_t>(count);
    if (phases_ == 1) {
        scaledMagnitudes(first + margin, unit_, total, out);
    } else {
        filteredMagnitudes(first, kernel_.data(), unit_, lanes / static_cast<std::size_t>(phases_), total, out);
    }
}

double ZoomSpectrum::largest(samples known) const {
    const double largestKnown = largestMagnitude(known.data(), known.size());
    // Each bin is a weighted mean of values up to `reach` away: none exceeds the largest of these, whose magnitude is
    // at most sqrt(2) times its larger part, times the sum of the weights.
    const int first = static_cast<int>(known.size() / lanes * lanes);
    const std::span values = std::span(spectrum_).subspan(static_cast<std::size_t>(first / phases_));
    if (largestMagnitude(&values.data()->re, 2 * values.size()) * 1.4142136 * kernelSum_ * unit_ <= largestKnown) {
        return largestKnown;
    }
    std::vector<double> rest(static_cast<std::size_t>(bins_ - first));
    magnitudesFrom(first, bins_ - first, rest.data());
    return std::max(largestKnown, largestMagnitude(rest.data(), rest.size()));
}

}  // namespace coder
