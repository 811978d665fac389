#include "toolkit/fft.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <vector>

#include "toolkit/fft_kernels.h"
#include "toolkit/large_pages.h"
#include "toolkit/polynomial.h"
#include "toolkit/scalar.h"
#include "toolkit/simd.h"

namespace coder {
namespace {

using index = std::ptrdiff_t;

/// Uninitialised memory for n complex numbers, used as split arrays or as pairs. Both parts start on a cache line.
/// There is room for a pair more: the half spectrum of 2 n real samples.
class AlignedBuffer {
public:
    AlignedBuffer() = default;
    explicit AlignedBuffer(index n)
        : n_(n), imaginary_((n + 7) / 8 * 8 + stagger), parts_(allocate(static_cast<std::size_t>(2 * imaginary_))) {}

    Split split() const { return {parts_.get(), parts_.get() + imaginary_}; }
    double* pairs() const { return parts_.get(); }
    index size() const { return n_; }

private:
    /// An odd number of cache lines between the parts: otherwise, for n a power of two, real and imaginary parts would
    /// compete for the same cache sets.
    static constexpr index stagger = 72;
    static constexpr std::align_val_t cacheLine{64};
    struct Free {
        void operator()(double* parts) const { ::operator delete[](parts, cacheLine); }
    };
    static double* allocate(std::size_t n) {
        const std::size_t bytes = n * sizeof(double);
        auto* const parts = static_cast<double*>(::operator new[](bytes, cacheLine));
        preferLargePages(parts, bytes);
        return parts;
    }

