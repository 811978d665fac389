// What the driver makes of a request before it computes: no text shows which channels were filled.

#include "plugin/request.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

using calc_modul_K9_web_ns::Measurement;

/// Channel k of Va Vb Vc Ia Ib Ic has k + 1 samples, or none.
constexpr double values[6]{};

calc_modul_K9_web_ns::RawChannel& channel(Measurement& measurement, std::size_t k) {
    return (k < 3 ? measurement.voltages : measurement.currents)[k % 3];
}

TEST(Request, FillsMissingChannelsFromTheOtherQuantity) {
    struct Case {
        std::uint32_t type;
        std::string_view given;
        std::string_view filled;  // the channel whose samples each has
    };
    for (const Case& c : {
             Case{RT305_4_INPUT_VOLTAGES, "123...", "123123"},
             Case{RT305_4_INPUT_VOLTAGES, "123.5.", "123153"},
             Case{0, "1.....", "1..1.."},
             Case{RT305_4_INPUT_CURRENTS, "...456", "456456"},
             Case{RT305_4_INPUT_CURRENTS, ".2.456", "426456"},
             Case{RT305_4_INPUT_CURRENTS, "123...", "123..3"},
             Case{RT305_4_INPUT_VOLTAGES_AND_CURRENTS, "123...", "123..3"},
             Case{RT305_4_INPUT_VOLTAGES_AND_CURRENTS, "...456", "456456"},
         }) {
        Measurement measurement;
        for (std::size_t k = 0; k < 6; ++k) {
            channel(measurement, k).samples = {values, c.given[k] == '.' ? 0 : k + 1};
        }
        fillMissingChannels(measurement, c.type);
        std::string filled;
        for (std::size_t k = 0; k < 6; ++k) {
            filled += ".123456"[channel(measurement, k).samples.size()];
        }
        EXPECT_EQ(filled, c.filled) << c.type << " " << c.given;
    }
}

}  // namespace
