// The parameter table of the loaded library against the golden file, entry by entry. tests/reference tells how the
// golden file was written.

#include <gtest/gtest.h>

#include <fstream>

#include "adapter/nlohmann/json.h"
#include "plugin_host.h"
#include "reference/recording.h"

namespace {

using nlohmann::json;

TEST(GoldenParameters, AgreeForEveryChoiceOfFlags) {
    const json golden = json::parse(std::ifstream(RT305_4_REFERENCE_FOLDER "/golden_parameters.json"));
    const auto channels = recording::samples();
    const json& tolerances = golden.at("relative tolerance by unit");
    for (const json& entry : golden.at("entries")) {
        const std::size_t samples = entry.at("samples");
        const std::string flags = entry.at("flags");
        Call call;
        for (std::uint32_t column = 0; column < 6; ++column) {
            const std::vector<double>& x = channels[column];
            call.add(column < 3 ? Call::voltage : Call::current, column % 3,
                     {x.begin(), x.begin() + static_cast<std::ptrdiff_t>(samples)});
        }
        call.request.samplesNumber = samples;
        call.request.inputType = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
        call.request.options.measurementFlags = static_cast<std::uint32_t>(std::stoul(flags, nullptr, 16));
        ASSERT_EQ(call.run(), 1);

        const json document = json::parse(call.texts[Call::parameters]);
        const json& expected = entry.at("parameters");
        EXPECT_EQ(document.at("paramData").size(), expected.size());
        for (const json& row : document.at("paramData")) {
            const std::string name = row.at("LastName");
            const std::string where = name + " of " + std::to_string(samples) + " samples, flags " + flags;
            const json& value = expected.at(name);
            EXPECT_EQ(row.at("dataName").is_null(), value.is_null()) << where << ": " << row << " for " << value;
            if (value.is_number() && row.at("dataName").is_number()) {
                const double tolerance = tolerances.at(row.at("units").get<std::string>());
                EXPECT_NEAR(row.at("dataName").get<double>(), value, tolerance * std::fabs(value.get<double>()))
                    << where;
            }
        }
    }
}

}  // namespace