    index n_ = 0;
    index imaginary_ = 0;
    std::unique_ptr<double[], Free> parts_;
};

void put(Split to, index at, creal_T value) {
    to.re[at] = value.re;
    to.im[at] = value.im;
}

// Series of sin(x) / x and of cos(x) in powers of x^2, for x within an octant. The terms left out are below 1e-17 of
// the sum.
constexpr auto sineSeries =
    rounded(seriesAround<9>(0.0L, 1.0L, 8, [](int k) { return -1.0L / (2 * k) / (2 * k + 1); }));
constexpr auto cosineSeries =
    rounded(seriesAround<10>(0.0L, 1.0L, 9, [](int k) { return -1.0L / (2 * k - 1) / (2 * k); }));

/// Replaces each k = re[i], 0 <= k < n, by the root of unity re[i] + i im[i] = e^(-2 pi i k / n), within 2 units in the
/// last place: angles are reduced to one octant.
ALWAYS_INLINE inline void rootsFromPositions(Split z, index count, double n) {
    const double step = twoPi / n;
    for (index i = 0; i < count; ++i) {
        const double full = z.re[i];
        const double half = std::min(full, n - full);
        const double quarter = std::min(half, n / 2.0 - half);
        const double eighth = std::min(quarter, n / 4.0 - quarter);
        const double angle = step * eighth;
        const double cosine = polynomial(cosineSeries, angle * angle);
        const double sine = angle * polynomial(sineSeries, angle * angle);
        const double re = quarter == eighth ? cosine : sine;
        const double im = quarter == eighth ? sine : cosine;
        z.re[i] = half == quarter ? re : -re;
        z.im[i] = full == half ? -im : im;
    }
}

/// The roots e^(-2 pi i k / n) at k = position(0) ... position(count-1).
template <class Position>
AlignedBuffer rootsAt(index n, index count, Position position) {
    AlignedBuffer roots(count);
    for (index i = 0; i < count; ++i) {
        roots.split().re[i] = static_cast<double>(position(i));
    }
    vectorized<rootsFromPositions>(roots.split(), count, static_cast<double>(n));
    return roots;
}

/// Whether all prime factors of n have a butterfly.
bool isSmooth(std::int64_t n) {
    for (const int prime : {2, 3, 5, 7, 11, 13}) {
        while (n % prime == 0) {
            n /= prime;
        }
    }
    return n == 1;
}

/// The smallest length 8 * 2^a * 3^b * 5^c that is at least n.
std::int64_t smoothLength(std::int64_t n) {
    std::int64_t best = std::numeric_limits<std::int64_t>::max();
    for (std::int64_t fives = 8; fives < 5 * n; fives *= 5) {
        for (std::int64_t threes = fives; threes < 3 * n; threes *= 3) {
            std::int64_t length = threes;
            while (length < n) {
                length *= 2;
            }
            best = std::min(best, length);
        }
    }
    return best;
}

/// Positions in fftRadices of radices with product n. The largest power of two comes first: the first pass needs one
/// for its lanes, and it makes the rows of the later passes at least as long as a vector. Then as few, as large radices
/// as possible.
std::vector<std::size_t> radicesOf(index n) {
    std::vector<std::size_t> radices;
    const auto divideBy = [&](int radix) {
        n /= radix;
        const auto* const at = std::find(fftRadices.begin(), fftRadices.end(), radix);
        radices.push_back(static_cast<std::size_t>(at - fftRadices.begin()));
    };
    const auto divides = [&](int radix) { return n % radix == 0; };
    const std::array powersOfTwo{8, 4, 2};
    if (const auto* const first = std::find_if(powersOfTwo.begin(), powersOfTwo.end(), divides);
        first != powersOfTwo.end()) {
        divideBy(*first);
    }
    for (const int radix : {13, 11, 10, 8, 7, 5, 4, 3, 2}) {
        while (divides(radix) && !(radix == 8 && n == 16)) {
            divideBy(radix);
        }
    }
    assert(n == 1);
    return radices;
}

/// Complex transform of a length whose prime factors have butterflies.
class SmoothFft {
public:
    explicit SmoothFft(index n) : a_(n), b_(n) {
        index s = 1;
        for (const std::size_t radix : radicesOf(n)) {
            const index turns = fftRadices[radix] - 1;
            const index m = n / (s * (turns + 1));
            AlignedBuffer twiddles(turns * m);
            double* position = twiddles.split().re;
            for (index j = 1; j <= turns; ++j) {
                for (index p = 0; p < m; ++p) {
                    *position++ = static_cast<double>(p * j * s);
                }
            }
            vectorized<rootsFromPositions>(twiddles.split(), turns * m, static_cast<double>(n));
            passes_.push_back({radix, m, s, std::move(twiddles)});
            s *= turns + 1;
        }
    }

    index size() const { return a_.size(); }

    /// Memory for the pairs of the next transform.
    double* pairs() const { return b_.pairs(); }
    /// The same, beside numbers that may be in this memory: samples in pairs(), or the result of the last transform.
    double* pairsBeside(const double* numbers) const { return numbers == b_.pairs() ? a_.pairs() : b_.pairs(); }

    /// Transform of n pairs. The pairs are overwritten only if they are in this memory. The result is valid until the
    /// next transform.
    Split operator()(const double* pairs) const {
        Split in = a_.split();
        Split out = b_.split();
        if (pairs == out.re) {
            std::swap(in, out);
        }
        if (passes_.empty()) {
            put(out, 0, {pairs[0], pairs[1]});
            return out;
        }
        for (const Pass& pass : passes_) {
            runFftPass(pass.radix, {pass.m, pass.s, pass.twiddles.split(), pairs, in, out});
            std::swap(in, out);
        }
        return in;
    }

private:
    struct Pass {
        std::size_t radix;
        index m;
        index s;
        AlignedBuffer twiddles;
    };

