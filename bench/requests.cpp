#include "requests.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <numbers>
#include <tuple>

#include "reference/recording.h"

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

using Channels = std::array<std::vector<double>, 6>;

/// A fundamental with decreasing odd harmonics and an offset, different in every channel.
std::vector<double> waveform(std::size_t channel, std::size_t n, double frequency) {
    constexpr double turn = 2.0 * std::numbers::pi;
    const double amplitude =
        channel < 3 ? 325.0 - 7.0 * static_cast<double>(channel) : 14.0 + static_cast<double>(channel);
    const double angle = -turn / 3.0 * static_cast<double>(channel % 3) - (channel < 3 ? 0.0 : 0.4);
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double phase = turn * frequency * (static_cast<double>(i) * 1e-4) + angle;
        x[i] = amplitude * (std::cos(phase) + 0.04 * std::cos(3.0 * phase + 1.0) + 0.03 * std::cos(5.0 * phase) + 0.01);
    }
    return x;
}

void addNoise(Channels& channels) {
    recording::Uniform uniform;
    for (std::vector<double>& x : channels) {
        for (double& value : x) {
            value += 2.0 * uniform();
        }
    }
}

void scale(Channels& channels, double factor) {
    for (std::vector<double>& x : channels) {
        for (double& value : x) {
            value *= factor;
        }
    }
}

void fillWith(std::vector<double>& x, double value) {
    std::fill(x.begin(), x.end(), value);
}

/// Changes to the clean waveforms.
struct Disturbance {
    const char* name;
    std::function<void(Channels&)> apply;
};
const std::array<Disturbance, 11> disturbances{{
    {"clean", [](Channels&) {}},
    {"noisy", addNoise},
    {"gaps",
     [](Channels& channels) {
         addNoise(channels);
         for (std::vector<double>& x : channels) {
             const auto at = x.begin() + static_cast<std::ptrdiff_t>(x.size() / 3);
             std::fill(at, at + static_cast<std::ptrdiff_t>(x.size() / 50), 0.0);
         }
     }},
    {"zeros",
     [](Channels& channels) {
         for (std::vector<double>& x : channels) {
             fillWith(x, 0.0);
         }
     }},
    {"constant",
     [](Channels& channels) {
         for (std::vector<double>& x : channels) {
             fillWith(x, 12.5);
         }
     }},
    {"dead channels",
     [](Channels& channels) {
         addNoise(channels);
         fillWith(channels[1], 0.0);
         fillWith(channels[5], 0.0);
     }},
    {"one NaN", [](Channels& channels) { channels[2][channels[2].size() / 2] = nan; }},
    {"all NaN", [](Channels& channels) { fillWith(channels[3], nan); }},
    {"one infinity", [](Channels& channels) { channels[4][channels[4].size() / 4] = infinity; }},
    {"huge",
     [](Channels& channels) {
         addNoise(channels);
         scale(channels, 1e150);
     }},
    {"denormal",
     [](Channels& channels) {
         addNoise(channels);
         scale(channels, 1e-312);
     }},
}};

const Channels& channelsOf(const Recipe& recipe) {
    static std::map<std::tuple<std::string, std::size_t, double>, Channels> made;
    const auto [at, isNew] = made.try_emplace({recipe.signal, recipe.n, recipe.frequency});
    Channels& channels = at->second;
    if (isNew) {
        for (std::size_t c = 0; c < channels.size(); ++c) {
            channels[c] = waveform(c, recipe.n, recipe.frequency);
        }
        for (const Disturbance& disturbance : disturbances) {
            if (disturbance.name == std::string(recipe.signal)) {
                disturbance.apply(channels);
            }
        }
    }
    return channels;
}

/// Uniform random numbers, the same in every run.
class Draw {
public:
    std::size_t below(std::size_t count) {
        return static_cast<std::size_t>((uniform_() + 1.0) / 2.0 * static_cast<double>(count));
    }
    std::uint32_t bits(std::uint32_t mask) { return static_cast<std::uint32_t>(below(std::size_t{1} << 32U)) & mask; }

