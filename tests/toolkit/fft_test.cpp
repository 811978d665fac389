#include "toolkit/fft.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include "extended_precision.h"
#include "toolkit/fft_implementation_callback.h"
#include "toolkit/long_double_fft.h"
#include "toolkit/noise.h"
#include "toolkit/non_finite.h"

namespace {

using coder::complex_column;
using coder::creal_T;
using coder::RealFft;
using Spectrum = std::vector<creal_T>;

/// Two impulses: their spectrum stays near its mean magnitude, and every output hangs on few inputs.
std::vector<double> impulses(int n) {
    std::vector<double> x(static_cast<std::size_t>(n));
    x[x.size() / 3] = 1.0;
    x[x.size() - 1] += 0.3;
    return x;
}

Spectrum transform(const std::vector<double>& x, const coder::FftKernels& kernels = coder::bestFftKernels()) {
    const RealFft plan(static_cast<int>(x.size()), kernels);
    Spectrum half(static_cast<std::size_t>(plan.bins()));
    plan.forward(x, half.data());
    return half;
}

coder::column columnOf(const std::vector<double>& x) {
    coder::column y;
    y.set_size(static_cast<int>(x.size()));
    std::copy(x.begin(), x.end(), y.begin());
    return y;
}

/// The named textbook transforms, chosen by length; x is cut or padded to it.
Spectrum plainTransform(const std::vector<double>& x, int n) {
    const bool useRadix2 = std::has_single_bit(static_cast<unsigned>(n));
    int n2blue = 0;
    int nRows = 0;
    coder::row costab;
    coder::row sintab;
    coder::row sintabinv;
    complex_column y;
    coder::FFTImplementationCallback_get_algo_sizes(n, useRadix2, &n2blue, &nRows);
    coder::FFTImplementationCallback_generate_twiddle_tables(nRows, useRadix2, costab, sintab, sintabinv);
    if (useRadix2) {
        coder::FFTImplementationCallback_doHalfLengthRadix2(columnOf(x), y, nRows, costab, sintab);
    } else {
        coder::FFTImplementationCallback_dobluesteinfft(columnOf(x), n2blue, n, costab, sintab, sintabinv, y);
    }
    return {y.begin(), y.end()};
}

/// Errors of a half spectrum in units of 2^-53 sqrt(log2 n), relative to the RMS of the spectrum.
struct Errors {
    double rms = 0.0;
    double worst = 0.0;
};

/// The transform of one length by the long double build of FFTW.
class Reference {
public:
    explicit Reference(int n)
        : unit_(0x1p-53L * std::sqrt(std::max(1.0, std::log2(n)))), fft_(static_cast<std::size_t>(n)) {}

    void transform(const std::vector<double>& x) { bins_ = &fft_.transform(x); }