    std::vector<Pass> passes_;
    AlignedBuffer a_;
    AlignedBuffer b_;
};

// Loops of the convolution below, over k < n: pairs and split arrays do not overlap.

ALWAYS_INLINE inline void putPair(double* to, index at, creal_T z) {
    to[2 * at] = z.re;
    to[2 * at + 1] = z.im;
}

ALWAYS_INLINE inline creal_T get(Split from, index at) {
    return {from.re[at], from.im[at]};
}

ALWAYS_INLINE inline creal_T swapped(creal_T z) {
    return {z.im, z.re};
}

/// to[k] = x[k] y[k] for pairs or, where x is real, numbers x[k].
template <bool isReal>
ALWAYS_INLINE inline void multiplySequence(const double* x, Split y, index n, double* to) {
    for (index k = 0; k < n; ++k) {
        putPair(to, k, times(isReal ? creal_T{x[k], 0.0} : creal_T{x[2 * k], x[2 * k + 1]}, get(y, k)));
    }
}

/// to[k] = x[k] y[k] with the parts swapped.
ALWAYS_INLINE inline void multiplySwapping(Split x, Split y, index n, double* to) {
    for (index k = 0; k < n; ++k) {
        putPair(to, k, swapped(times(get(x, k), get(y, k))));
    }
}

/// x[k] with the parts swapped, times y[k].
ALWAYS_INLINE inline void swapAndMultiply(Split x, Split y, index n) {
    for (index k = 0; k < n; ++k) {
        const creal_T product = times(swapped(get(x, k)), get(y, k));
        x.re[k] = product.re;
        x.im[k] = product.im;
    }
}

/// The pairs kernel[0] ... kernel[size-1] with which a convolution of that length multiplies by conj(c[k-m]) / size for
/// k < bins and m < n: c[k], k < n, are even in k.
ALWAYS_INLINE inline void writeKernel(Split c, index n, index bins, index size, double* kernel) {
    const double scale = 1.0 / static_cast<double>(size);
    std::fill(kernel + 2 * bins, kernel + 2 * (size - n + 1), 0.0);
    for (index k = 0; k < bins; ++k) {
        putPair(kernel, k, {c.re[k] * scale, -c.im[k] * scale});
    }
    for (index k = 1; k < n; ++k) {
        putPair(kernel, size - k, {c.re[k] * scale, -c.im[k] * scale});
    }
}

/// The first `bins` bins of a complex transform of any length n, as a convolution with the chirp c[k] = e^(-pi i k^2 /
/// n): since 2 k m = k^2 + m^2 - (k - m)^2, X[k] = c[k] sum (c[m] x[m]) conj(c[k-m]). L. I. Bluestein, IEEE Trans.
/// Audio Electroacoust. 18 (1970), "A linear filtering approach to the computation of discrete Fourier transform".
class BluesteinTransform {
public:
    /// convolution: a transform of length n + bins - 1 or more.
    BluesteinTransform(index n, index bins, const SmoothFft& convolution)
        : bins_(bins), chirp_(chirpOf(n)), response_(convolution.size()) {
        const index size = convolution.size();
        assert(bins <= n && size >= n + bins - 1);
        double* const kernel = convolution.pairs();
        vectorized<writeKernel>(chirp_.split(), n, bins, size, kernel);
        const Split response = convolution(kernel);
        std::copy_n(response.re, size, response_.split().re);
        std::copy_n(response.im, size, response_.split().im);
    }

    /// The bins of n pairs or, where x is real, numbers. The result is valid until the next transform by `convolution`.
    template <bool isReal>
    Split bins(const SmoothFft& convolution, const double* x) const {
        const index size = convolution.size();
        double* const chirped = convolution.pairsBeside(x);
        vectorized<multiplySequence<isReal>>(x, chirp_.split(), chirp_.size(), chirped);
        std::fill(chirped + 2 * chirp_.size(), chirped + 2 * size, 0.0);
        const Split spectrum = convolution(chirped);
        double* const product = convolution.pairsBeside(spectrum.re);
        vectorized<multiplySwapping>(spectrum, response_.split(), size, product);
        // Real and imaginary parts are swapped before and after, which makes the transform an inverse one.
        const Split filtered = convolution(product);
        vectorized<swapAndMultiply>(filtered, chirp_.split(), bins_);
        return filtered;
    }

private:
    /// c[0] ... c[n-1].
    static AlignedBuffer chirpOf(index n) {
        index square = 0;  // k^2 modulo 2 n
        return rootsAt(2 * n, n, [&square, n](index k) {
            const index position = square;
            square += 2 * k + 1;
            square -= square >= 2 * n ? 2 * n : 0;
            return position;
        });
    }

