#include "measuring/measurement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "base/failure.h"

namespace {

using rt305::makeMeasurement;
using rt305::MeasurementSettings;
using rt305::Recording;

Recording recordingOf(const std::vector<std::string>& names, const std::string& unit = "") {
    Recording recording{.source = "rec.csv", .length = 2};
    recording.setRate(10000.0, "as given");
    for (const std::string& name : names) {
        const auto value = static_cast<double>(recording.columns.size() + 1);
        recording.columns.push_back({name, unit, {value, -value}, {}});
    }
    return recording;
}

TEST(Measurement, ChannelsDecideTheInputType) {
    struct Case {
        std::vector<std::string> names;
        std::uint32_t flags;
        std::uint32_t inputType;  // 0: refused
        std::size_t warnings;
    };
    constexpr std::uint32_t rebuildB = RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_B;
    const Case cases[] = {
        {{"Ua", "Ub", "Uc", "Ia", "Ib", "Ic"}, 0, RT305_4_INPUT_VOLTAGES_AND_CURRENTS, 0},
        {{"Ua", "Ub", "Uc"}, 0, RT305_4_INPUT_VOLTAGES, 0},
        {{"Ia", "Ib", "Ic"}, 0, RT305_4_INPUT_CURRENTS, 0},
        {{"Ua", "Ub", "Uc", "Ia", "Ic"}, 0, RT305_4_INPUT_VOLTAGES, 1},
        {{"Ua", "Ub", "Uc", "Ia", "Ic"}, rebuildB, RT305_4_INPUT_VOLTAGES_AND_CURRENTS, 0},
        {{"Ua", "Ub", "Uc", "Ia", "Ib"}, rebuildB, RT305_4_INPUT_VOLTAGES, 1},
        {{"Ub", "Uc", "Ia", "Ib", "Ic"}, 0, RT305_4_INPUT_CURRENTS, 1},
        {{"Ub", "Uc", "Ia", "Ib"}, 0, 0, 0},
    };
    for (const Case& c : cases) {
        MeasurementSettings settings;
        settings.flags = c.flags;
        if (c.inputType == 0) {
            EXPECT_THROW(makeMeasurement(recordingOf(c.names), settings), rt305::Failure);
            continue;
        }
        const auto measurement = makeMeasurement(recordingOf(c.names), settings);
        EXPECT_EQ(measurement.inputType, c.inputType) << c.names.size() << " " << c.flags;
        EXPECT_EQ(measurement.warnings.size(), c.warnings) << c.names.size() << " " << c.flags;
    }
    MeasurementSettings all;
    all.inputType = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
    EXPECT_EQ(makeMeasurement(recordingOf({"Ua"}), all).inputType, RT305_4_INPUT_VOLTAGES_AND_CURRENTS)
        << "what the user asks for is left to the library to judge";
    Recording withoutRate = recordingOf({"Ua", "Ub", "Uc"});
    withoutRate.segments.clear();
    EXPECT_THROW(makeMeasurement(withoutRate, {}), rt305::Failure);
}

TEST(Measurement, TheThreeCurrentsAddUpToZeroWhenOneIsRebuilt) {
    const std::vector<std::string> all{"Ua", "Ub", "Uc", "Ia", "Ib", "Ic"};
    constexpr std::uint32_t phases[] = {RT305_4_REBUILT_PHASE_A, RT305_4_REBUILT_PHASE_B, RT305_4_REBUILT_PHASE_C};
    for (std::size_t phase = 0; phase < rt305::phaseTotal; ++phase) {
        std::vector<std::string> names = all;
        names.erase(names.begin() + static_cast<std::ptrdiff_t>(rt305::phaseTotal + phase));
        MeasurementSettings settings;
        settings.flags = RT305_4_TWO_CURRENTS | phases[phase];
        const auto samples = makeMeasurement(recordingOf(names), settings).samples;
        ASSERT_EQ(samples[rt305::phaseTotal + phase].size(), 2U);
        EXPECT_EQ(samples[3][1] + samples[4][1] + samples[5][1], 0.0);
        EXPECT_NE(samples[rt305::phaseTotal + phase][1], 0.0);
    }
}

TEST(Measurement, SamplesAreVoltsAndAmperes) {
    for (const auto& [unit, value] :
         {std::pair{"kV", 1000.0}, std::pair{"V", 1.0}, std::pair{"mV", 1e-3}, std::pair{"", 1.0}}) {
        EXPECT_EQ(makeMeasurement(recordingOf({"Ua", "Ub", "Uc"}, unit), {}, rt305::RateMatters::no).samples[0][0],
                  value)
            << unit;
    }
}

/// A sine of 50 Hz on each channel, each lagging the one before by 60 degrees.
Recording sines(double rateHz, std::size_t length) {
    Recording recording = recordingOf({"Ua", "Ub", "Uc", "Ia", "Ib", "Ic"});
    recording.length = length;
    recording.setRate(rateHz, "as given");
    for (std::size_t channel = 0; channel < rt305::channelTotal; ++channel) {
        auto& samples = recording.columns[channel].samples;
        samples.resize(length);
        for (std::size_t k = 0; k < length; ++k) {
            samples[k] =
                std::sin(std::numbers::pi * (100.0 * recording.seconds[k] - static_cast<double>(channel) / 3.0));
        }
    }
    return recording;
}

TEST(Measurement, TakesTheChosenPartOfTheSegment) {
    Recording recording = recordingOf({"Ua", "Ub", "Uc"});
    recording.length = 9;
    recording.columns[0].samples = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    recording.columns[1].samples = recording.columns[2].samples = recording.columns[0].samples;
    recording.setRate(2.0, "as given");
    recording.segments = {{0, 3, 2.0}, {3, 5, 2.0}, {8, 1, 2.0}};
    struct Case {
        std::optional<std::size_t> segment;
        double start;
        double duration;
        double first;
        std::size_t count;  // 0: refused
    };
    const Case cases[] = {{{}, 0.0, 0.0, 3.0, 5}, {1, 0.0, 0.0, 0.0, 3}, {2, 1.0, 0.0, 5.0, 3}, {2, 0.5, 1.0, 4.0, 2},
                          {2, 0.5, 2.5, 0.0, 0},  {2, 2.5, 0.0, 0.0, 0}, {4, 0.0, 0.0, 0.0, 0}, {0, 0.0, 0.0, 0.0, 0}};
    for (const Case& c : cases) {
        MeasurementSettings settings;
        settings.segment = c.segment;
        settings.startSeconds = c.start;
        settings.durationSeconds = c.duration;
        settings.resample = false;
        if (c.count == 0) {
            EXPECT_THROW(makeMeasurement(recording, settings), rt305::Failure);
            continue;
        }
        const auto measurement = makeMeasurement(recording, settings);
        EXPECT_EQ(measurement.length, c.count);
        EXPECT_EQ(measurement.samples[0].size(), c.count);
        EXPECT_EQ(measurement.samples[0][0], c.first);
        EXPECT_EQ(measurement.notes.size(), c.segment ? 0U : 1U);
    }
}

TEST(Measurement, ResamplesToTheRateThatTheLibraryAssumes) {
    for (const double rateHz : {800.0, 1200.0, 7680.0, 50000.0}) {
        const auto measurement = makeMeasurement(sines(rateHz, static_cast<std::size_t>(0.1 * rateHz)), {});
        EXPECT_EQ(measurement.rateHz, rt305::combinedRateHz);
        EXPECT_EQ(measurement.recordedRateHz, rateHz);
        ASSERT_EQ(measurement.length, 1000U);
        ASSERT_EQ(measurement.notes.size(), 1U);
        const Recording expected = sines(rt305::combinedRateHz, 1000);
        for (std::size_t channel = 0; channel < rt305::channelTotal; ++channel) {
            for (std::size_t k = 0; k < 1000; ++k) {
                ASSERT_NEAR(measurement.samples[channel][k], expected.columns[channel].samples[k], 1e-6)
                    << rateHz << " Hz, channel " << channel << ", sample " << k;
            }
        }
    }
    Recording voltages = sines(10000.0, 10000);
    voltages.columns.resize(3);
    EXPECT_EQ(makeMeasurement(voltages, {}).length, 500U);
    EXPECT_EQ(makeMeasurement(voltages, {}, rt305::RateMatters::no).length, 10000U);
    EXPECT_TRUE(makeMeasurement(sines(10000.5, 100), {}).notes.empty()) << "near enough";
}

TEST(Measurement, APartIsResampledWithItsSurroundings) {
    MeasurementSettings settings;
    settings.startSeconds = 0.305;
    settings.durationSeconds = 0.02;
    Recording recording = sines(2000.0, 2000);
    recording.columns[0].samples[620] = NAN;  // 5 ms after the start
    const auto measurement = makeMeasurement(recording, settings);
    ASSERT_EQ(measurement.length, 100U * 2);
    for (std::size_t k = 0; k < measurement.length; ++k) {
        const double t = 0.305 + static_cast<double>(k) * 1e-4;
        EXPECT_NEAR(measurement.samples[1][k], std::sin(std::numbers::pi * (100.0 * t - 1.0 / 3.0)), 1e-6);
        EXPECT_EQ(std::isnan(measurement.samples[0][k]), k >= 48 && k <= 52) << k;
    }
    ASSERT_EQ(measurement.warnings.size(), 1U);
    EXPECT_EQ(measurement.warnings[0].substr(0, 52), "5 samples of Ua are missing, the first after 0.0048 ");
}

TEST(Channels, SettingsAreSixNumbersOrNamed) {
    using rt305::parsePerChannel;
    using Six = rt305::PerChannel<double>;
    EXPECT_EQ(parsePerChannel("-x", "1, 2,3,4,5,6e1", 9.0), (Six{1.0, 2.0, 3.0, 4.0, 5.0, 60.0}));
    EXPECT_EQ(parsePerChannel("-x", "ic=-7,Ub = 2", 9.0), (Six{9.0, 2.0, 9.0, 9.0, 9.0, -7.0}));
    for (const char* const text : {"", "1,2,3", "1,2,3,4,5,x", "Ud=1", "Ua=", "Ua=1,2"}) {
        EXPECT_THROW(parsePerChannel("-x", text, 9.0), rt305::Failure) << text;
    }
    for (const char* const text : {"Ua", "Ua=", "Ux=a", "=a", "Ua=a,"}) {
        EXPECT_THROW(rt305::parseColumnMap("--map", text), rt305::Failure) << text;
    }
}

}  // namespace