    Errors errorsOf(const Spectrum& half) const {
        long double power = 0.0L;
        long double sum = 0.0L;
        long double worst = 0.0L;
        for (std::size_t k = 0; k < bins_->size(); ++k) {
            const std::complex<long double> exact = (*bins_)[k];
            const long double error = std::norm(exact - std::complex<long double>(half[k].re, half[k].im));
            power += std::norm(exact);
            sum += error;
            worst = std::max(worst, error);
        }
        const long double bins = static_cast<long double>(bins_->size());
        return {static_cast<double>(std::sqrt(sum / power) / unit_),
                static_cast<double>(std::sqrt(worst * bins / power) / unit_)};
    }

private:
    long double unit_;
    LongDoubleFft fft_;
    const std::vector<std::complex<long double>>* bins_ = nullptr;
};

/// Largest prime factor, which decides the path.
int largestFactor(int n) {
    int largest = 1;
    for (int factor = 2; n > 1; ++factor) {
        for (; n % factor == 0; n /= factor) {
            largest = factor;
        }
    }
    return largest;
}

TEST(Fft, ErrorsStayWithinTheDocumentedBounds) {
    REQUIRE_EXTENDED_PRECISION();
    std::vector<int> lengths{4096,  8192,   16384, 32768, 65536, 131072, 262144, 524288, 1048576, 2187,
                             5000,  10000,  12500, 15625, 20000, 40000,  62500,  99000,  160000,  500000,
                             15015, 100100, 2053,  4099,  9973,  10007,  19946,  65537,  200006,  262147};
    for (int n = 1; n <= 2048; ++n) {
        lengths.push_back(n);
    }
    struct Path {
        const char* name;
        double bound;
        Errors errors;
    };
    Path paths[]{{"PowerOfTwo", 1.5, {}}, {"MixedRadix", 1.5, {}}, {"Chirp", 3.0, {}}, {"PlainRadix2", 1.5, {}}};
    for (const int n : lengths) {
        Reference reference(n);
        const int largest = largestFactor(n);
        const auto check = [&](Path& path, const Spectrum& half) {
            const Errors errors = reference.errorsOf(half);
            EXPECT_LE(errors.rms, path.bound) << path.name << ' ' << n;
            path.errors = {std::max(path.errors.rms, errors.rms), std::max(path.errors.worst, errors.worst)};
        };
        for (const auto& x : {noise(n), impulses(n)}) {
            reference.transform(x);
            check(paths[largest <= 2 ? 0 : largest <= 13 ? 1 : 2], transform(x));
            if (largest <= 2) {
                check(paths[3], plainTransform(x, n));
            }
        }
    }
    for (const Path& path : paths) {
        std::printf("%-11s RMS error %.2f, worst bin %.2f (in 2^-53 sqrt(log2 n))\n", path.name, path.errors.rms,
                    path.errors.worst);
    }
}

TEST(Fft, AgreesWithThePlainTransforms) {
    for (int n = 1; n <= 4096; ++n) {
        const std::vector<double> x = noise(n);
        const Spectrum half = transform(x);
        const Spectrum plain = plainTransform(x, n);
        ASSERT_EQ(plain.size(), x.size());
        double worst = 0.0;
        for (std::size_t k = 0; k < plain.size(); ++k) {
            const bool upper = k >= half.size();
            const creal_T expected = half[upper ? x.size() - k : k];
            worst = std::max({worst, std::fabs(plain[k].re - expected.re),
                              std::fabs(plain[k].im - (upper ? -expected.im : expected.im))});
        }
        EXPECT_LE(worst, 40 * 0x1p-53 * std::sqrt(n * std::max(1.0, std::log2(n)))) << n;
    }
}

TEST(Fft, EveryInstructionSetGivesTheSameBits) {
    std::vector<int> lengths{1000, 1001, 1024, 2000, 2002, 2048, 4000, 4999, 6006, 8192, 9973, 20020, 65536};
    for (int n = 1; n <= 400; ++n) {
        lengths.push_back(n);
    }
    for (const int n : lengths) {
        const std::vector<double> x = noise(n);
        const Spectrum expected = transform(x, coder::fftKernels().back());
        for (const coder::FftKernels& kernels : coder::fftKernels()) {
            if (kernels.supported()) {
                const Spectrum half = transform(x, kernels);
                EXPECT_EQ(std::memcmp(half.data(), expected.data(), half.size() * sizeof half[0]), 0)
                    << kernels.name << ' ' << n;
            }
        }
    }
}

TEST(Fft, InverseUndoesTheTransform) {
    for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 17, 34, 97, 100, 1000, 1001, 4096, 9973}) {
        const RealFft plan(n);
        const std::vector<double> x = noise(n);
        Spectrum half = transform(x);
        half.front().im = rtNaN;  // does not count
        if (n % 2 == 0) {
            half.back().im = rtNaN;
        }
        std::vector<double> back(x.size());
        plan.inverse(half.data(), back.data());
        for (std::size_t i = 0; i < x.size(); ++i) {
            EXPECT_NEAR(back[i], x[i], 1e-14) << n << " at " << i;
        }
    }
}

TEST(Fft, RowsAreCutOrPaddedToTheLength) {
    struct Case {
        int given;
        double nfft;
        std::size_t length;
    };
    for (const Case& c :
         {Case{5, 8, 8}, Case{5, 6.9, 6}, Case{9, 5, 5}, Case{8, 34, 34}, Case{40, 34, 34}, Case{7, 17, 17},
          Case{0, 4, 4}, Case{0, 3, 3}, Case{3, 1, 1}, Case{3, 0, 0}, Case{3, -2, 0}, Case{3, rtNaN, 0}}) {
        std::vector<double> x = noise(c.given);
        coder::complex_row y;
        coder::fft(coder::row(x), c.nfft, y);
        EXPECT_EQ(y.size(0), 1);
        ASSERT_EQ(static_cast<std::size_t>(y.size(1)), c.length);
        x.resize(c.length);
        complex_column expected;
        coder::fft(columnOf(x), expected);
        EXPECT_TRUE(std::equal(y.begin(), y.end(), expected.begin(), expected.end())) << c.given << " to " << c.nfft;
    }
}

TEST(Fft, ShortColumnsByHand) {
    struct Case {
        std::vector<double> x;
        Spectrum y;
    };
    const std::vector<Case> cases{{{}, {}},
                                  {{1}, {{1, 0}}},
                                  {{1, 2}, {{3, 0}, {-1, 0}}},
                                  {{1, 2, 4, 8}, {{15, 0}, {-3, 6}, {-5, 0}, {-3, -6}}},
                                  {{0, 1, 0, 0}, {{1, 0}, {0, -1}, {-1, 0}, {0, 1}}}};
    for (const Case& c : cases) {
        complex_column y;
        coder::fft(columnOf(c.x), y);
        EXPECT_EQ(Spectrum(y.begin(), y.end()), c.y) << c.x.size();
    }
}

