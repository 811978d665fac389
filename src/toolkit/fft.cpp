#include "toolkit/fft.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <vector>

#include "toolkit/polynomial.h"
#include "toolkit/scalar.h"
#include "toolkit/vector_clones.h"

namespace coder {
namespace {

using index = std::ptrdiff_t;

/// n complex numbers, uninitialised: split or as pairs, whatever the user puts there. They start on a cache line.
class Scratch {
public:
    Scratch() = default;
    explicit Scratch(index n)
        : n_(n), imaginary_((n + 7) / 8 * 8 + stagger), parts_(allocate(static_cast<std::size_t>(2 * imaginary_))) {}

    Split split() const { return {parts_.get(), parts_.get() + imaginary_}; }
    double* pairs() const { return parts_.get(); }
    index size() const { return n_; }

private:
    /// An odd number of cache lines, lest real and imaginary parts compete for the same sets when n is a power of two.
    static constexpr index stagger = 72;
    static constexpr std::align_val_t cacheLine{64};
    struct Free {
        void operator()(double* parts) const { ::operator delete[](parts, cacheLine); }
    };
    static double* allocate(std::size_t n) {
        return static_cast<double*>(::operator new[](n * sizeof(double), cacheLine));
    }

    index n_ = 0;
    index imaginary_ = 0;
    std::unique_ptr<double[], Free> parts_;
};

void put(Split to, index at, creal_T value) {
    to.re[at] = value.re;
    to.im[at] = value.im;
}

// Sine and cosine of an octant's angles x, the sine without its factor x, in powers of x^2; what is left out is below
// 1e-17 of them.
constexpr auto sineSeries =
    rounded(seriesAround<9>(0.0L, 1.0L, 8, [](int k) { return -1.0L / (2 * k) / (2 * k + 1); }));
constexpr auto cosineSeries =
    rounded(seriesAround<10>(0.0L, 1.0L, 9, [](int k) { return -1.0L / (2 * k - 1) / (2 * k); }));

/// Replaces each k = re[i], 0 <= k < n, by the root of unity re[i] + i im[i] = e^(-2 pi i k / n). The circle is folded
/// to one octant, so that each is within 2 units in the last place.
RT305_4_VECTOR_CLONES void toRoots(Split z, index count, double n) {
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
Scratch rootsAt(index n, index count, Position position) {
    Scratch roots(count);
    for (index i = 0; i < count; ++i) {
        roots.split().re[i] = static_cast<double>(position(i));
    }
    toRoots(roots.split(), count, static_cast<double>(n));
    return roots;
}

/// Whether the butterflies suffice for length n.
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

/// Positions in fftRadices of radices with product n: first the largest power of two, because the first pass needs one
/// for its lanes and the later passes rows as long as a vector; then few and large ones.
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
    SmoothFft(index n, const FftKernels& kernels) : kernels_(&kernels), a_(n), b_(n) {
        index s = 1;
        for (const std::size_t radix : radicesOf(n)) {
            const index turns = fftRadices[radix] - 1;
            const index m = n / (s * (turns + 1));
            Scratch twiddles(turns * m);
            double* position = twiddles.split().re;
            for (index j = 1; j <= turns; ++j) {
                for (index p = 0; p < m; ++p) {
                    *position++ = static_cast<double>(p * j * s);
                }
            }
            toRoots(twiddles.split(), turns * m, static_cast<double>(n));
            passes_.push_back({radix, m, s, std::move(twiddles)});
            s *= turns + 1;
        }
    }

    index size() const { return a_.size(); }
    const FftKernels& kernels() const { return *kernels_; }

    /// Room for the pairs of the next transform, apart from the result of the last one.
    double* pairs(Split result = {}) const { return result.re == b_.pairs() ? a_.pairs() : b_.pairs(); }

    /// Transform of n pairs, which stay as they are unless they stand in pairs(). The result stands until the next one.
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
            const auto& kernel = pass.s == 1 ? kernels_->firstPass : kernels_->laterPass;
            kernel[pass.radix]({pass.m, pass.s, pass.twiddles.split(), pairs, in, out});
            std::swap(in, out);
        }
        return in;
    }

private:
    struct Pass {
        std::size_t radix;
        index m;
        index s;
        Scratch twiddles;
    };

