#include "toolkit/harmonic_distortion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "toolkit/non_finite.h"
#include "toolkit/scalar.h"

namespace {

using coder::column;
using coder::HarmonicResult;

struct Line {
    int harmonic;
    double levelDb;  // amplitude over that of the fundamental
};

std::vector<double> waveform(int n, double rate, double f1, double amplitude, const std::vector<Line>& harmonics,
                             double offset) {
    std::vector<double> x(static_cast<std::size_t>(n), offset);
    std::vector<Line> lines = harmonics;
    lines.push_back({1, 0.0});
    for (const Line& line : lines) {
        const double scale = amplitude * std::pow(10.0, line.levelDb / 20.0);
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double periods = std::fmod(line.harmonic * f1 * static_cast<double>(i) / rate, 1.0);
            x[i] += scale * std::cos(coder::twoPi * periods + 0.7 * line.harmonic);
        }
    }
    return x;
}

double totalDb(const std::vector<Line>& lines) {
    double sum = 0.0;
    for (const Line& line : lines) {
        sum += std::pow(10.0, line.levelDb / 10.0);
    }
    return 10.0 * std::log10(sum);
}

std::vector<Line> allHarmonics(double fromDb, double toDb) {
    std::vector<Line> lines;
    for (int k = 2; k <= 40; ++k) {
        lines.push_back({k, fromDb + (toDb - fromDb) * (k - 2) / 38.0});
    }
    return lines;
}

TEST(HarmonicDistortion, OfKnownSpectra) {
    struct Case {
        int n;
        double f1;
        double amplitude;
        std::vector<Line> lines;
        double offset;
        double toleranceDb;
    };
    const Case cases[] = {
        {10000, 50.0, 325.0, {{2, -20.0}}, 0.0, 1e-3},
        {10000, 50.0, 325.0, {{3, -40.0}, {40, -60.0}}, 1e4, 1e-3},
        {10000, 50.0, 0.01, {{5, -80.0}}, 0.0, 1e-3},
        {10000, 50.0, 1.0, {{39, -120.0}}, 0.0, 1e-3},
        {10000, 50.0, 1.0, allHarmonics(-20.0, -120.0), 0.5, 1e-3},
        {10000, 50.0, 1.0, allHarmonics(-120.0, -20.0), -5.0, 1e-3},
        {10000, 49.987, 1.0, allHarmonics(-30.0, -110.0), 0.5, 1e-2},
        {10000, 57.3, 1.0, {{2, -20.0}, {3, -120.0}, {4, -60.0}}, 0.0, 1e-2},
        {9973, 50.013, 230.0, allHarmonics(-40.0, -100.0), 20.0, 1e-2},
        {16384, 50.0, 230.0, allHarmonics(-40.0, -100.0), 20.0, 1e-2},
        {7001, 51.7, 230.0, {{2, -50.0}, {40, -90.0}}, 20.0, 1e-2},
    };
    for (const Case& c : cases) {
        const HarmonicResult result = coder::b_thd(waveform(c.n, 10000.0, c.f1, c.amplitude, c.lines, c.offset));
        const double fundamentalDb = 10.0 * std::log10(c.amplitude * c.amplitude / 2.0);
        ASSERT_EQ(result.harmPow.size(), 40U);
        ASSERT_EQ(result.harmFreq.size(), 40U);
        EXPECT_NEAR(result.r, totalDb(c.lines), c.toleranceDb) << c.n << " " << c.f1;
        EXPECT_NEAR(result.harmPow[0], fundamentalDb, c.toleranceDb);
        EXPECT_NEAR(result.harmFreq[0], c.f1, 1e-4);
        for (const Line& line : c.lines) {
            const std::size_t k = static_cast<std::size_t>(line.harmonic - 1);
            EXPECT_NEAR(result.harmPow[k], fundamentalDb + line.levelDb, c.toleranceDb) << c.f1 << " " << line.harmonic;
            EXPECT_NEAR(result.harmFreq[k], c.f1 * line.harmonic, 2e-2) << c.f1 << " " << line.harmonic;
        }
    }
}

TEST(HarmonicDistortion, LeavesOutHarmonicsAboveTheBand) {
    // The 26th harmonic, 5278 Hz, is folded to 4722 Hz, between the 23rd and the 24th.
    const HarmonicResult wide = coder::b_thd(waveform(10000, 10000.0, 203.0, 1.0, {{24, -60.0}, {26, -20.0}}, 0.0));
    EXPECT_NEAR(wide.r, -60.0, 1e-3);
    for (std::size_t k = 1; k <= 40; ++k) {
        EXPECT_EQ(std::isnan(wide.harmPow[k - 1]), k > 24) << k;
        EXPECT_EQ(std::isnan(wide.harmFreq[k - 1]), k > 24) << k;
    }
    const HarmonicResult none = coder::thd(waveform(1000, 500.0, 140.0, 1.0, {}, 3.0));
    EXPECT_EQ(none.r, rtMinusInf);
    EXPECT_EQ(none.harmPow.size(), 5U);
    EXPECT_NEAR(none.harmFreq[0], 140.0, 1e-9);
}

