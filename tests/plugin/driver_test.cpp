// The driver's checks, answers and texts, through the loaded library.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>

#include "plugin_host.h"

namespace {

constexpr std::size_t n = 64;

/// A request that succeeds: all six channels, type 21, operation 0.
void fillValid(Call& call) {
    for (const std::int32_t kind : {Call::voltage, Call::current}) {
        for (std::uint32_t phase = 0; phase < 3; ++phase) {
            call.add(kind, phase, sine(n, 1.0 + phase, 50.0));
        }
    }
    call.request.samplesNumber = n;
    call.request.inputType = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
}

struct Fault {
    const char* name;
    const char* message;  // empty: accepted
    std::function<void(Call&)> apply;
};

// In the order in which the checks run: a request with several faults answers with the first one's message.
const std::vector<Fault> faults{
    {"output pointer", "One or more output parameters are set incorrectly",
     [](Call& c) { c.request.spectrumParamU = nullptr; }},
    {"input type", "This data type is not supported", [](Call& c) { c.request.inputType = 5; }},
    {"sample number", "The sample rate or sample number is not correct", [](Call& c) { c.request.samplesNumber = 0; }},
    {"operation", "This operation is not supported", [](Call& c) { c.request.operation = 4; }},
    {"descriptor count", "There is no data for one or more phases",
     [](Call& c) {
         c.countGiven = true;
         c.request.channelCount = 2;
     }},
    {"channel length", "The number of samples is  not correct", [](Call& c) { c.descriptors[0].count = n - 1; }},
};

TEST(Driver, AnswersTheFirstFailedCheckForEveryCombinationOfFaults) {
    for (unsigned chosen = 1; chosen < 1U << faults.size(); ++chosen) {
        Call call;
        fillValid(call);
        std::string expected;
        for (std::size_t i = 0; i < faults.size(); ++i) {
            if ((chosen >> i & 1U) != 0) {
                faults[i].apply(call);
                expected = expected.empty() ? faults[i].message : expected;
            }
        }
        EXPECT_EQ(call.run(), 0) << expected;
        EXPECT_EQ(call.texts[Call::error], expected);
        for (int text = Call::parameters; text < Call::error; ++text) {
            EXPECT_EQ(call.texts[static_cast<std::size_t>(text)], Call::untouched) << "only the message is written";
        }
    }
}

TEST(Driver, ChecksSingleFields) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const char* const missing = "There is no data for one or more phases";
    const char* const wrongNumber = "The number of samples is  not correct";
    const auto dropDescriptors = [](std::size_t kept) { return [=](Call& c) { c.descriptors.resize(kept); }; };
    const std::vector<Fault> cases{
        {"valid", "", [](Call&) {}},
        {"rate 0", "The sample rate or sample number is not correct", [](Call& c) { c.request.sampleRate = -0.0; }},
        {"rate NaN passes", "", [=](Call& c) { c.request.sampleRate = nan; }},
        {"negative rate passes", "", [](Call& c) { c.request.sampleRate = -1.0; }},
        {"type with high bit", "This data type is not supported", [](Call& c) { c.request.inputType = 0x80000004U; }},
        {"operation 4 billion", "This operation is not supported", [](Call& c) { c.request.operation = ~0U; }},
        {"type 21 needs six descriptors", missing, dropDescriptors(5)},
        {"type 4 needs three descriptors", missing,
         [=](Call& c) {
             c.request.inputType = 4;
             dropDescriptors(2)(c);
         }},
        {"type 4 with voltages", "",
         [=](Call& c) {
             c.request.inputType = 4;
             dropDescriptors(3)(c);
         }},
        {"type 8 without currents", wrongNumber,
         [=](Call& c) {
             c.request.inputType = 8;
             dropDescriptors(3)(c);
         }},
        {"type 4 with a current among three", wrongNumber,
         [=](Call& c) {
             c.request.inputType = 4;
             dropDescriptors(3)(c);
             c.descriptors[1].signalKind = Call::current;
         }},
        {"the same channel twice", wrongNumber, [](Call& c) { c.descriptors[1].phase = 0; }},
        {"unknown kind is skipped", wrongNumber, [](Call& c) { c.descriptors[0].signalKind = -1; }},
        {"unknown phase is skipped", wrongNumber, [](Call& c) { c.descriptors[5].phase = 3; }},
        {"null samples", wrongNumber,
         [](Call& c) {
             c.samples[2].clear();
             c.descriptors[2].samples = nullptr;
         }},
        {"absurd count", wrongNumber, [](Call& c) { c.descriptors[2].count = ~std::uint64_t{0}; }},
        {"absurd count everywhere", wrongNumber,
         [](Call& c) {
             c.request.samplesNumber = std::uint64_t{1} << 61;
             for (ChannelData& descriptor : c.descriptors) {
                 descriptor.count = std::uint64_t{1} << 61;
             }
         }},
        {"negative descriptor count", missing,
         [](Call& c) {
             c.countGiven = true;
             c.request.channelCount = std::numeric_limits<std::int32_t>::min();
         }},
    };
    for (const Fault& c : cases) {
        Call call;
        fillValid(call);
        c.apply(call);
        EXPECT_EQ(call.run(), *c.message == '\0' ? 1 : 0) << c.name;
        EXPECT_STREQ(call.texts[Call::error], *c.message == '\0' ? Call::untouched : c.message) << c.name;
    }
}