    const FftKernels* kernels_;
    std::vector<Pass> passes_;
    Scratch a_;
    Scratch b_;
};

/// The first `bins` bins of a complex transform of any length n, as a convolution with the chirp c[k] = e^(-pi i k^2 /
/// n): since 2 k m = k^2 + m^2 - (k - m)^2, X[k] = c[k] sum (c[m] x[m]) conj(c[k-m]). L. I. Bluestein, IEEE Trans.
/// Audio Electroacoust. 18 (1970), "A linear filtering approach to the computation of discrete Fourier transform".
class Chirp {
public:
    /// convolution: at least n + bins - 1 long.
    Chirp(index n, index bins, const SmoothFft& convolution)
        : bins_(bins),
          chirp_(rootsAt(2 * n, n, [n](index k) { return k * k % (2 * n); })),
          response_(convolution.size()) {
        const index size = convolution.size();
        const double scale = 1.0 / static_cast<double>(size);
        double* const kernel = convolution.pairs();
        std::fill_n(kernel, 2 * size, 0.0);
        for (index k = 0; k < n; ++k) {
            const creal_T c = get(chirp_.split(), k);
            const creal_T scaled{c.re * scale, -c.im * scale};
            if (k > 0) {
                putPair(kernel, size - k, scaled);
            }
            if (k < bins) {
                putPair(kernel, k, scaled);
            }
        }
        const Split response = convolution(kernel);
        std::copy_n(response.re, size, response_.split().re);
        std::copy_n(response.im, size, response_.split().im);
    }

    /// The bins of n pairs.
    Split operator()(const SmoothFft& convolution, const double* pairs) const {
        double* const chirped = convolution.pairs();
        for (index k = 0; k < chirp_.size(); ++k) {
            putPair(chirped, k, times({pairs[2 * k], pairs[2 * k + 1]}, get(chirp_.split(), k)));
        }
        std::fill(chirped + 2 * chirp_.size(), chirped + 2 * convolution.size(), 0.0);
        const Split spectrum = convolution(chirped);
        double* const product = convolution.pairs(spectrum);
        for (index k = 0; k < convolution.size(); ++k) {
            putPair(product, k, swapped(times(get(spectrum, k), get(response_.split(), k))));
        }
        // Swapping real and imaginary parts before and after turns the transform into its inverse.
        const Split filtered = convolution(product);
        for (index k = 0; k < bins_; ++k) {
            put(filtered, k, times(swapped(get(filtered, k)), get(chirp_.split(), k)));
        }
        return filtered;
    }

private:
    static creal_T swapped(creal_T z) { return {z.im, z.re}; }
    static creal_T get(Split from, index at) { return {from.re[at], from.im[at]}; }
    static void putPair(double* to, index at, creal_T z) {
        to[2 * at] = z.re;
        to[2 * at + 1] = z.im;
    }

    index bins_;
    Scratch chirp_;
    Scratch response_;
};

/// All n bins of the transform of x, into the memory that resize(n) returns; the upper ones are conjugates of the
/// lower.
template <class Resize>
void fullSpectrum(samples x, int n, Resize resize) {
    if (n == 0) {
        resize(0);
        return;
    }
    const RealFft plan(n);
    creal_T* const y = resize(n);
    plan.forward(x, y);
    for (int k = plan.bins(); k < n; ++k) {
        y[k] = {y[n - k].re, -y[n - k].im};
    }
}

}  // namespace

struct RealFft::Plan {
    explicit Plan(SmoothFft made) : transform(std::move(made)) {}