TEST(HarmonicDistortion, OfDegenerateRowsIsNaN) {
    const auto expectNaN = [](const HarmonicResult& result, const char* what) {
        EXPECT_TRUE(std::isnan(result.r)) << what;
        ASSERT_EQ(result.harmFreq.size(), 40U);
        EXPECT_TRUE(std::isnan(result.harmFreq[0])) << what;
        for (std::size_t k = 1; k < 40; ++k) {
            EXPECT_TRUE(std::isnan(result.harmPow[k]) && std::isnan(result.harmFreq[k])) << what << " " << k;
        }
    };
    expectNaN(coder::b_thd({}), "empty");
    expectNaN(coder::b_thd(std::vector<double>{5.0}), "one sample");
    expectNaN(coder::b_thd(std::vector<double>(1000, 0.0)), "silence");
    std::vector<double> x = waveform(1000, 10000.0, 500.0, 1.0, {}, 0.0);
    x[321] = rtNaN;
    expectNaN(coder::b_thd(x), "a NaN sample");
    for (std::size_t n = 2; n < 60; ++n) {
        EXPECT_EQ(coder::b_thd(coder::samples(x.data(), n)).harmPow.size(), 40U) << "short rows are read in bounds";
    }
}

/// The whole measurement on a spectrum small enough to be followed by hand.
TEST(HarmonicDistortion, OfASpectrumByHand) {
    column F;
    F.set_size(10);
    for (int k = 0; k < 10; ++k) {
        F[k] = 2.0 * k;
    }
    const std::vector<double> density{3.0, 5.0, 1.0, 2.0, 8.0, 2.0, 1.0, 0.5, 2.0, 0.25};
    const auto measure = [&](double rbw, double count) {
        column pxx;
        pxx.set_size(10);
        std::copy(density.begin(), density.end(), pxx.begin());
        return coder::computeTHD(pxx, F, rbw, count);
    };
    // DC, doubled, rolls down to bin 2, which clears it; the fundamental reaches from bin 0 to bin 7, its second
    // harmonic is the line of bin 8 with its neighbours 7 and 9; the third lies above the band.
    const HarmonicResult wide = measure(1.0, 3.9);
    const double f1 = (6.0 * 2 + 8.0 * 8 + 10.0 * 2 + 12.0 * 1 + 14.0 * 0.5) / 13.5;
    ASSERT_EQ(wide.harmPow.size(), 3U);
    EXPECT_DOUBLE_EQ(wide.harmFreq[0], f1);
    EXPECT_DOUBLE_EQ(wide.harmPow[0], 10.0 * std::log10(27.0));
    EXPECT_DOUBLE_EQ(wide.harmFreq[1], (14.0 * 0.5 + 16.0 * 2 + 18.0 * 0.25) / 2.75);
    EXPECT_DOUBLE_EQ(wide.harmPow[1], 10.0 * std::log10(5.5));
    EXPECT_TRUE(std::isnan(wide.harmPow[2]));
    EXPECT_DOUBLE_EQ(wide.r, 10.0 * std::log10(5.5 / 27.0));

    // A line counts as one noise bandwidth at least: then it stands at its largest bin.
    const HarmonicResult narrow = measure(10.0, 2.0);
    EXPECT_DOUBLE_EQ(narrow.harmPow[0], 10.0 * std::log10(80.0));
    EXPECT_EQ(narrow.harmFreq[0], 8.0);
    EXPECT_EQ(narrow.harmFreq[1], 16.0);

    F[0] = 0.5;
    const HarmonicResult shifted = measure(1.0, 2.0);
    EXPECT_TRUE(std::isnan(shifted.r) && std::isnan(shifted.harmPow[0]) && std::isnan(shifted.harmFreq[0]));
    EXPECT_TRUE(measure(1.0, 0.0).harmPow.empty());
}

TEST(HarmonicDistortion, NearestBinIsThatOfThePlainSearch) {
    std::mt19937_64 random(11);
    for (const int n : {1, 2, 3, 97, 1000, 9973, 10000}) {
        std::vector<double> F;
        for (int k = 0; k <= n / 2; ++k) {
            F.push_back(k * 10000.0 / n);
        }
        std::vector<double> distance(F.size());
        std::uniform_real_distribution<double> anywhere(-1.0, 5001.0);
        for (int i = 0; i < 300; ++i) {
            const double midway = (static_cast<double>(i % (n / 2 + 1)) + 0.5) * 10000.0 / n;
            const double target = i % 3 == 0 ? midway : anywhere(random);
            for (std::size_t k = 0; k < F.size(); ++k) {
                distance[k] = std::fabs(F[k] - target);
            }
            const auto nearest = std::min_element(distance.begin(), distance.end()) - distance.begin();
            ASSERT_EQ(coder::nearestBin(F, target), static_cast<std::size_t>(nearest)) << n << " " << target;
        }
    }
}

TEST(Periodogram, HoldsTheMeanSquareOfATone) {
    for (const int n : {999, 1000}) {
        coder::column rectangle;
        rectangle.set_size(n);
        std::fill(rectangle.begin(), rectangle.end(), 1.0);
        coder::Periodogram periodogram(rectangle, 10.0);
        const coder::samples F = periodogram.frequencies();
        EXPECT_DOUBLE_EQ(periodogram.noiseBandwidth(), 10.0 / n);
        EXPECT_EQ(F.back(), n / 2 * 10.0 / n);
        column pxx;
        for (const int bin : {1, 100, n / 2}) {
            std::vector<double> x;
            double meanSquare = 0.0;
            for (int i = 0; i < n; ++i) {
                x.push_back(4.0 + std::cos(coder::twoPi * bin * i / n));
                meanSquare += (x.back() - 4.0) * (x.back() - 4.0) / n;
            }
            periodogram.density(x, pxx);
            ASSERT_EQ(pxx.numel(), n / 2 + 1);
            EXPECT_NEAR(pxx[bin] * 10.0 / n, meanSquare, 1e-13) << n << " " << bin;
            EXPECT_NEAR(coder::bandpower(pxx, 10.0 / n), meanSquare, 1e-13) << n << " " << bin;
        }
    }
}

}  // namespace
