// How the plug-in reads a request: hostile descriptors, and the channels it fills in, which no text shows.

#include "plugin/request.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/request.h"

namespace {

using support::Call;

TEST(Request, SurvivesHostileFields) {
    const char* const wrongLength = "The number of samples is  not correct";
    const char* const noDescriptors = "There is no data for one or more phases";
    const struct {
        const char* name;
        void (*change)(Call&);
        const char* message;  // "": accepted
    } cases[]{
        {"type with high bit", [](Call& c) { c.request.inputType |= 1U << 31U; }, "This data type is not supported"},
        {"highest operation", [](Call& c) { c.request.operation = ~0U; }, "This operation is not supported"},
        {"null samples", [](Call& c) { c.channels[2].samples = nullptr; }, wrongLength},
        {"huge count", [](Call& c) { c.channels[2].count = ~std::uint64_t{0}; }, wrongLength},
        {"huge counts and sample number",
         [](Call& c) {
             c.request.samplesNumber = std::uint64_t{1} << 61U;
             for (ChannelData& channel : c.channels) {
                 channel.count = c.request.samplesNumber;
             }
         },
         wrongLength},
        {"negative channel count", [](Call& c) { c.request.channelCount = std::numeric_limits<std::int32_t>::min(); },
         noDescriptors},
        {"null channels", [](Call& c) { c.request.channels = nullptr; }, wrongLength},
        {"type 0 with null channels",
         [](Call& c) {
             c.request.channels = nullptr;
             c.request.inputType = 0;
         },
         ""},
    };
    for (const auto& c : cases) {
        Call call(RT305_4_INPUT_VOLTAGES_AND_CURRENTS, 0,
                  support::sixChannels([](std::size_t) { return signals::Samples(64, 1.0); }));
        c.change(call);
        EXPECT_EQ(call.run(), *c.message == '\0') << c.name;
        EXPECT_STREQ(call.texts.errorString, c.message) << c.name;
    }
}

TEST(Request, FillsMissingChannelsFromTheOtherKind) {
    struct Case {
        std::uint32_t type;
        std::string given;   // channel k of Va Vb Vc Ia Ib Ic has k + 1 samples, or none
        std::string filled;  // the channel that each takes its samples from
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
        constexpr double samples[6]{};
        calc_modul_K9_web_ns::Measurement measurement;
        const auto channel = [&](std::size_t k) -> auto& {
            return (k < 3 ? measurement.voltages : measurement.currents)[k % 3].samples;
        };
        for (std::size_t k = 0; k < 6; ++k) {
            channel(k) = {samples, c.given[k] == '.' ? 0 : k + 1};
        }
        fillMissingChannels(measurement, c.type);
        std::string filled;
        for (std::size_t k = 0; k < 6; ++k) {
            filled += ".123456"[channel(k).size()];
        }
        EXPECT_EQ(filled, c.filled) << c.type << " " << c.given;
    }
}

}  // namespace
