#include "toolkit/harmonic_distortion.h"

#include <gtest/gtest.h>

#include "extras/thd.h"
#include "support/plain.h"
#include "support/signals.h"
#include "toolkit/non_finite.h"
#include "toolkit/scalar.h"

namespace {

using coder::column;
using coder::HarmonicResult;
using signals::Samples;

struct Harmonic {
    int order;
    double levelDb;  // amplitude over that of the fundamental
};
using Harmonics = std::vector<Harmonic>;

double decibels(double powerRatio) {
    return 10.0 * std::log10(powerRatio);
}

Samples waveform(std::size_t n, double f1, double amplitude, const Harmonics& harmonics, double offset,
                 double rate = 10000.0) {
    std::vector<signals::Cosine> lines{{amplitude, f1, 0.7}};
    for (const Harmonic& h : harmonics) {
        lines.push_back({amplitude * std::pow(10.0, h.levelDb / 20.0), h.order * f1, 0.7 * h.order});
    }
    return signals::wave(Samples(n, offset), lines, rate);
}

/// All from the second to the 40th.
Harmonics all(double fromDb, double toDb) {
    Harmonics harmonics;
    for (int k = 2; k <= 40; ++k) {
        harmonics.push_back({k, fromDb + (toDb - fromDb) * (k - 2) / 38.0});
    }
    return harmonics;
}

TEST(HarmonicDistortion, OfKnownSpectra) {
    const struct {
        std::size_t n;
        double f1, amplitude;
        Harmonics harmonics;
        double offset, toleranceDb;
    } cases[]{
        {10000, 50.0, 325.0, {{3, -40.0}, {40, -60.0}}, 1e4, 1e-3},
        {10000, 50.0, 1.0, {{39, -120.0}}, 0.0, 1e-3},
        {10000, 50.0, 1.0, all(-20.0, -120.0), 0.5, 1e-3},
        {10000, 49.987, 1.0, all(-30.0, -110.0), 0.5, 1e-2},
        {10000, 57.3, 1.0, {{2, -20.0}, {3, -120.0}, {4, -60.0}}, 0.0, 1e-2},
        {9973, 50.013, 230.0, all(-40.0, -100.0), 20.0, 1e-2},
        {16384, 50.0, 230.0, all(-100.0, -40.0), 20.0, 1e-2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.n << " samples of " << c.f1 << " Hz");
        const HarmonicResult result = coder::b_thd(waveform(c.n, c.f1, c.amplitude, c.harmonics, c.offset));
        const double fundamentalDb = decibels(c.amplitude * c.amplitude / 2.0);
        double total = 0.0;
        ASSERT_EQ(result.harmPow.size() + result.harmFreq.size(), 80U);
        EXPECT_NEAR(decibels(result.harmPow[0]), fundamentalDb, c.toleranceDb);
        EXPECT_NEAR(result.harmFreq[0], c.f1, 1e-4);
        for (const Harmonic& h : c.harmonics) {
            const auto k = static_cast<std::size_t>(h.order - 1);
            total += std::pow(10.0, h.levelDb / 10.0);
            EXPECT_NEAR(decibels(result.harmPow[k]), fundamentalDb + h.levelDb, c.toleranceDb) << h.order;
            EXPECT_NEAR(result.harmFreq[k], c.f1 * h.order, 2e-2) << h.order;
        }
        EXPECT_NEAR(result.r, decibels(total), c.toleranceDb);
    }
}

TEST(HarmonicDistortion, LeavesOutHarmonicsAboveTheBand) {
    // The 26th harmonic, 5278 Hz, is folded to 4722 Hz, between the 23rd and the 24th.
    const HarmonicResult wide = coder::b_thd(waveform(10000, 203.0, 1.0, {{24, -60.0}, {26, -20.0}}, 0.0));
    EXPECT_NEAR(wide.r, -60.0, 1e-3);
    for (std::size_t k = 1; k <= 40; ++k) {
        EXPECT_TRUE(std::isnan(wide.harmPow[k - 1]) == (k > 24) && std::isnan(wide.harmFreq[k - 1]) == (k > 24)) << k;
    }
    const HarmonicResult none = coder::thd(waveform(1000, 140.0, 1.0, {}, 3.0, 500.0));
    EXPECT_EQ(none.r, rtMinusInf);
    EXPECT_EQ(none.harmPow.size(), 5U);
    EXPECT_NEAR(none.harmFreq[0], 140.0, 1e-9);
}

TEST(HarmonicDistortion, OfDegenerateRowsIsNaN) {
    Samples x = waveform(1000, 500.0, 1.0, {}, 0.0);
    for (std::size_t n = 2; n < 60; ++n) {
        EXPECT_EQ(coder::b_thd(coder::samples(x.data(), n)).harmPow.size(), 40U) << "short rows are read in bounds";
    }
    x[321] = rtNaN;
    for (const Samples& row : {Samples(), Samples{5.0}, Samples(1000, 0.0), x}) {
        const HarmonicResult result = coder::b_thd(row);
        ASSERT_EQ(result.harmFreq.size(), 40U);
        EXPECT_TRUE(std::isnan(result.r) && std::isnan(result.harmFreq[0])) << row.size();
        EXPECT_TRUE(std::isnan(result.harmPow[1]) && std::isnan(result.harmFreq[39])) << row.size();
    }
}

/// A spectrum small enough to follow by hand. DC, doubled, falls until bin 2, which clears it; the fundamental reaches
/// from bin 0 to bin 7, its second harmonic from 7 to 9; the third lies above the band.
TEST(HarmonicDistortion, OfASpectrumByHand) {
    const auto measure = [](double rbw, double count, double firstHz) {
        const Samples F{firstHz, 2, 4, 6, 8, 10, 12, 14, 16, 18};
        column density;
        density.set_size(10);
        std::ranges::copy(Samples{3, 5, 1, 2, 8, 2, 1, 0.5, 2, 0.25}, density.begin());
        return coder::computeTHD(density, F, rbw, count);
    };
    const HarmonicResult wide = measure(1.0, 3.9, 0.0);
    ASSERT_EQ(wide.harmPow.size(), 3U);
    EXPECT_DOUBLE_EQ(wide.harmFreq[0], (6.0 * 2 + 8.0 * 8 + 10.0 * 2 + 12.0 * 1 + 14.0 * 0.5) / 13.5);
    EXPECT_DOUBLE_EQ(wide.harmPow[0], 27.0);
    EXPECT_DOUBLE_EQ(wide.harmFreq[1], (14.0 * 0.5 + 16.0 * 2 + 18.0 * 0.25) / 2.75);
    EXPECT_DOUBLE_EQ(wide.harmPow[1], 5.5);
    EXPECT_TRUE(std::isnan(wide.harmPow[2]));
    EXPECT_DOUBLE_EQ(wide.r, decibels(5.5 / 27.0));
    const HarmonicResult narrow = measure(10.0, 2.0, 0.0);
    EXPECT_DOUBLE_EQ(narrow.harmPow[0], 80.0) << "a line has one noise bandwidth at least";
    EXPECT_EQ(narrow.harmFreq, (Samples{8.0, 16.0})) << "of its largest bin";
    const HarmonicResult withoutZero = measure(1.0, 2.0, 0.5);
    EXPECT_TRUE(std::isnan(withoutZero.r) && std::isnan(withoutZero.harmPow[0]));
}

TEST(Periodogram, HoldsTheMeanSquareOfATone) {
    for (const int n : {1, 999, 1000}) {
        column rectangle;
        rectangle.set_size(n);
        std::fill(rectangle.begin(), rectangle.end(), 1.0);
        coder::Periodogram periodogram(rectangle, 10.0);
        EXPECT_DOUBLE_EQ(periodogram.noiseBandwidth(), 10.0 / n);
        EXPECT_EQ(periodogram.frequencies().back(), n / 2 * 10.0 / n);
        EXPECT_EQ(std::ssize(periodogram.frequencies()), n / 2 + 1);
        for (const int bin : n == 1 ? std::vector<int>{} : std::vector{1, 100, n / 2}) {
            const double meanSquare = 2 * bin == n ? 1.0 : 0.5;
            const std::span<const double> pxx =
                periodogram.density(signals::wave(Samples(static_cast<std::size_t>(n), 4.0), {{1.0, double(bin)}}, n));
            ASSERT_EQ(std::ssize(pxx), n / 2 + 1);
            EXPECT_NEAR(pxx[static_cast<std::size_t>(bin)] * 10.0 / n, meanSquare, 1e-12) << n << " " << bin;
            EXPECT_NEAR(coder::bandpower(pxx, 10.0 / n), meanSquare, 1e-12) << n << " " << bin;
        }
    }
}

}  // namespace