    template <class Values>
    auto oneOf(const Values& values) {
        return std::data(values)[below(std::size(values))];
    }

private:
    recording::Uniform uniform_;
};

constexpr std::uint32_t types[] = {RT305_4_INPUT_VOLTAGES, RT305_4_INPUT_CURRENTS, RT305_4_INPUT_VOLTAGES_AND_CURRENTS,
                                   RT305_4_INPUT_VOLTAGES_AND_CURRENTS, 0};
constexpr std::size_t lengths[] = {1,    2,    3,    4,    5,    7,    16,   31,    64,    97,    100,   128,  250,
                                   499,  500,  512,  997,  1000, 1023, 1024, 1025,  2000,  2048,  2500,  3000, 4096,
                                   4999, 5000, 6000, 8191, 8192, 9973, 9999, 10000, 12500, 16384, 19997, 20000};
constexpr double frequencies[] = {50.0, 50.013, 49.5, 50.13, 60.0, 16.7};  // Hz
constexpr double rates[] = {10000.0, 10000.0, 500.0, 4321.5};              // Hz
constexpr std::int16_t peakCounts[] = {20, 5, 1, 0, -3, 1000};
constexpr double criteria[] = {0.0, 2.5, -60.0, nan};
constexpr std::uint32_t everyMeasurementFlag =
    RT305_4_FOUR_WIRE | RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_MASK | RT305_4_FREQUENCY_CONTROL |
    RT305_4_KEEP_REBUILT_RMS | RT305_4_NEGATE_ACTIVE_POWER | RT305_4_NEGATE_REACTIVE_POWER | RT305_4_POWER_MASK;
constexpr std::uint32_t everySpectrumFlag = RT305_4_SPECTRUM_LEVEL_MASK | RT305_4_SPECTRUM_CRITERION |
                                            RT305_4_SPECTRUM_WINDOW_MASK | RT305_4_SPECTRUM_MODE_MASK;

struct Choice {
    const char* name;
    std::uint32_t flags;
};
constexpr Choice frequencyModes[] = {{"fixed", 0}, {"control", RT305_4_FREQUENCY_CONTROL}};
constexpr Choice powerModes[] = {{"no power", RT305_4_POWER_NONE},
                                 {"three-wattmeter", RT305_4_POWER_THREE_WATTMETER},
                                 {"two-wattmeter", RT305_4_POWER_TWO_WATTMETER},
                                 {"two-wattmeter-phase", RT305_4_POWER_TWO_WATTMETER_PHASE},
                                 {"three-wattmeter-complex", RT305_4_POWER_THREE_WATTMETER_COMPLEX}};
constexpr Choice windows[] = {{"rectangular", RT305_4_SPECTRUM_WINDOW_RECT},
                              {"Hann", RT305_4_SPECTRUM_WINDOW_HANN},
                              {"Hamming", RT305_4_SPECTRUM_WINDOW_HAMMING},
                              {"Kaiser", RT305_4_SPECTRUM_WINDOW_KAISER}};
constexpr Choice scales[] = {{"linear", RT305_4_SPECTRUM_LEVEL_LINEAR}, {"dB", RT305_4_SPECTRUM_LEVEL_DB}};
constexpr Choice transforms[] = {{"mode 1", RT305_4_SPECTRUM_MODE_1}, {"mode 2", RT305_4_SPECTRUM_MODE_2}};

}  // namespace

std::string describe(const Recipe& recipe) {
    char text[200];
    std::snprintf(
        text, sizeof text,
        "type %u, operation %u, n %zu, measurement flags %#x, spectrum flags %#x, %g Hz, %d peaks, criterion %g, "
        "%s at %g Hz",
        recipe.inputType, recipe.operation, recipe.n, recipe.measurementFlags, recipe.spectrumFlags, recipe.sampleRate,
        recipe.peaks, recipe.criterion, recipe.signal, recipe.frequency);
    return text;
}

