#include "toolkit/zoom_spectrum.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>

#include "toolkit/scalar.h"
#include "toolkit/special_functions.h"
#include "toolkit/vector_clones.h"

namespace coder {
namespace {

constexpr int taps = 18;
constexpr int reach = taps / 2;
constexpr std::size_t margin = reach - 1;  // values of the transform below DC
constexpr std::size_t lanes = 8;

// Half the kernel's bandwidth: just inside 3/4 of pi * taps, where the first alias begins. Values around e^42 follow
// from it, so arguments rounded to doubles would cost 42 units in the last place.
constexpr long double beta = 0.997L * 0.75L * piL * taps;

/// Fourier transform of the kernel for samples at v (n/2)^2 square distance from the row's middle, 0 <= v <= 1.
long double kernelTransform(long double v) {
    const long double edge = piL * taps / 4;
    const long double s = std::sqrt(beta * beta - edge * edge * v);
    return taps * std::sinh(s) / s;
}

/// What samples at v (n/2)^2 square distance from the row's middle are multiplied with: 1 over the kernel's transform,
/// scaled to 1 at v = 1. By a Chebyshev series in v: the exact function stays below 1e16 up to its nearest pole near
/// v = 9, so that 22 terms leave less than 1e-17 (L. N. Trefethen, Approximation Theory and Approximation Practice,
/// theorem 8.2).
class SampleWeight {
public:
    SampleWeight() {
        const long double scale = kernelTransform(1.0L);
        std::array<long double, terms> values{};
        for (std::size_t i = 0; i < terms; ++i) {
            values[i] = scale / kernelTransform((1.0L + nodeCosine(1, i)) / 2.0L);
        }
        for (std::size_t m = 0; m < terms; ++m) {
            long double sum = 0.0L;
            for (std::size_t i = 0; i < terms; ++i) {
                sum += values[i] * nodeCosine(m, i);
            }
            coefficients_[m] = static_cast<double>(sum * (m == 0 ? 1.0L : 2.0L) / terms);
        }
    }

    double operator()(double v) const {
        const double y = 2.0 * v - 1.0;
        double here = 0.0;
        double next = 0.0;
        for (std::size_t m = terms - 1; m > 0; --m) {
            const double before = coefficients_[m] + 2.0 * y * here - next;
            next = here;
            here = before;
        }
        return coefficients_[0] + y * here - next;
    }

private:
    static constexpr std::size_t terms = 22;

    /// T_m at the i-th node.
    static long double nodeCosine(std::size_t m, std::size_t i) {
        return std::cos(piL * static_cast<long double>(m * (2 * i + 1)) / (2 * terms));
    }

