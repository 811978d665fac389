#include "measurement.h"

#include <gtest/gtest.h>

#include "failure.h"

namespace {

using rt305::makeMeasurement;
using rt305::MeasurementSettings;
using rt305::Recording;

Recording recordingOf(const std::vector<std::string>& names, const std::string& unit = "") {
    Recording recording{"rec.csv", {}, 2, 10000.0, "", {}};
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
    withoutRate.rateHz = 0.0;
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
        EXPECT_EQ(makeMeasurement(recordingOf({"Ua", "Ub", "Uc"}, unit), {}).samples[0][0], value) << unit;
    }
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
