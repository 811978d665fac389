#include "toolkit/fft.h"

#include <gtest/gtest.h>

#include <bit>
#include <new>

#include "extras/fft_arrays.h"
#include "extras/fft_implementation_callback.h"
#include "support/plain.h"
#include "support/signals.h"
#include "toolkit/non_finite.h"

namespace {

using coder::column;
using coder::complex_column;
using coder::creal_T;
using coder::RealFft;
using coder::row;
using signals::noise;
using signals::Samples;
using Spectrum = std::vector<creal_T>;

column columnOf(const Samples& x) {
    column y;
    y.set_size(static_cast<int>(x.size()));
    std::copy(x.begin(), x.end(), y.begin());
    return y;
}

Spectrum allBins(const Samples& x) {
    complex_column y;
    coder::fft(columnOf(x), y);
    return {y.begin(), y.end()};
}

struct Tables {
    explicit Tables(int nRows, bool useRadix2 = false) {
        coder::FFTImplementationCallback_generate_twiddle_tables(nRows, useRadix2, cosine, sine, inverse);
    }
    row cosine, sine, inverse;
};

/// The textbook transform of n bins, of a row that is cut or padded to them.
Spectrum textbook(const Samples& x, std::size_t bins) {
    const auto n = static_cast<int>(bins);
    const bool useRadix2 = std::has_single_bit(bins);
    int n2blue = 0;
    int nRows = 0;
    coder::FFTImplementationCallback_get_algo_sizes(n, useRadix2, &n2blue, &nRows);
    const Tables tables(nRows, useRadix2);
    complex_column y;
    if (useRadix2) {
        coder::FFTImplementationCallback_doHalfLengthRadix2(columnOf(x), y, nRows, tables.cosine, tables.sine);
    } else {
        coder::FFTImplementationCallback_dobluesteinfft(columnOf(x), n2blue, n, tables.cosine, tables.sine,
                                                        tables.inverse, y);
    }
    return {y.begin(), y.end()};
}

/// RMS error of all bins relative to the RMS of the spectrum, in units of 2^-53 sqrt(log2 n).
double errorOf(const Spectrum& bins, const std::vector<plain::Complex>& half) {
    const std::size_t n = bins.size();
    plain::Real error = 0;
    plain::Real power = 0;
    for (std::size_t k = 0; k < n; ++k) {
        const plain::Complex exact = k < half.size() ? half[k] : std::conj(half[n - k]);
        error += std::norm(plain::Complex(bins[k].re, bins[k].im) - exact);
        power += std::norm(exact);
    }
    return static_cast<double>(std::sqrt(error / power)) / (0x1p-53 * std::sqrt(std::max(1.0, std::log2(n))));
}

bool hasLargeFactor(std::size_t n) {
    for (const std::size_t factor : {2U, 3U, 5U, 7U, 11U, 13U}) {
        while (n % factor == 0) {
            n /= factor;
        }
    }
    return n > 1;
}

TEST(Fft, ErrorsAreWithinTheirBounds) {
    REQUIRE_EXTENDED_PRECISION();
    std::vector<std::size_t> lengths{4096,  65536,  524288, 1048576, 2187,   5000, 10000, 12500, 15625, 62500,
                                     99000, 160000, 500000, 15015,   100100, 2053, 9973,  19946, 65537, 200006};
    for (std::size_t n = 1; n <= 2048; ++n) {
        lengths.push_back(n);
    }
    for (const std::size_t n : lengths) {
        Samples impulses(n);  // every output depends on few inputs
        impulses[n / 3] = 1.0;
        impulses[n - 1] += 0.3;
        for (const Samples& x : {noise(n), impulses}) {
            const auto exact = plain::halfSpectrum(x, n);
            EXPECT_LE(errorOf(allBins(x), exact), hasLargeFactor(n) ? 3.0 : 1.5) << n;
            EXPECT_TRUE(n > 5000 || errorOf(textbook(x, n), exact) < (std::has_single_bit(n) ? 1.5 : 12.0)) << n;
        }
    }
}

TEST(Fft, InverseUndoesTheTransform) {
    for (const std::size_t n : {1U, 2U, 3U, 34U, 1000U, 1001U, 4096U, 9973U}) {
        const Samples x = noise(n);
        Spectrum bins = allBins(x);
        bins[0].im = rtNaN;  // unused, as at n / 2
        bins[n / 2].im = n % 2 == 0 ? rtNaN : bins[n / 2].im;
        Samples back(n);
        coder::inverse(RealFft(static_cast<int>(n)), bins.data(), back.data());
        for (std::size_t i = 0; i < n; ++i) {
            EXPECT_NEAR(back[i], x[i], 1e-14) << n << " at " << i;
        }
    }
}

TEST(Fft, RowsAreCutOrPaddedToTheLength) {
    const struct {
        std::size_t given;
        double nfft;
        std::size_t length;
    } cases[]{{5, 8, 8}, {5, 6.9, 6}, {9, 5, 5}, {8, 34, 34}, {40, 34, 34}, {7, 17, 17},
              {0, 4, 4}, {3, 1, 1},   {3, 0, 0}, {3, -2, 0},  {3, rtNaN, 0}};
    for (const auto& c : cases) {
        Samples x = noise(c.given);
        coder::complex_row y;
        coder::fft(row(x), c.nfft, y);
        const Spectrum cutByTextbook = c.length == 0 ? Spectrum() : textbook(x, c.length);
        x.resize(c.length);
        EXPECT_EQ(y.size(0), 1);
        EXPECT_EQ(Spectrum(y.begin(), y.end()), allBins(x)) << c.given << " to " << c.nfft;
        EXPECT_EQ(cutByTextbook, c.length == 0 ? Spectrum() : textbook(x, c.length)) << c.given << " to " << c.nfft;
    }
}

TEST(Fft, LengthsBeyondThirtyTwoBitsAreRefused) {
    EXPECT_THROW(RealFft(2147483647), std::bad_array_new_length);
    coder::complex_row y;
    EXPECT_THROW(coder::fft(row(), 2147483648.0, y), std::bad_array_new_length);
    int n2blue = 0;
    int nRows = 0;
    EXPECT_THROW(coder::FFTImplementationCallback_get_algo_sizes(1 << 30, false, &n2blue, &nRows),
                 std::bad_array_new_length);
    coder::FFTImplementationCallback_get_algo_sizes(1 << 29, false, &n2blue, &nRows);
    EXPECT_EQ(n2blue, 1 << 30);
}

TEST(TextbookFft, TablesAreSymmetricInEveryBit) {
    for (int nRows = 1; nRows <= 64; nRows *= 2) {
        const Tables tables(nRows);
        const int last = nRows / 2;
        ASSERT_EQ(tables.cosine.numel() + tables.sine.numel() + tables.inverse.numel(), 3 * (last + 1));
        EXPECT_EQ(Tables(nRows, true).inverse.numel(), 0);
        for (int k = 0; k <= last; ++k) {
            EXPECT_NEAR(tables.cosine[k], std::cos(2 * M_PI * k / nRows), 1e-15);
            EXPECT_NEAR(tables.sine[k], -std::sin(2 * M_PI * k / nRows), 1e-15);
            EXPECT_EQ(tables.inverse[k], -tables.sine[k]);
            EXPECT_TRUE(nRows < 4 || tables.cosine[k] == -tables.cosine[last - k]) << k << " of " << nRows;
            EXPECT_TRUE(nRows < 4 || tables.sine[k] == -tables.cosine[std::abs(nRows / 4 - k)]) << k << " of " << nRows;
        }
    }
}

}  // namespace
