#include "calc/calc_modul_K9_web.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "calc/channel_kind.h"

namespace calc_modul_K9_web_ns {
namespace {

TEST(Options, DecodeEveryBit) {
    const MeasurementOptions none(0);
    EXPECT_EQ(none.frequency, "frequency_fixed");
    EXPECT_EQ(none.wiring, "three");
    EXPECT_EQ(none.source, "real");
    EXPECT_EQ(none.currents, "three_current");
    EXPECT_EQ(none.power, "not_mode_power");
    EXPECT_EQ(none.rebuiltCurrent, PhaseChoice::none);
    EXPECT_FALSE(none.keepRebuiltRms || none.negateActivePower || none.negateReactivePower);
    EXPECT_EQ(MeasurementOptions(0x100).frequency, "frequency_control");
    EXPECT_EQ(MeasurementOptions(0x1).wiring, "four");
    for (const std::uint32_t bit : {0x10000000U, 0x20000000U, 0x40000000U}) {
        EXPECT_EQ(MeasurementOptions(bit).source, "sim");
    }
    EXPECT_EQ(MeasurementOptions(0x80000000U).source, "real");
    EXPECT_EQ(MeasurementOptions(0x20).currents, "two_current");
    EXPECT_EQ(MeasurementOptions(0x40).rebuiltCurrent, PhaseChoice::a);
    EXPECT_EQ(MeasurementOptions(0x80).rebuiltCurrent, PhaseChoice::b);
    EXPECT_EQ(MeasurementOptions(0xC0).rebuiltCurrent, PhaseChoice::c);
    EXPECT_TRUE(MeasurementOptions(0x200).keepRebuiltRms);
    EXPECT_TRUE(MeasurementOptions(0x400).negateActivePower);
    EXPECT_TRUE(MeasurementOptions(0x800).negateReactivePower);
    const std::vector<std::string_view> power{
        "not_mode_power",         "mode_three_wattmeter",     "mode_two_wattmeter",   "mode_two_wattmeter_faz",
        "mode_three_wattmeter_c", "mode_three_wattmeter_c_3", "mode_three_wattmeter", "mode_three_wattmeter"};
    for (std::uint32_t mode = 0; mode < 8; ++mode) {
        EXPECT_EQ(MeasurementOptions(mode << 16U).power, power[mode]);
    }
    const std::vector<std::string_view> windows{"win_rectwin", "win_hanning", "win_hamming", "win_kaiser"};
    for (std::uint32_t window = 0; window < 4; ++window) {
        EXPECT_EQ(SpectrumOptions(window << 24U).window, windows[window]);
        EXPECT_EQ(SpectrumOptions(window << 28U).transform, window == 1 ? "fft_mode_2" : "fft_mode_1");
        EXPECT_EQ(SpectrumOptions(window << 1U).scale, window == 1 ? "win_log" : "win_not_log");
    }
    EXPECT_TRUE(SpectrumOptions(0x10000).peaksByCriterion);
    EXPECT_FALSE(SpectrumOptions(~0x10000U).peaksByCriterion);
}

/// Rebuilt currents as operation 1 shows them, with channels of the given lengths.
std::array<std::vector<double>, 3> rebuilt(std::uint32_t flags, const std::array<std::vector<double>, 3>& x) {
    Measurement measurement;
    for (std::size_t phase = 0; phase < 3; ++phase) {
        measurement.currents[phase].samples = x[phase];
    }
    measurement.samplesNumber = 0.0;  // nothing is repaired
    measurement.inputType = 8.9;
    measurement.measurementFlags = flags | 0x10000000U;
    measurement.processingMode = 1;
    coder::b_table signals;
    ResultRecords results;
    results.currents.signals = &signals;
    calc_modul_K9_web(measurement, results);
    std::array<std::vector<double>, 3> y;
    for (std::size_t phase = 0; phase < 3; ++phase) {
        y[phase].assign(signals.variables.signals[phase].begin(), signals.variables.signals[phase].end());
    }
    return y;
}

TEST(Computation, RebuildsTheCurrentThatWasNotMeasured) {
    const std::array<std::vector<double>, 3> x{{{-1, 1}, {-2, 2}, {-4, 4}}};
    EXPECT_EQ(rebuilt(0, x), x);
    EXPECT_EQ(rebuilt(0xC0, x), x) << "three measured currents: the phase bits are ignored";
    EXPECT_EQ(rebuilt(0x20, x), x) << "no phase chosen";
    EXPECT_EQ(rebuilt(0x60, x)[0], (std::vector<double>{6, -6}));
    EXPECT_EQ(rebuilt(0xA0, x)[1], (std::vector<double>{5, -5}));
    EXPECT_EQ(rebuilt(0xE0, x)[2], (std::vector<double>{3, -3}));
    EXPECT_EQ(rebuilt(0xE0, {{{3}, {-2, 2}, {}}})[2], (std::vector<double>{2, -2})) << "one sample stands for all";
}

TEST(Computation, StatisticsFollowTheirDefinitions) {
    const auto statistics = [](std::vector<double> x) {
        Measurement measurement;
        for (RawChannel& channel : measurement.voltages) {
            channel.samples = x;
        }
        measurement.inputType = 4.5;
        measurement.measurementFlags = 0x70000000U;
        measurement.processingMode = 1;
        coder::b_table signals;
        ResultRecords results;
        results.voltages.signals = &signals;
        calc_modul_K9_web(measurement, results);
        return signals.variables.statistics[2].values;
    };
    EXPECT_EQ(statistics({-3, 3, 3, -3}), (std::array<double, 4>{0, 3, 1, 6})) << "square wave";
    const auto single = statistics({7});
    EXPECT_EQ(single[1], 0.0);
    EXPECT_TRUE(std::isnan(single[2]));
    for (const double v : statistics({})) {
        EXPECT_TRUE(std::isnan(v));
    }
}

TEST(Computation, StagesThatDoNotRunLeaveTheirRecordsPrefilled) {
    for (const double type : {0.0, 4.0, 8.0, 20.9, -4.0}) {
        for (const std::uint32_t mode : {0U, 1U, 7U}) {
            Measurement measurement;
            measurement.inputType = type;
            measurement.processingMode = mode;
            coder::d_table parameters;
            coder::b_table voltages;
            coder::b_table currents;
            coder::c_table distortion;
            calc_modul_K9_web(measurement,
                              {&parameters, {&voltages, nullptr, &distortion}, {&currents, nullptr, nullptr}});
            EXPECT_EQ(parameters.names[15], "Udab") << "names are cut to their own width";
            EXPECT_EQ(parameters.units[34], "-");
            EXPECT_TRUE(std::isnan(parameters[coder::Parameter::Pfc]));
            EXPECT_EQ(distortion.labels[1], "Vb");
            EXPECT_EQ(distortion.verticalAxis[2], "Amp, dB");
            EXPECT_EQ(currents.variables.labels[2], "Ic");
            EXPECT_EQ(currents.variables.verticalAxis[0], "Current, A");
            const bool ran = mode == 1 && type == 8.0;
            EXPECT_EQ(currents.variables.signals[0].numel(), ran ? 0 : 1);
        }
    }
    EXPECT_TRUE(isInitialized_calc_modul_K9_web());
    calc_modul_K9_web_terminate();
    EXPECT_FALSE(isInitialized_calc_modul_K9_web());
}

}  // namespace
}  // namespace calc_modul_K9_web_ns
