#include "toolkit/zoom_spectrum.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include "toolkit/scalar.h"
#include "toolkit/special_functions.h"
#include "toolkit/vector_clones.h"

namespace coder {
namespace {

constexpr int taps = 16;
constexpr int reach = taps / 2;
constexpr std::size_t margin = reach - 1;  // values of the transform below DC
constexpr std::size_t lanes = 8;

// Half the kernel's bandwidth: just inside 3/4 of pi * taps, where the first alias begins.
constexpr double beta = 0.99 * 0.75 * pi * taps;

/// Kernel at distance u from its centre, in values of the length-2n transform.
double kernelAt(double u) {
    const double ratio = u / reach;
    return std::fabs(ratio) >= 1.0 ? 0.0 : besseli(beta * std::sqrt((1.0 - ratio) * (1.0 + ratio)));
}

/// Fourier transform of the kernel at t sample distances from the row's middle, t = position / (2n).
double kernelTransform(double t) {
    const double s = std::sqrt(beta * beta - (pi * taps * t) * (pi * taps * t));
    return taps * std::sinh(s) / s;
}

int checkedLength(int n, int factor) {
    const std::int64_t length = std::int64_t{n} * factor;
    if (length > std::numeric_limits<int>::max()) {
        throw std::bad_array_new_length();
    }
    return static_cast<int>(length);
}

/// rt_hypotd_snf without branches.
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
    const double middle = n / 2;
    const double scale = kernelTransform(middle / (2.0 * n));
    for (int t = 0; t < n; ++t) {
        weights_[static_cast<std::size_t>(t)] *= scale / kernelTransform((t - middle) / (2.0 * n));
    }
    for (int phase = 0; phase < phases_; ++phase) {
        double sum = 0.0;
        for (int j = 0; j < taps; ++j) {
            const double u = static_cast<double>(phase) / phases_ - (j - reach + 1);
            kernel_.push_back(kernelAt(u) / scale);
            sum += kernel_.back();
        }
        kernelSum_ = std::max(kernelSum_, sum);
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
        const std::ptrdiff_t period = 2 * n_;
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