TEST(Fft, OneNaNSpoilsEveryBin) {
    for (const int n : {64, 60, 15, 34, 17}) {
        std::vector<double> x = noise(n);
        x[5] = rtNaN;
        for (const creal_T bin : transform(x)) {
            EXPECT_TRUE(std::isnan(bin.re) || std::isnan(bin.im)) << n;
        }
    }
}

TEST(Fft, LengthsBeyondThirtyTwoBitsAreRefused) {
    EXPECT_THROW(RealFft(2147483647), std::bad_array_new_length);
    coder::complex_row y;
    EXPECT_THROW(coder::fft(coder::row(), 2147483648.0, y), std::bad_array_new_length);
    int n2blue = 0;
    int nRows = 0;
    EXPECT_THROW(coder::FFTImplementationCallback_get_algo_sizes(1 << 30, false, &n2blue, &nRows),
                 std::bad_array_new_length);
}

TEST(FftCallback, SizesAndTables) {
    struct Case {
        int nfft;
        bool useRadix2;
        int n2blue;
        int nRows;
    };
    for (const Case& c : {Case{8, true, 1, 8}, Case{1, false, 1, 1}, Case{5, false, 16, 16}, Case{6, false, 16, 16},
                          Case{33, false, 128, 128}, Case{(1 << 29), false, 1 << 30, 1 << 30}}) {
        int n2blue = 0;
        int nRows = 0;
        coder::FFTImplementationCallback_get_algo_sizes(c.nfft, c.useRadix2, &n2blue, &nRows);
        EXPECT_EQ(n2blue, c.n2blue) << c.nfft;
        EXPECT_EQ(nRows, c.nRows) << c.nfft;
    }
    for (int nRows = 1; nRows <= 64; nRows *= 2) {
        coder::row costab;
        coder::row sintab;
        coder::row sintabinv;
        coder::FFTImplementationCallback_generate_twiddle_tables(nRows, false, costab, sintab, sintabinv);
        const int last = nRows / 2;
        for (const coder::row* table : {&costab, &sintab, &sintabinv}) {
            ASSERT_EQ(table->numel(), last + 1);
        }
        for (int k = 0; k <= last; ++k) {
            EXPECT_NEAR(costab[k], std::cos(2 * M_PI * k / nRows), 1e-15);
            EXPECT_NEAR(sintab[k], -std::sin(2 * M_PI * k / nRows), 1e-15);
            EXPECT_EQ(sintabinv[k], -sintab[k]);
            if (nRows >= 4) {
                EXPECT_EQ(costab[k], -costab[last - k]);
                EXPECT_EQ(sintab[k], sintab[last - k]);
                EXPECT_EQ(sintab[k], -costab[std::abs(nRows / 4 - k)]);
            }
        }
    }
}

TEST(FftCallback, RealTransformsCutAndPad) {
    for (const int n : {12, 15, 16}) {
        for (const int given : {0, 4, 7, n - 1, n + 3}) {
            const std::vector<double> x = noise(given);
            std::vector<double> fitted = x;
            fitted.resize(static_cast<std::size_t>(n));
            EXPECT_EQ(plainTransform(x, n), plainTransform(fitted, n)) << given << " to " << n;
        }
    }
}

TEST(FftCallback, ComplexTransformCutsPadsAndInverts) {
    coder::row costab;
    coder::row sintab;
    coder::row sintabinv;
    coder::FFTImplementationCallback_generate_twiddle_tables(32, false, costab, sintab, sintabinv);
    for (const int given : {0, 3, 16, 20}) {
        complex_column x;
        complex_column y;
        complex_column back;
        x.set_size(given);
        for (int i = 0; i < given; ++i) {
            x[i] = {i + 1.0, 3.0 - i * i};
        }
        coder::FFTImplementationCallback_r2br_r2dit_trig_impl(x, 16, costab, sintab, y);
        coder::FFTImplementationCallback_r2br_r2dit_trig_impl(y, 16, costab, sintabinv, back);
        for (int i = 0; i < 16; ++i) {
            const creal_T expected = i < given ? x[i] : creal_T{};
            EXPECT_NEAR(back[i].re / 16, expected.re, 1e-12) << given;
            EXPECT_NEAR(back[i].im / 16, expected.im, 1e-12) << given;
        }
    }
}

}  // namespace