    index bins_;
    AlignedBuffer chirp_;
    AlignedBuffer response_;
};

}  // namespace

struct RealFft::Plan {
    explicit Plan(SmoothFft made) : transform(std::move(made)) {}

    /// The transform of n real samples as a complex sequence. The samples are in the plan's memory or elsewhere.
    Split transformed(index n, const double* x) const {
        const bool isReal = n % 2 != 0;
        if (bluestein) {
            return isReal ? bluestein->bins<true>(transform, x) : bluestein->bins<false>(transform, x);
        }
        if (!isReal) {
            return transform(x);
        }
        double* const pairs = transform.pairsBeside(x);
        for (index i = 0; i < n; ++i) {
            putPair(pairs, i, {x[i], 0.0});
        }
        return transform(pairs);
    }

    /// The half spectrum of n real samples, from transformed().
    void writeSpectrum(index n, Split z, creal_T* half) const {
        if (n % 2 == 0) {
            return splitRealSpectrum({n / 2, z, roots.split(), half});
        }
        for (index k = 0; k <= n / 2; ++k) {
            half[k] = {z.re[k], z.im[k]};
        }
    }

    SmoothFft transform;                          // of the complex sequence, or for the convolution that replaces it
    std::optional<BluesteinTransform> bluestein;  // when the length of the sequence is not smooth
    AlignedBuffer roots;                          // for even n: e^(-2 pi i k / n), k = 0 ... n/4
};

/// For even n, pairs of samples form a complex sequence of half the length. For odd n the samples are the real parts of
/// a complex sequence, of which only the lower half of the spectrum is used.
RealFft::RealFft(int n) : n_(n) {
    assert(n >= 1);
    const bool paired = n % 2 == 0;
    const index length = paired ? n / 2 : n;
    const index wanted = paired ? length : bins();
    const index working = isSmooth(length) ? length : smoothLength(length + wanted - 1);
    if (working > std::numeric_limits<int>::max()) {
        throw std::bad_array_new_length();
    }
    plan_ = std::make_unique<Plan>(SmoothFft(working));
    if (working != length) {
        plan_->bluestein.emplace(length, wanted, plan_->transform);
    }
    if (paired) {
        plan_->roots = rootsAt(n, n / 4 + 1, [](index k) { return k; });
    }
}

RealFft::RealFft(RealFft&&) noexcept = default;
RealFft& RealFft::operator=(RealFft&&) noexcept = default;
RealFft::~RealFft() = default;

double* RealFft::workspace(const creal_T* spectrum) const {
    const SmoothFft& transform = plan_->transform;
    return spectrum == nullptr ? transform.pairs() : transform.pairsBeside(&spectrum->re);
}

void RealFft::forward(samples x, creal_T* half) const {
    const std::size_t given = std::min(x.size(), static_cast<std::size_t>(n_));
    if (given == static_cast<std::size_t>(n_) && n_ % 2 == 0) {
        return plan_->writeSpectrum(n_, plan_->transformed(n_, x.data()), half);
    }
    double* const own = workspace();
    std::fill_n(std::copy_n(x.begin(), given, own), static_cast<std::size_t>(n_) - given, 0.0);
    plan_->writeSpectrum(n_, plan_->transformed(n_, own), half);
}

const creal_T* RealFft::forward() const {
    const Split z = plan_->transformed(n_, workspace());
    // Pairs of doubles are complex numbers as they are stored.
    auto* const half = reinterpret_cast<creal_T*>(plan_->transform.pairsBeside(z.re));
    plan_->writeSpectrum(n_, z, half);
    return half;
}

}  // namespace coder
