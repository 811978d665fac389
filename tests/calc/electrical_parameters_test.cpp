// Electrical parameters that the golden file has no case of.

#include "calc/electrical_parameters.h"

#include <gtest/gtest.h>

#include "calc/phase_difference.h"
#include "support/signals.h"

namespace calc_modul_K9_web_ns {
namespace {

using coder::d_table;
using coder::Parameter;
using coder::row;
using signals::Samples;

ChannelSet balanced(double amplitude) {
    const auto phase = [=](int p) { return row(signals::cosine(5000, amplitude, 50.0, -signals::twoPi * p / 3.0)); };
    return {phase(0), phase(1), phase(2)};
}

d_table measure(const ChannelSet& u, const ChannelSet& i, const MeasurementOptions& options) {
    d_table out;
    out.prefill();
    const SumsOfBoth sums(u, i);
    ParamData_mo_305_4(u, i, sums, u[0].numel(), options, measureHarmonics(u, i, sums), out);
    return out;
}

TEST(ElectricalParameters, ASingleSamplePairsWithAllOthers) {
    ChannelSet u = balanced(100.0);
    u[1] = row(Samples{7.0});
    const d_table out = measure(u, balanced(5.0), MeasurementOptions(1));
    EXPECT_NEAR(out[Parameter::Udab], std::sqrt(5000.0 + 49.0), 1e-9);
    EXPECT_NEAR(out[Parameter::Udb], 7.0 / std::sqrt(5000.0), 1e-12);
    const ChannelSet none{};
    for (const double value : measure(none, none, MeasurementOptions(0x40101)).values) {
        EXPECT_TRUE(std::isnan(value));
    }
}

TEST(Harmonics, OfEachChannelWithItsOwnMeanAndLength) {
    const auto channel = [](std::size_t n, double offset) {
        return row(signals::wave(Samples(n, offset), {{1.0, 50.0, 0.0}, {0.1, 150.0, 0.0}}));
    };
    const ChannelSet set{channel(4000, 0.0), channel(4000, 10.0), channel(3000, -300.0)};
    const SetHarmonics together = measureHarmonics(set, coder::b_thdSettings);
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        EXPECT_NEAR(together[phase].r, -20.0, 1e-3) << phase;
    }
}

TEST(PhaseDifference, IsThatOfTheDominantLinesOfAnyLength) {
    for (const std::size_t n : {200U, 400U, 997U, 1000U, 1001U, 2000U, 4093U}) {
        const double samples = static_cast<double>(n);
        const double whole = 1e4 / samples * std::round(50.0 * samples / 1e4);  // a whole number of periods
        const Samples x = signals::wave(Samples(n, 1000.0), {{3.0, whole, 0.2}});
        for (const double angle : {-1.5, 0.0, 0.5, 2.8}) {
            const Samples y = signals::cosine(n, 0.1, whole, 0.2 + angle);
            EXPECT_NEAR(phdiffmeasure(x, y), angle, 1e-9) << n;
            EXPECT_NEAR(phdiffmeasure(y, x), -angle, 1e-9) << n;
        }
    }
    EXPECT_NEAR(phdiffmeasure(signals::cosine(1000, 1.0, 50.0), signals::cosine(600, 1.0, 150.0, 0.7)), 0.7, 1e-9)
        << "each signal has its own dominant line and length";
    EXPECT_TRUE(std::isnan(phdiffmeasure(row(), row())));
}

}  // namespace
}  // namespace calc_modul_K9_web_ns