    std::array<double, terms> coefficients_{};
};

/// Kernel weights of the values around a bin, `taps` for each of the phases, scaled like the samples' weights. The
/// kernel ends with a step; a value that stands right on it has no weight.
std::vector<double> kernelOf(int phases) {
    std::vector<double> square;
    std::vector<double> squareLow;
    for (int phase = 0; phase < phases; ++phase) {
        for (int j = 0; j < taps; ++j) {
            const long double u = static_cast<long double>(phase) / phases - (j - reach + 1);
            const long double ratio = u / reach;
            const long double exact = beta * beta * (1.0L - ratio) * (1.0L + ratio);
            square.push_back(static_cast<double>(exact));
            squareLow.push_back(static_cast<double>(exact - static_cast<long double>(square.back())));
        }
    }
    std::vector<double> kernel(square.size());
    besseliOfSquare(square, squareLow, kernel.data());
    const auto scale = static_cast<double>(kernelTransform(1.0L));
    for (std::size_t i = 0; i < kernel.size(); ++i) {
        kernel[i] = square[i] > 0.0 ? kernel[i] / scale : 0.0;
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

/// rt_hypotd_snf without branches, for finite parts.
inline double magnitude(double re, double im) {
    const double a = std::fabs(re);
    const double b = std::fabs(im);
    const double large = a > b ? a : b;
    const double small = a > b ? b : a;
    const double ratio = small / (large == 0.0 ? 1.0 : large);
    return large * std::sqrt(ratio * ratio + 1.0);
}

/// out[q] = |sum over j of kernel[j] (re + i im)[q + j]| for q < count.
RT305_4_VECTOR_CLONES void filterMagnitudes(const double* re, const double* im, const double* kernel, std::size_t count,
                                            double* out) {
    for (std::size_t q = 0; q < count; q += lanes) {
        double sumRe[lanes] = {};
        double sumIm[lanes] = {};
        for (std::size_t j = 0; j < taps; ++j) {
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                sumRe[lane] += kernel[j] * re[q + j + lane];
                sumIm[lane] += kernel[j] * im[q + j + lane];
            }
        }
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            out[q + lane] = magnitude(sumRe[lane], sumIm[lane]);
        }
    }
}

}  // namespace

ZoomSpectrum::ZoomSpectrum(int n, int factor, std::span<const double> window)
    : n_(n),
      phases_(factor / 2),
      bins_(checkedLength(n, factor) / 2 + 1),
      weights_(window.begin(), window.end()),
      fft_(2 * n) {
    assert(static_cast<int>(window.size()) == n && (factor == 2 || factor % 4 == 0));
    const std::size_t length = static_cast<std::size_t>(fft_.bins()) + taps + lanes;
    re_.resize(length);
    im_.resize(length);
    if (phases_ == 1) {
        return;
    }
    // The largest sample weight is 1, so that nothing overflows while the bins stay below half the largest double.
    const SampleWeight weight;
    const int middle = n / 2;
    for (int t = 0; t < n; ++t) {
        const double distance = 2.0 * (t - middle) / n;
        weights_[static_cast<std::size_t>(t)] *= weight(distance * distance);
    }
    kernel_ = kernelOf(phases_);
    for (auto first = kernel_.begin(); first != kernel_.end(); first += taps) {
        kernelSum_ = std::max(kernelSum_, std::accumulate(first, first + taps, 0.0));
    }
}

void ZoomSpectrum::load(samples x) {
    assert(static_cast<int>(x.size()) == n_);
    const auto n = static_cast<std::size_t>(n_);
    // The kernel is even about the row's middle, which therefore stands at index 0 of the transformed circle.
    const std::size_t middle = phases_ == 1 ? 0 : n / 2;
    std::vector<double> circle(2 * n, 0.0);
    const auto weighted = [](double sample, double weight) { return sample * weight; };
    const auto at = [](auto begin, std::size_t i) { return begin + static_cast<std::ptrdiff_t>(i); };
    std::transform(x.begin(), at(x.begin(), middle), weights_.begin(), at(circle.begin(), 2 * n - middle), weighted);
    std::transform(at(x.begin(), middle), x.end(), at(weights_.begin(), middle), circle.begin(), weighted);
    std::vector<creal_T> half(n + 1);
    fft_.forward(circle, half.data());

    for (std::size_t k = 0; k <= n; ++k) {
        re_[k + margin] = half[k].re;
        im_[k + margin] = half[k].im;
    }
    // A real row's transform goes on by symmetry below 0 and above half the rate, with period 2n.
    const auto continueTo = [&](std::size_t i) {
        const std::ptrdiff_t period = 2 * static_cast<std::ptrdiff_t>(n_);
        const std::ptrdiff_t k = (static_cast<std::ptrdiff_t>(i) - static_cast<std::ptrdiff_t>(margin)) % period;
        const std::ptrdiff_t wrapped = k < 0 ? k + period : k;
        const bool mirrored = wrapped > n_;
        const creal_T value = half[static_cast<std::size_t>(mirrored ? period - wrapped : wrapped)];
        re_[i] = value.re;
        im_[i] = mirrored ? -value.im : value.im;
    };
    for (std::size_t i = 0; i < margin; ++i) {
        continueTo(i);
    }
    for (std::size_t i = margin + n + 1; i < re_.size(); ++i) {
        continueTo(i);
    }
}

void ZoomSpectrum::magnitudes(int count, double* out) const {
    assert(count <= bins_);
    if (phases_ == 1) {
        for (int k = 0; k < count; ++k) {
            const std::size_t at = static_cast<std::size_t>(k) + margin;
            out[k] = magnitude(re_[at], im_[at]);
        }
        return;
    }
    interpolate(0, count, out);
}

void ZoomSpectrum::interpolate(int from, int count, double* out) const {
    assert(from % phases_ == 0);
    constexpr std::size_t stretch = 512;  // values of the transform per round: what is filtered stays in the cache
    double filtered[stretch + lanes];
    const auto first = static_cast<std::size_t>(from / phases_);
    const auto phases = static_cast<std::size_t>(phases_);
    const auto total = static_cast<std::size_t>(count);
    for (std::size_t done = 0; done * phases < total; done += stretch) {
        for (std::size_t phase = 0; phase < phases && done * phases + phase < total; ++phase) {
            const std::size_t wanted = std::min(stretch, (total - done * phases - phase + phases - 1) / phases);
            const std::size_t at = first + done;
            filterMagnitudes(re_.data() + at, im_.data() + at, kernel_.data() + phase * taps, wanted, filtered);
            for (std::size_t q = 0; q < wanted; ++q) {
                out[(done + q) * phases + phase] = filtered[q];
            }
        }
    }
}

double ZoomSpectrum::largestFrom(int from, double atLeast) const {
    const auto first = static_cast<std::size_t>(from / phases_);
    // Each bin is a weighted mean of values up to `reach` away: none exceeds the largest of these, whose magnitude is
    // at most sqrt(2) times its larger part, times the sum of the weights.
    double largestPart = 0.0;
    for (std::size_t i = first; i < re_.size(); ++i) {
        const double a = std::fabs(re_[i]);
        const double b = std::fabs(im_[i]);
        const double part = a > b ? a : b;
        largestPart = part > largestPart ? part : largestPart;
    }
    if (largestPart * 1.4142136 * kernelSum_ <= atLeast) {
        return atLeast;
    }
    const int start = static_cast<int>(first) * phases_;
    std::vector<double> rest(static_cast<std::size_t>(bins_ - start));
    if (phases_ == 1) {
        std::transform(re_.begin() + start + static_cast<int>(margin), re_.begin() + bins_ + static_cast<int>(margin),
                       im_.begin() + start + static_cast<int>(margin), rest.begin(), magnitude);
    } else {
        interpolate(start, bins_ - start, rest.data());
    }
    double largest = atLeast;
    for (const double value : rest) {
        largest = value > largest || std::isnan(largest) ? value : largest;
    }
    return largest;
}

}  // namespace coder
