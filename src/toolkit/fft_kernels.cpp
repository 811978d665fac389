#include "toolkit/fft_kernels.h"

#include <algorithm>
#include <cassert>

#include "toolkit/simd.h"

namespace coder {
namespace {

/// `width` complex numbers, one in each vector lane.
template <int width>
struct Complex {
    using Part = typename Lanes<width>::type;
    Part re;
    Part im;

    ALWAYS_INLINE friend Complex operator+(const Complex& a, const Complex& b) { return {a.re + b.re, a.im + b.im}; }
    ALWAYS_INLINE friend Complex operator-(const Complex& a, const Complex& b) { return {a.re - b.re, a.im - b.im}; }
    ALWAYS_INLINE friend Complex operator*(const Complex& a, double b) { return {a.re * b, a.im * b}; }
    template <int other>
    ALWAYS_INLINE friend Complex operator*(const Complex& a, const Complex<other>& b) {
        return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
    }
};

template <int width>
ALWAYS_INLINE inline Complex<width> load(const Split& from, std::ptrdiff_t at) {
    Complex<width> z;
    std::memcpy(&z.re, from.re + at, sizeof z.re);
    std::memcpy(&z.im, from.im + at, sizeof z.im);
    return z;
}

template <int width>
ALWAYS_INLINE inline void store(const Complex<width>& z, const Split& to, std::ptrdiff_t at) {
    std::memcpy(to.re + at, &z.re, sizeof z.re);
    std::memcpy(to.im + at, &z.im, sizeof z.im);
}

/// out = the lanes at(0) ... at(width-1) of a followed by b.
template <int width, class At>
ALWAYS_INLINE inline void pick(const typename Lanes<width>::type& a, const typename Lanes<width>::type& b,
                               typename Lanes<width>::type& out, At) {
    [&]<int... i>(std::integer_sequence<int, i...>) ALWAYS_INLINE {
        out = __builtin_shufflevector(a, b, At{}(i)...);
    }
    (std::make_integer_sequence<int, width>{});
}

/// Loads complex numbers that are stored as pairs re, im.
template <int width>
ALWAYS_INLINE inline Complex<width> loadPairs(const double* from) {
    if constexpr (width == 1) {
        return {from[0], from[1]};
    } else {
        Complex<width> raw;
        Complex<width> z;
        std::memcpy(&raw.re, from, sizeof raw.re);
        std::memcpy(&raw.im, from + width, sizeof raw.im);
        pick<width>(raw.re, raw.im, z.re, [](int i) { return 2 * i; });
        pick<width>(raw.re, raw.im, z.im, [](int i) { return 2 * i + 1; });
        return z;
    }
}

/// low, high = a[0], b[0], a[1], b[1], ...
template <int width>
ALWAYS_INLINE inline void interleave(const typename Lanes<width>::type& a, const typename Lanes<width>::type& b,
                                     typename Lanes<width>::type& low, typename Lanes<width>::type& high) {
    if constexpr (width == 4) {  // two steps, each a single AVX2 instruction
        typename Lanes<width>::type even;
        typename Lanes<width>::type odd;
        pick<width>(a, b, even, [](int i) { return i % 2 == 0 ? i : i - 1 + width; });
        pick<width>(a, b, odd, [](int i) { return i % 2 == 0 ? i + 1 : i + width; });
        pick<width>(even, odd, low, [](int i) { return i < 2 ? i : i - 2 + width; });
        pick<width>(even, odd, high, [](int i) { return i < 2 ? i + 2 : i + width; });
    } else {
        pick<width>(a, b, low, [](int i) { return i / 2 + i % 2 * width; });
        pick<width>(a, b, high, [](int i) { return (i + width) / 2 + i % 2 * width; });
    }
}

/// Stores complex numbers as pairs re, im.
template <int width>
ALWAYS_INLINE inline void storePairs(const Complex<width>& z, double* to) {
    Complex<width> raw = z;
    if constexpr (width > 1) {
        interleave<width>(z.re, z.im, raw.re, raw.im);
    }
    store(raw, {to, to + width}, 0);
}

/// The lanes in reverse order.
template <int width>
ALWAYS_INLINE inline Complex<width> reversed(const Complex<width>& z) {
    Complex<width> out = z;
    if constexpr (width > 1) {
        pick<width>(z.re, z.re, out.re, [](int i) { return width - 1 - i; });
        pick<width>(z.im, z.im, out.im, [](int i) { return width - 1 - i; });
    }
    return out;
}

/// sin(2 pi k / n) by its power series, in extended precision; only the result is rounded to double.
constexpr double sine(int k, int n) {
    const int turn = k % n;
    const long double x = 6.28318530717958647692528676655900577L * (2 * turn > n ? turn - n : turn) / n;
    long double term = x;
    long double sum = x;
    for (int i = 2; i < 40; i += 2) {
        term *= -x * x / (i * (i + 1));
        sum += term;
    }
    return static_cast<double>(sum);
}
constexpr double cosine(int k, int n) {
    return sine(4 * k + n, 4 * n);
}

/// z e^(-2 pi i k / n). A multiple of an eighth of the circle needs no or one constant.
template <int k, int n, int width>
ALWAYS_INLINE inline Complex<width> timesRoot(const Complex<width>& z) {
    constexpr int eighth = 8 * k % n == 0 ? 8 * k / n % 8 : -1;
    constexpr double diagonal = 0.70710678118654752440;
    if constexpr (eighth == 0) {
        return z;
    } else if constexpr (eighth == 1) {
        return {(z.re + z.im) * diagonal, (z.im - z.re) * diagonal};
    } else if constexpr (eighth == 2) {
        return {z.im, -z.re};
    } else if constexpr (eighth > 2) {
        return timesRoot<2 * n, 8 * n>(timesRoot<(eighth - 2) * n, 8 * n>(z));
    } else {
        constexpr double c = cosine(k, n);
        constexpr double s = sine(k, n);
        return {z.re * c + z.im * s, z.im * c - z.re * s};
    }
}

/// The smallest prime factor of n >= 2.
constexpr int smallestFactor(int n) {
    int factor = 2;
    while (n % factor != 0) {
        ++factor;
    }
    return factor;
}

/// Transforms z[0], z[stride], ... z[(n-1) stride] in place for an odd prime n, by the definition. A bin and its mirror
/// share their products: cosines multiply the sums, sines the differences of mirrored inputs.
template <int n, int stride, int width>
ALWAYS_INLINE inline void oddButterfly(Complex<width>* z) {
    constexpr int pairs = (n - 1) / 2;
    const Complex<width> first = z[0];
    Complex<width> sums[pairs];
    Complex<width> differences[pairs];
    unroll<pairs>([&](auto i) ALWAYS_INLINE {
        sums[i] = z[(i + 1) * stride] + z[(n - 1 - i) * stride];
        differences[i] = z[(i + 1) * stride] - z[(n - 1 - i) * stride];
        z[0] = z[0] + sums[i];
    });
    unroll<pairs>([&](auto j) ALWAYS_INLINE {
        constexpr double c = cosine(j + 1, n);
        constexpr double s = sine(j + 1, n);
        Complex<width> even = first + sums[0] * c;
        Complex<width> odd = differences[0] * s;
        unroll<pairs - 1>([&](auto i) ALWAYS_INLINE {
            constexpr double ci = cosine((i + 2) * (j + 1) % n, n);
            constexpr double si = sine((i + 2) * (j + 1) % n, n);
            even = even + sums[i + 1] * ci;
            odd = odd + differences[i + 1] * si;
        });
        z[(j + 1) * stride] = {even.re + odd.im, even.im - odd.re};
        z[(n - 1 - j) * stride] = {even.re - odd.im, even.im + odd.re};
    });
}

/// Transforms z[0], z[stride], ... z[(n-1) stride] in place for any n. With n = a b, the indices m = b j + i of the
/// inputs and k = k1 + a k2 of the bins, j, k1 < a and i, k2 < b, the sum over m splits into
///     X[k1 + a k2] = sum_i e^(-2 pi i i k2 / b) ( e^(-2 pi i i k1 / n) sum_j e^(-2 pi i j k1 / a) z[b j + i] ).
/// J. W. Cooley, J. W. Tukey, Math. Comp. 19 (1965).
template <int n, int stride, int width>
ALWAYS_INLINE inline void butterfly(Complex<width>* z) {
    constexpr int a = smallestFactor(n);
    constexpr int b = n / a;
    if constexpr (n == 2) {
        const Complex<width> difference = z[0] - z[stride];
        z[0] = z[0] + z[stride];
        z[stride] = difference;
    } else if constexpr (n == a) {
        oddButterfly<n, stride>(z);
    } else {
        unroll<b>([&](auto i) ALWAYS_INLINE {
            // 1. Transform over j, length a: bin k1 replaces input j = k1.
            butterfly<a, b * stride>(z + i * stride);
            // 2. Multiply by the twiddle factors e^(-2 pi i i k1 / n).
            unroll<a>([&](auto k1) ALWAYS_INLINE {
                Complex<width>& value = z[(b * k1 + i) * stride];
                value = timesRoot<i * k1, n>(value);
            });
        });
        // 3. Transform over i, length b: bin k1 + a k2 is now at b k1 + k2.
        unroll<a>([&](auto k1) ALWAYS_INLINE { butterfly<b, stride>(z + b * k1 * stride); });
        // 4. Sort: k1 = k % a, k2 = k / a.
        Complex<width> sorted[n];
        unroll<n>([&](auto k) ALWAYS_INLINE { sorted[k] = z[(k % a * b + k / a) * stride]; });
        unroll<n>([&](auto k) ALWAYS_INLINE { z[k * stride] = sorted[k]; });
    }
}

/// Stores lane p of z[j] at radix p + j, j < radix, for a radix that is a power of two.
template <int radix, int width>
ALWAYS_INLINE inline void storeTransposed(Complex<width>* z, const Split& to, std::ptrdiff_t at) {
    if constexpr (width > 1) {
        for (int round = 1; round < radix; round *= 2) {  // a round moves one bit of j into the lanes
            Complex<width> mixed[radix];
            unroll<radix / 2>([&](auto i) ALWAYS_INLINE {
                interleave<width>(z[i].re, z[i + radix / 2].re, mixed[2 * i].re, mixed[2 * i + 1].re);
                interleave<width>(z[i].im, z[i + radix / 2].im, mixed[2 * i].im, mixed[2 * i + 1].im);
            });
            unroll<radix>([&](auto i) ALWAYS_INLINE { z[i] = mixed[i]; });
        }
    }
    unroll<radix>([&](auto i) ALWAYS_INLINE { store(z[i], to, at + i * width); });
}

/// A pass with s = 1: the lanes run along p. A row shorter than the vector, or a radix that is not a power of two, is
/// computed one element at a time. The last vector of a row may overlap the one before it.
template <int radix>
struct FirstPass {
    template <int width>
    ALWAYS_INLINE static void run(const FftPass& pass) {
        const std::ptrdiff_t m = pass.m;
        if constexpr (width > 1) {
            if (m < width || (radix & (radix - 1)) != 0) {
                return run<1>(pass);
            }
        }
        constexpr std::ptrdiff_t turns = radix - 1;
        for (std::ptrdiff_t next = 0; next < m; next += width) {
            const std::ptrdiff_t p = std::min(next, m - width);
            Complex<width> z[radix];
            unroll<radix>([&](auto i) ALWAYS_INLINE { z[i] = loadPairs<width>(pass.pairs + 2 * (p + m * i)); });
            butterfly<radix, 1>(z);
            unroll<turns>([&](auto j) ALWAYS_INLINE { z[j + 1] = z[j + 1] * load<width>(pass.twiddles, m * j + p); });
            storeTransposed<radix>(z, pass.out, radix * p);
        }
    }
};

/// A pass with s > 1: the lanes run along q, with narrower vectors when a row is shorter than the vector.
template <int radix>
struct LaterPass {
    template <int width>
    ALWAYS_INLINE static void run(const FftPass& pass) {
        if constexpr (width > 1) {
            if (pass.s < width) {
                constexpr int narrower = width == 8 ? 4 : 1;
                return run<narrower>(pass);
            }
        }
        constexpr std::ptrdiff_t turns = radix - 1;
        const std::ptrdiff_t m = pass.m;
        const std::ptrdiff_t s = pass.s;
        for (std::ptrdiff_t p = 0; p < m; ++p) {
            Complex<1> w[turns];
            unroll<turns>([&](auto j) ALWAYS_INLINE { w[j] = load<1>(pass.twiddles, m * j + p); });
            for (std::ptrdiff_t next = 0; next < s; next += width) {
                const std::ptrdiff_t q = std::min(next, s - width);
                Complex<width> z[radix];
                unroll<radix>([&](auto i) ALWAYS_INLINE { z[i] = load<width>(pass.in, q + s * (p + m * i)); });
                butterfly<radix, 1>(z);
                unroll<turns>([&](auto j) ALWAYS_INLINE { z[j + 1] = z[j + 1] * w[j]; });
                unroll<radix>([&](auto j) ALWAYS_INLINE { store(z[j], pass.out, q + s * (radix * p + j)); });
            }
        }
    }
};

/// The lanes run along k; a vector of bins is computed together with that of their mirrors n - k.
struct SplitRealSpectrum {
    template <int width>
    ALWAYS_INLINE static void run(const PairedSpectrum& u) {
        const std::ptrdiff_t last = (u.n - 1) / 2;  // k = 1 ... last and their mirrors
        if constexpr (width > 1) {
            if (last < width) {
                return run<1>(u);
            }
        }
        u.half[0] = {u.z.re[0] + u.z.im[0], 0.0};
        u.half[u.n] = {u.z.re[0] - u.z.im[0], 0.0};
        if (u.n % 2 == 0) {
            u.half[u.n / 2] = {u.z.re[u.n / 2], -u.z.im[u.n / 2]};
        }
        for (std::ptrdiff_t next = 1; next <= last; next += width) {
            const std::ptrdiff_t k = std::min(next, last + 1 - width);
            const std::ptrdiff_t mirror = u.n - k - width + 1;
            const Complex<width> low = load<width>(u.z, k) * 0.5;
            const Complex<width> high = reversed(load<width>(u.z, mirror)) * 0.5;
            const Complex<width> even{low.re + high.re, low.im - high.im};
            const Complex<width> odd = Complex<width>{low.im + high.im, high.re - low.re} * load<width>(u.roots, k);
            const Complex<width> sum = even + odd;
            const Complex<width> difference = even - odd;
            storePairs(sum, &u.half[k].re);
            storePairs(reversed(Complex<width>{difference.re, -difference.im}), &u.half[mirror].re);
        }
    }
};

using RunPass = void (*)(FftPass);

/// The dispatched passes, one for each of fftRadices.
template <template <int> class Pass>
constexpr std::array<RunPass, fftRadices.size()> passesOf() {
    return []<std::size_t... i>(std::index_sequence<i...>) {
        return std::array<RunPass, fftRadices.size()>{vectorized<Pass<fftRadices[i]>, FftPass>...};
    }
    (std::make_index_sequence<fftRadices.size()>{});
}

constexpr auto firstPasses = passesOf<FirstPass>();
constexpr auto laterPasses = passesOf<LaterPass>();

}  // namespace

void runFftPass(std::size_t radix, const FftPass& pass) {
    assert(radix < fftRadices.size() && pass.m >= 1 && pass.s >= 1);
    assert(pass.s == 1 ? pass.pairs != pass.out.re : pass.in.re != pass.out.re);
    (pass.s == 1 ? firstPasses : laterPasses)[radix](pass);
}

void splitRealSpectrum(const PairedSpectrum& spectrum) {
    assert(spectrum.n >= 1 && &spectrum.half->re != spectrum.z.re);
    vectorized<SplitRealSpectrum>(spectrum);
}

}  // namespace coder