TEST(Driver, EveryOutputPointerIsRequired) {
    const auto outputs = [](DataProcessRequest& r) {
        return std::array<const char***, 8>{&r.paramData,      &r.timeSignalDataU, &r.timeSignalDataI,
                                            &r.spectrumParamU, &r.spectrumParamI,  &r.paramDataThdU,
                                            &r.paramDataThdI,  &r.errorString};
    };
    for (std::size_t i = 0; i < 8; ++i) {
        Call call;
        fillValid(call);
        *outputs(call.request)[i] = nullptr;
        EXPECT_EQ(call.run(), 0);
        EXPECT_STREQ(call.texts[Call::error], i == 7 ? Call::untouched : faults[0].message);
    }
}

TEST(Driver, TypeZeroGivesTheParameterTextOnly) {
    for (std::uint32_t operation = 0; operation <= 3; ++operation) {
        for (const std::uint64_t samplesNumber : {std::uint64_t{1}, std::uint64_t{n}, ~std::uint64_t{0}}) {
            Call call;
            call.add(Call::voltage, 0, sine(n, 1.0, 50.0));
            call.request.samplesNumber = samplesNumber;
            call.request.operation = operation;
            ASSERT_EQ(call.run(), 1);
            EXPECT_EQ(
                std::string(call.texts[Call::parameters]).find(R"({"paramData":[{"LastName":"S","dataName":null)"), 0U);
        }
    }
    Call nothing;
    nothing.request.samplesNumber = 1;
    nothing.countGiven = true;
    nothing.request.channelCount = 7;
    EXPECT_EQ(nothing.run(), 1) << "a null descriptor array means no descriptors";
}

TEST(Driver, KeepsTextsOfEarlierCalls) {
    Call first;
    fillValid(first);
    first.request.operation = 1;
    ASSERT_EQ(first.run(), 1);
    const std::string voltages = first.texts[Call::signalsU];
    const std::string currents = first.texts[Call::signalsI];
    EXPECT_NE(voltages, "");

    Call failed;
    EXPECT_EQ(failed.run(), 0);

    Call second;
    for (std::uint32_t phase = 0; phase < 3; ++phase) {
        second.add(Call::current, phase, sine(n, 9.0, 50.0));
    }
    second.request.samplesNumber = n;
    second.request.inputType = RT305_4_INPUT_CURRENTS;
    second.request.operation = 1;
    ASSERT_EQ(second.run(), 1);
    EXPECT_EQ(second.texts[Call::signalsU], voltages);
    EXPECT_NE(second.texts[Call::signalsI], currents);

    Call third;
    fillValid(third);
    ASSERT_EQ(third.run(), 1);
    EXPECT_EQ(third.texts[Call::signalsI], std::string(second.texts[Call::signalsI]));
}

TEST(Driver, NamesItsVersionAndTypes) {
    const Plugin& plugin = Plugin::instance();
    EXPECT_STREQ(plugin.symbol<const char*()>("getVersion")(), "20230616.1500");
    const auto getTypes = plugin.symbol<void(const std::int32_t**)>("getSupportedInputTypes");
    const std::int32_t* types = nullptr;
    getTypes(&types);
    EXPECT_EQ(std::vector<std::int32_t>(types, types + 4), (std::vector<std::int32_t>{4, 8, 21, 0}));
    getTypes(nullptr);
}

/// The bits of an exported constant, which its getter returns as well.
template <class Bits, class Number>
Bits bitsOf(const char* data, const char* getter) {
    const auto bits = std::bit_cast<Bits>(*Plugin::instance().symbol<const Number>(data));
    EXPECT_EQ(std::bit_cast<Bits>(Plugin::instance().symbol<Number()>(getter)()), bits) << getter;
    return bits;
}

TEST(Driver, ExportsTheNonFiniteNumbersAsDataAndFunctions) {
    EXPECT_EQ((bitsOf<std::uint64_t, double>("rtInf", "rtGetInf")), 0x7FF0000000000000U);
    EXPECT_EQ((bitsOf<std::uint64_t, double>("rtMinusInf", "rtGetMinusInf")), 0xFFF0000000000000U);
    EXPECT_EQ((bitsOf<std::uint64_t, double>("rtNaN", "rtGetNaN")), 0x7FF8000000000000U);
    EXPECT_EQ((bitsOf<std::uint32_t, float>("rtInfF", "rtGetInfF")), 0x7F800000U);
    EXPECT_EQ((bitsOf<std::uint32_t, float>("rtMinusInfF", "rtGetMinusInfF")), 0xFF800000U);
    EXPECT_EQ((bitsOf<std::uint32_t, float>("rtNaNF", "rtGetNaNF")), 0x7FC00000U);
}

}  // namespace