std::unique_ptr<support::Call> makeCall(const Recipe& recipe) {
    const Channels& samples = channelsOf(recipe);
    std::vector<ChannelData> channels;
    for (std::uint32_t c = 0; c < samples.size(); ++c) {
        const std::int32_t kind = c < 3 ? RT305_4_KIND_VOLTAGE : RT305_4_KIND_CURRENT;
        const std::uint32_t other = c < 3 ? RT305_4_INPUT_CURRENTS : RT305_4_INPUT_VOLTAGES;
        if (recipe.inputType != other) {
            channels.push_back(rt305_4_channel(kind, c % 3, samples[c].data(), samples[c].size(), c < 3 ? 1.0 : 0.5));
            channels.back().inputResistance = c < 3 ? 0.0 : 24.9;
        }
    }
    auto call = std::make_unique<support::Call>(recipe.inputType, recipe.operation, std::move(channels));
    call->request.sampleRate = recipe.sampleRate;
    call->request.auxMode = recipe.peaks;
    call->request.auxValue = recipe.criterion;
    call->request.options = {recipe.spectrumFlags, recipe.measurementFlags};
    return call;
}

std::vector<Recipe> mixedRequests(std::size_t count) {
    Draw draw;
    std::vector<Recipe> recipes(count);
    for (Recipe& recipe : recipes) {
        recipe.inputType = draw.oneOf(types);
        recipe.operation = static_cast<std::uint32_t>(draw.below(4));
        recipe.n = draw.oneOf(lengths);
        // Real or simulated source at even odds: its three bits mean the same.
        recipe.measurementFlags = draw.bits(everyMeasurementFlag) | (draw.below(2) == 0 ? 0U : 0x10000000U);
        recipe.spectrumFlags = draw.bits(everySpectrumFlag);
        recipe.sampleRate = draw.oneOf(rates);
        recipe.peaks = draw.oneOf(peakCounts);
        recipe.criterion = draw.oneOf(criteria);
        // Half of the signals are clean, because for many of the others a call skips stages.
        recipe.signal = disturbances[draw.below(2) == 0 ? draw.below(2) : draw.below(disturbances.size())].name;
        recipe.frequency = draw.oneOf(frequencies);
    }
    return recipes;
}

std::vector<NamedRecipe> operationsOfLength(std::size_t n) {
    std::vector<NamedRecipe> recipes;
    for (const std::uint32_t type :
         {RT305_4_INPUT_VOLTAGES, RT305_4_INPUT_CURRENTS, RT305_4_INPUT_VOLTAGES_AND_CURRENTS}) {
        for (std::uint32_t operation = 0; operation < 4; ++operation) {
            Recipe recipe;
            recipe.inputType = type;
            recipe.operation = operation;
            recipe.n = n;
            recipe.sampleRate = type == RT305_4_INPUT_VOLTAGES_AND_CURRENTS ? 10000.0 : 500.0;
            recipes.push_back({"type " + std::to_string(type) + ", operation " + std::to_string(operation), recipe});
        }
    }
    return recipes;
}

std::vector<NamedRecipe> parameterVariants() {
    std::vector<NamedRecipe> recipes;
    for (const Choice& frequency : frequencyModes) {
        for (const Choice& power : powerModes) {
            Recipe recipe;
            recipe.measurementFlags |= frequency.flags | power.flags;
            recipes.push_back({std::string(frequency.name) + ", " + power.name, recipe});
        }
    }
    return recipes;
}

std::vector<NamedRecipe> spectrumVariants() {
    std::vector<NamedRecipe> recipes;
    for (const Choice& transform : transforms) {
        for (const Choice& scale : scales) {
            for (const Choice& window : windows) {
                Recipe recipe;
                recipe.operation = RT305_4_OPERATION_SPECTRUM;
                recipe.spectrumFlags = transform.flags | scale.flags | window.flags;
                recipes.push_back({std::string(transform.name) + ", " + scale.name + ", " + window.name, recipe});
            }
        }
    }
    return recipes;
}
