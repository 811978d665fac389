// Operations on input types: the harmonics they show, and what each call makes and leaves of the seven texts.

#include <gtest/gtest.h>

#include <random>

#include "adapter/nlohmann/json.h"
#include "plugin_host.h"

namespace {

using nlohmann::json;
using Texts = std::array<std::string, Call::error>;

constexpr std::uint32_t types[]{4, 8, 21, 0};

/// Three different inputs with different lengths and options.
void fill(Call& call, std::uint32_t type, std::uint32_t operation, std::size_t input) {
    const std::size_t n = 48 + 16 * input;
    for (std::uint32_t channel = 0; channel < 6; ++channel) {
        const double frequency = 50.0 + 117.0 * channel + static_cast<double>(input);
        call.add(static_cast<std::int32_t>(channel / 3), channel % 3, sine(n, 10.0, frequency, 0.3));
    }
    call.request.samplesNumber = n;
    call.request.inputType = type;
    call.request.operation = operation;
    call.request.auxMode = static_cast<std::int16_t>(3 * input);
    call.request.options = {0x01000002U * static_cast<std::uint32_t>(input),
                            0x00010001U * static_cast<std::uint32_t>(input)};
}

Texts textsOf(const Call& call) {
    Texts texts;
    std::copy(call.texts.begin(), call.texts.begin() + Call::error, texts.begin());
    return texts;
}

TEST(Operations, EachCallMakesItsOwnTextsAndLeavesAllOthers) {
    constexpr std::size_t inputs = 3;
    std::vector<std::array<std::array<Texts, 4>, 4>> alone(inputs);
    Texts expected;
    for (std::size_t input = 0; input < inputs; ++input) {
        for (std::size_t t = 0; t < 4; ++t) {
            for (std::uint32_t operation = 0; operation < 4; ++operation) {
                Call call;
                fill(call, types[t], operation, input);
                ASSERT_EQ(call.run(), 1);
                alone[input][t][operation] = expected = textsOf(call);
            }
        }
    }
    std::mt19937 random(1);
    for (int i = 0; i < 10000; ++i) {
        const std::size_t input = random() % inputs;
        const std::size_t t = random() % 4;
        const std::uint32_t operation = random() % 4;
        Call call;
        fill(call, types[t], operation, input);
        ASSERT_EQ(call.run(), 1);
        for (const Call::Text text : call.made()) {
            expected[text] = alone[input][t][operation][text];
        }
        ASSERT_EQ(textsOf(call), expected) << "call " << i << ": type " << types[t] << ", operation " << operation;
    }
}

/// fundamental + 1/k of it for each harmonic k = 2 ... count.
std::vector<double> harmonics(std::size_t n, double amplitude, double frequency, int count, double rate) {
    std::vector<double> x(n);
    for (int k = 1; k <= count; ++k) {
        const std::vector<double> line = sine(n, amplitude / k, k * frequency, 0.7 * k, rate);
        std::transform(x.begin(), x.end(), line.begin(), x.begin(), std::plus<>());
    }
    return x;
}

struct HarmonicCase {
    std::uint32_t type;
    double rate;  // Hz, fixed by the type
    std::size_t n;
    std::size_t shown;                  // entries of each row
    std::array<double, 3> frequencies;  // of the fundamentals, Hz
};

constexpr double currentScale = 0.1;

void checkHarmonics(const Call& call, Call::Text text, const HarmonicCase& c) {
    const bool voltages = text == Call::distortionU;
    const json rows = json::parse(call.texts[text]).at(voltages ? "thdDataU" : "thdDataI");
    ASSERT_EQ(rows.size(), 3U);
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const json& row = rows[phase];
        EXPECT_EQ(row.size(), 5U);
        EXPECT_EQ(row.at("name"), std::string(voltages ? "V" : "I") + "abc"[phase]);
        EXPECT_EQ(row.at("LastNameX"), "Frequency, Hz");
        EXPECT_EQ(row.at("LastNameY"), "Amp, dB");
        ASSERT_EQ(row.at("dataX").size(), c.shown);
        ASSERT_EQ(row.at("dataY").size(), c.shown);
        const double amplitude = (10.0 + static_cast<double>(phase)) * (voltages ? 1.0 : currentScale);
        for (std::size_t i = 0; i < c.shown; ++i) {
            const double k = static_cast<double>(i) + 1.0;
            const double frequency = k * c.frequencies[phase];
            if (frequency > c.rate / 2.0) {
                EXPECT_TRUE(row.at("dataX")[i].is_null() && row.at("dataY")[i].is_null()) << frequency << " Hz";
                continue;
            }
            const double level = 20.0 * std::log10(amplitude / k / std::sqrt(2.0));
            EXPECT_NEAR(row.at("dataX")[i].get<double>(), frequency, 1e-6 * frequency) << c.type;
            EXPECT_NEAR(row.at("dataY")[i].get<double>(), level, 1e-3) << c.type << " at " << frequency << " Hz";
        }
    }
}

TEST(Operations, DistortionTextsHoldTheHarmonicsOfEachPhase) {
    for (const HarmonicCase& c : {
             HarmonicCase{4, 500.0, 1000, 5, {40.0, 37.3, 70.0}},
             HarmonicCase{8, 500.0, 1001, 5, {31.0, 45.0, 61.7}},
             HarmonicCase{21, 10000.0, 5000, 40, {210.0, 180.3, 340.0}},
         }) {
        Call call;
        for (const std::int32_t quantity : {Call::voltage, Call::current}) {
            for (std::uint32_t phase = 0; phase < 3; ++phase) {
                const double frequency = c.frequencies[phase];
                const int inBand = static_cast<int>(c.rate / 2.0 / frequency);
                call.add(quantity, phase, harmonics(c.n, 10.0 + phase, frequency, inBand, c.rate));
                call.descriptors.back().coefficient = quantity == Call::voltage ? 1.0 : currentScale;
            }
        }
        call.request.samplesNumber = c.n;
        call.request.inputType = c.type;
        call.request.operation = RT305_4_OPERATION_DISTORTION;
        call.request.options.measurementFlags = RT305_4_SIMULATED_SOURCE_MASK;
        ASSERT_EQ(call.run(), 1);
        for (const Call::Text text : call.made()) {
            if (text != Call::parameters) {
                checkHarmonics(call, text, c);
            }
        }
    }
}

}  // namespace
