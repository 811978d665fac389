// The parameter text of the loaded library against the golden file. tests/reference says how that file was computed.

#include <gtest/gtest.h>

#include <fstream>

#include "adapter/nlohmann/json.h"
#include "reference/recording.h"
#include "support/request.h"

namespace {

using nlohmann::json;

TEST(GoldenParameters, AgreeForEveryChoiceOfFlags) {
    const json golden = json::parse(std::ifstream(RT305_4_REFERENCE_FOLDER "/golden_parameters.json"));
    const auto recorded = recording::samples();
    const json& tolerances = golden.at("relative tolerance by unit");
    for (const json& entry : golden.at("entries")) {
        const std::ptrdiff_t length = entry.at("samples");
        const std::string flags = entry.at("flags");
        support::Call call(RT305_4_INPUT_VOLTAGES_AND_CURRENTS, 0, support::sixChannels([&](std::size_t channel) {
                               return signals::Samples(recorded[channel].begin(), recorded[channel].begin() + length);
                           }));
        call.request.options.measurementFlags = static_cast<std::uint32_t>(std::stoul(flags, nullptr, 16));
        ASSERT_TRUE(call.run());
        const json rows = json::parse(call.text(0)).at("paramData");
        const json& expected = entry.at("parameters");
        EXPECT_EQ(rows.size(), expected.size());
        for (const json& row : rows) {
            SCOPED_TRACE(row.dump() + " of " + std::to_string(length) + " samples, flags " + flags);
            const json& value = expected.at(row.at("LastName"));
            ASSERT_EQ(row.at("dataName").is_null(), value.is_null());
            if (value.is_number()) {
                const double tolerance = tolerances.at(row.at("units"));
                EXPECT_NEAR(row.at("dataName"), value, tolerance * std::fabs(value.get<double>()));
            }
        }
    }
}

}  // namespace
