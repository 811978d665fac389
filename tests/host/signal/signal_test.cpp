#include <gtest/gtest.h>

#include "recording/recording.h"
#include "signal/fractional_delay.h"
#include "signal/gap_filling.h"
#include "signal/harmonic_fit.h"
#include "signal/resampler.h"
#include "support/signals.h"

namespace {

using signals::cosine;

TEST(Resampler, KeepsSinesToTheEdgesOfAnyPart) {
    struct Case {
        double rateHz;
        std::size_t first, count;
        double toHz;
    };
    for (const Case& c : {Case{800, 0, 80, 10000},
                          {1200, 0, 120, 10000},
                          {7680, 0, 768, 10000},
                          {50000, 0, 5000, 10000},
                          {2000, 610, 40, 10000},
                          {10000, 0, 5000, 500},
                          {10000, 7, 90, 10000}}) {
        const auto x = cosine(5000, 1.0, 50.0, 0.4, c.rateHz);
        const std::vector<double> whole(x.begin(), x.begin() + (c.first == 0 ? c.count : x.size()));
        const auto y = rt305::resampled(whole, c.first, c.count, c.rateHz, c.toHz);
        const double start = static_cast<double>(c.first) / c.rateHz;
        const auto wanted = cosine(y.size(), 1.0, 50.0, 0.4 + 50.0 * signals::twoPi * start, c.toHz);
        ASSERT_EQ(y.size(), std::lround(static_cast<double>(c.count) * c.toHz / c.rateHz));
        for (std::size_t k = 0; k < y.size(); ++k) {
            ASSERT_NEAR(y[k], wanted[k], 1e-6) << c.rateHz << " Hz, sample " << k;
        }
    }
}

TEST(Resampler, MarksAndBridgesMissingSamples) {
    auto x = cosine(2000, 1.0, 5.0, 0.0, 2000.0);
    x[620] = NAN;
    const auto y = rt305::resampled(x, 610, 40, 2000.0, 10000.0);
    const auto wanted = cosine(8000, 1.0, 5.0);
    for (std::size_t k = 0; k < y.size(); ++k) {
        EXPECT_TRUE(k >= 48 && k <= 52 ? std::isnan(y[k]) : std::fabs(y[k] - wanted[3050 + k]) < 1e-3)
            << k << " " << y[k];
    }
}

TEST(FractionalDelay, ShiftsSinesAndMarksWhatIsMissing) {
    for (const double delay : {0.3, -0.25, 11.11, -40.5, 0.0}) {  // 11.11 samples: 20 degrees at 50 Hz and 10 kHz
        auto x = cosine(1000, 1.0, 50.0, 0.4);
        x[500] = NAN;
        const auto y = rt305::delayed(x, delay);
        const auto wanted = cosine(1000, 1.0, 50.0, 0.4 - delay * signals::twoPi / 200.0);
        for (std::size_t k = 0; k < y.size(); ++k) {
            const bool isInGap = std::fabs(static_cast<double>(k) - 500.0 - delay) < 1.0;
            ASSERT_TRUE(isInGap ? std::isnan(y[k]) : std::fabs(y[k] - wanted[k]) < 1e-4) << delay << " " << k;
        }
    }
}

TEST(GapFilling, ContinuesHarmonicsAndLeavesLongGaps) {
    const auto clean = signals::wave(std::vector<double>(2000, 0.5), {{1.0, 50.0}, {0.3, 650.0, 1.0}});
    auto x = clean;
    for (const auto& [first, count] : {std::pair{0, 2}, {100, 8}, {300, 1}, {302, 1}, {700, 9}, {712, 3}, {1998, 2}}) {
        std::fill_n(x.begin() + first, count, NAN);
    }
    EXPECT_EQ(rt305::fillGaps(x, 8), 17U);
    for (std::size_t k = 0; k < x.size(); ++k) {
        ASSERT_TRUE(k >= 700 && k < 709 ? std::isnan(x[k]) : std::fabs(x[k] - clean[k]) < 1e-3) << k << " " << x[k];
    }
    std::vector<double> few{NAN, 1.0, NAN, 3.0, NAN};
    EXPECT_EQ(rt305::fillGaps(few, 1), 3U);
    EXPECT_EQ(few, (std::vector<double>{1.0, 1.0, 2.0, 3.0, 3.0}));
    std::vector<double> none(3, NAN);
    EXPECT_EQ(rt305::fillGaps(none, 8), 0U);
}

TEST(Recording, CountsClippedSamples) {
    const auto clipped = [](double limit, double step) {
        auto x = cosine(200, 1.0, 50.0, -signals::twoPi / 4.0, 50.0 * signals::twoPi / 0.1);
        for (double& value : x) {
            value = std::round(std::fmin(std::fmax(value, -limit), limit) / step) * step;
        }
        return static_cast<double>(rt305::countClipped(x));
    };
    EXPECT_EQ(clipped(2.0, 1e-12), 0);
    EXPECT_EQ(clipped(2.0, 0.01), 0) << "the rounded crest of a coarse converter";
    EXPECT_EQ(rt305::countClipped(std::vector<double>(9, 1.0)), 0U);
    EXPECT_NEAR(clipped(0.8, 1e-12), 200.0 * 4.0 * std::acos(0.8) / signals::twoPi, 10.0);
}

/// RMS error of the frequency under 1 % noise, at 50 Hz and 10 kHz; the Cramer-Rao bound of ten cycles is 0.62 mHz.
TEST(HarmonicFit, FindsTheFundamentalNearTheCramerRaoBound) {
    struct Case {
        double cycles, harmonics, interharmonic, offset, largestMilliHz;
    };
    for (const Case& c : {Case{3, 0.05, 0.0, 0.0, 7.0},
                          {10, 0.0, 0.0, 0.0, 1.0},
                          {10, 0.05, 0.0, 0.0, 1.0},
                          {10, 0.05, 0.02, 0.0, 1.5},
                          {10, 0.05, 0.0, 0.5, 1.5},
                          {100, 0.05, 0.02, 0.5, 0.05}}) {
        double squares = 0.0;
        constexpr int trials = 40;
        for (int trial = 0; trial < trials; ++trial) {
            const double f = 49.0 + 0.05 * trial;
            const auto n = static_cast<std::size_t>(c.cycles / f * 10000.0);
            auto x = signals::wave(signals::noise(n, static_cast<std::uint64_t>(trial), 0.0, 0.01 / std::sqrt(2.0)),
                                   {{1.0, f, 0.3 * trial},
                                    {c.harmonics, 3.0 * f, 1.0},
                                    {c.harmonics, 5.0 * f, 2.0},
                                    {c.interharmonic, 2.37 * f, 0.5}});
            for (std::size_t k = 0; k < n; ++k) {
                x[k] += c.offset * std::exp(-static_cast<double>(k) / 400.0);
            }
            const auto fit = rt305::findFundamental(rt305::LineSearch(x.size()), x, 10000.0, 10.0, 1000.0);
            ASSERT_TRUE(fit) << c.cycles << " cycles";
            squares += 1e6 * (fit->frequencyHz - f) * (fit->frequencyHz - f);
        }
        EXPECT_LE(std::sqrt(squares / trials), c.largestMilliHz) << c.cycles << " cycles, offset " << c.offset;
    }
}

}  // namespace