    SmoothFft transform;         // of the complex sequence, or of the convolution that replaces it
    std::optional<Chirp> chirp;  // when the length of the sequence is not smooth
    Scratch roots;               // for even n: e^(-2 pi i k / n), k = 0 ... n/4
};

/// For even n, pairs of samples form a complex sequence of half the length; for odd n the samples do, with imaginary
/// parts 0, and half of its spectrum counts.
RealFft::RealFft(int n, const FftKernels& kernels) : n_(n) {
    assert(n >= 1);
    const bool paired = n % 2 == 0;
    const index length = paired ? n / 2 : n;
    const index wanted = paired ? length : bins();
    const index working = isSmooth(length) ? length : smoothLength(length + wanted - 1);
    if (working > std::numeric_limits<int>::max()) {
        throw std::bad_array_new_length();
    }
    plan_ = std::make_unique<Plan>(SmoothFft(working, kernels));
    if (working != length) {
        plan_->chirp.emplace(length, wanted, plan_->transform);
    }
    if (paired) {
        plan_->roots = rootsAt(n, n / 4 + 1, [](index k) { return k; });
    }
}

RealFft::RealFft(RealFft&&) noexcept = default;
RealFft& RealFft::operator=(RealFft&&) noexcept = default;
RealFft::~RealFft() = default;

void RealFft::forward(samples x, creal_T* half) const {
    const SmoothFft& transform = plan_->transform;
    const bool paired = n_ % 2 == 0;
    const index given = std::min(static_cast<index>(x.size()), static_cast<index>(n_));
    const double* pairs = x.data();
    if (!paired || given < n_) {
        double* const padded = transform.pairs();
        const index step = paired ? 1 : 2;
        std::fill_n(padded, step * n_, 0.0);
        for (index i = 0; i < given; ++i) {
            padded[step * i] = x[static_cast<std::size_t>(i)];
        }
        pairs = padded;
    }
    const Split z = plan_->chirp ? (*plan_->chirp)(transform, pairs) : transform(pairs);
    if (paired) {
        transform.kernels().untangle({n_ / 2, z, plan_->roots.split(), half});
        return;
    }
    for (index k = 0; k < bins(); ++k) {
        half[k] = {z.re[k], z.im[k]};
    }
}

/// With g[k] = Re X[k] + Im X[k] over all n bins and G its transform, n x[m] = Re G[m] + Im G[m].
/// R. N. Bracewell, J. Opt. Soc. Am. 73 (1983), "Discrete Hartley transform".
void RealFft::inverse(const creal_T* half, double* x) const {
    std::vector<double> folded(static_cast<std::size_t>(n_));
    std::vector<creal_T> transformed(static_cast<std::size_t>(bins()));
    folded[0] = half[0].re;
    for (std::size_t k = 1, mirror = folded.size() - 1; k <= mirror; ++k, --mirror) {
        folded[mirror] = half[k].re - half[k].im;
        folded[k] = k == mirror ? half[k].re : half[k].re + half[k].im;
    }
    forward(folded, transformed.data());
    const double scale = 1.0 / n_;
    x[0] = transformed[0].re * scale;
    for (index m = 1, mirror = n_ - 1; m <= mirror; ++m, --mirror) {
        const creal_T z = transformed[static_cast<std::size_t>(m)];
        x[mirror] = (z.re - z.im) * scale;
        x[m] = (z.re + z.im) * scale;
    }
}

void fft(const column& x, complex_column& y) {
    fullSpectrum(x, x.numel(), [&](int n) {
        y.set_size(n);
        return y.data();
    });
}

void fft(const row& x, double nfft, complex_row& y) {
    if (nfft >= 2147483648.0) {
        throw std::bad_array_new_length();
    }
    fullSpectrum(x, std::max(truncatedToInt(nfft), 0), [&](int n) {
        y.set_size(1, n);
        return y.data();
    });
}

}  // namespace coder
