// Random sequences of requests through the C interface. Each answer is compared with the documented order of checks and
// with the answers to requests that differ in a known way.

#include <array>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "bytes.h"
#include "require.h"
#include "rt305_4/easy.h"

namespace {

using fuzz::Bytes;
using fuzz::require;
using nlohmann::json;

constexpr std::uint32_t resultTexts = RT305_4_TEXT_ERROR;
using Texts = std::array<std::string, resultTexts>;

/// What a host owns during a call. missingOutput is the number of the output pointer that is null, or above all
/// numbers.
struct Host {
    std::vector<std::vector<double>> samples;
    std::vector<ChannelData> channels;
    DataProcessRequest settings{};
    std::size_t missingOutput = resultTexts + 1;
};

// --- Building a request ---

/// A count that the library must reject, or at most that of the samples.
std::uint64_t countFor(Bytes& bytes, const std::vector<double>& samples) {
    switch (bytes.raw<std::uint8_t>() % 16) {
        case 1:
            return bytes.upTo(samples.size());
        case 2:
            return RT305_4_MAX_SAMPLES + 1 + bytes.raw<std::uint32_t>();
        case 3:
            return ~std::uint64_t{0} - bytes.raw<std::uint8_t>();
        default:
            return samples.size();
    }
}

void addChannel(Bytes& bytes, Host& host, std::int32_t kind, std::uint32_t phase, std::size_t n) {
    static constexpr double resistances[] = {1.0, 0.0, 24.9, 127.0};
    host.samples.push_back(bytes.signal(n));
    ChannelData channel = rt305_4_channel(kind, phase, host.samples.back().data(), host.samples.back().size(), 1.0);
    if (bytes.flag()) {
        channel.coefficient = bytes.flag() ? bytes.tame() : bytes.number();
        channel.inputResistance = bytes.oneOf(resistances);
        channel.gain = bytes.flag() ? bytes.tame() : bytes.number();
    }
    if (bytes.raw<std::uint8_t>() % 16 == 1) {
        channel.count = countFor(bytes, host.samples.back());
        if (bytes.raw<std::uint8_t>() % 4 == 1) {
            channel.samples = nullptr;
            channel.count = bytes.raw<std::uint64_t>();
        }
    }
    host.channels.push_back(channel);
}

std::size_t lengthFor(Bytes& bytes) {
    const std::size_t kind = bytes.raw<std::uint8_t>();
    if (kind < 224) {
        return bytes.upTo(40);
    }
    // 2500 samples hold enough cycles of 50 Hz to measure distortion, and so frequency and power.
    return kind < 252 ? bytes.upTo(300) : 2500 + bytes.upTo(100);
}

Host hostFrom(Bytes& bytes) {
    static constexpr std::uint32_t types[] = {RT305_4_INPUT_VOLTAGES_AND_CURRENTS, RT305_4_INPUT_VOLTAGES,
                                              RT305_4_INPUT_CURRENTS, 0};
    static constexpr std::uint32_t operations[] = {0, 1, 2, 3};
    static constexpr std::int32_t kinds[] = {0, 1};
    static constexpr std::uint32_t phases[] = {0, 1, 2};
    Host host;
    const std::size_t n = lengthFor(bytes);
    host.settings.inputType = bytes.oneOf(types);
    host.settings.operation = bytes.oneOf(operations);
    if (n > 300) {  // reading back signals and spectra would take longer than computing them
        host.settings.operation = bytes.flag() ? RT305_4_OPERATION_DISTORTION : RT305_4_OPERATION_PARAMETERS;
    }
    host.settings.options = {bytes.raw<std::uint32_t>(), bytes.raw<std::uint32_t>()};
    host.settings.sampleRate = bytes.flag() ? bytes.number() : 10000.0;
    host.settings.auxMode = bytes.raw<std::int16_t>();
    host.settings.auxValue = bytes.number();
    if (bytes.raw<std::uint8_t>() % 16 != 1) {
        for (std::uint32_t phase = 0; phase < 3; ++phase) {
            addChannel(bytes, host, RT305_4_KIND_VOLTAGE, phase, n);
            addChannel(bytes, host, RT305_4_KIND_CURRENT, phase, n);
        }
    }
    for (std::size_t more = bytes.raw<std::uint8_t>() % 16; more > 12; --more) {
        const std::int32_t kind = bytes.oneOf(kinds);
        const std::uint32_t phase = bytes.oneOf(phases);
        addChannel(bytes, host, kind, phase, bytes.flag() ? n : bytes.upTo(40));
    }
    const bool usual = bytes.raw<std::uint8_t>() % 16 != 1;
    const auto given = static_cast<std::int32_t>(host.channels.size());
    host.settings.channelCount = usual ? given : std::min(bytes.raw<std::int32_t>(), given);
    host.settings.samplesNumber = usual ? n : bytes.upTo(3) + n - 1;
    host.missingOutput = usual ? host.missingOutput : bytes.upTo(resultTexts + 1);
    if (!usual && bytes.raw<std::uint8_t>() == 1) {
        host.settings.samplesNumber = bytes.raw<std::uint64_t>();
    }
    return host;
}

// --- The expected answer ---

/// The number of samples of each channel: voltages of phases a, b, c, then currents.
std::array<std::uint64_t, 6> channelLengths(const Host& host) {
    std::array<std::uint64_t, 6> lengths{};
    for (std::int32_t i = 0; i < host.settings.channelCount; ++i) {
        const ChannelData& channel = host.channels[static_cast<std::size_t>(i)];
        if ((channel.signalKind == 0 || channel.signalKind == 1) && channel.phase < 3) {
            const bool usable = channel.samples != nullptr && channel.count <= RT305_4_MAX_SAMPLES;
            lengths[static_cast<std::size_t>(channel.signalKind) * 3 + channel.phase] = usable ? channel.count : 0;
        }
    }
    return lengths;
}

/// The message of a request that must be refused; empty for others.
std::string expectedMessage(const Host& host) {
    const DataProcessRequest& request = host.settings;
    if (host.missingOutput <= resultTexts) {
        return "One or more output parameters are set incorrectly";
    }
    const bool voltages = request.inputType == 4 || request.inputType == 21;
    const bool currents = request.inputType == 8 || request.inputType == 21;
    if (!voltages && !currents && request.inputType != 0) {
        return "This data type is not supported";
    }
    if (request.samplesNumber == 0 || request.sampleRate == 0.0) {
        return "The sample rate or sample number is not correct";
    }
    if (request.operation > 3) {
        return "This operation is not supported";
    }
    if (request.inputType != 0 && request.channelCount < 3 * (voltages + currents)) {
        return "There is no data for one or more phases";
    }
    const auto lengths = channelLengths(host);
    for (std::size_t i = 0; i < 6; ++i) {
        const bool wanted = i < 3 ? voltages : currents;
        if (wanted && lengths[i] != request.samplesNumber) {
            return "The number of samples is  not correct";
        }
    }
    return {};
}

/// The document of a text: one object with one array of rows. The parser rejects NaN and numbers beyond the doubles.
json documentOf(const std::string& text) {
    require(std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; }),
            "texts are printable ASCII");
    json document = json::parse(text);
    require(document.is_object() && document.size() == 1 && document.front().is_array(), "a text is a named table");
    return std::move(document.front());
}

/// Calls the library and checks the answer by itself. Gives the seven texts of a success, nothing for a refusal.
std::optional<Texts> answerTo(const Host& host) {
    static Texts kept;  // the texts of earlier calls
    static constexpr const char* untouched = "untouched";
    std::array<const char*, resultTexts + 1> given{};
    given.fill(untouched);
    DataProcessRequest request = host.settings;
    request.channels = host.channels.empty() ? nullptr : host.channels.data();
    for (std::uint32_t i = 0; i < given.size(); ++i) {
        *rt305_4_output(&request, i) = i == host.missingOutput ? nullptr : &given[i];
    }

    const std::string message = expectedMessage(host);
    const auto samples = host.samples;
    const std::int32_t result = dataProccess(request);
    require(result == (message.empty() ? 1 : 0), "requests are refused for the documented reasons");
    for (std::size_t i = 0; i < samples.size(); ++i) {
        require(samples[i].empty() ||
                    std::memcmp(samples[i].data(), host.samples[i].data(), samples[i].size() * sizeof(double)) == 0,
                "the host's samples are only read");
    }
    if (result == 0) {
        require(std::count(given.begin(), given.end() - 1, untouched) == resultTexts, "a refusal gives no result");
        require(request.errorString == nullptr || given.back() == message, "a refusal has its documented message");
        return std::nullopt;
    }
    require(given.back() == untouched, "a success gives no message");
    for (std::uint32_t i = 0; i < resultTexts; ++i) {
        if (rt305_4_isMade(&request, i) != 0) {
            kept[i] = given[i];
        }
        require(kept[i] == given[i], "a text that was not made is that of an earlier call");
    }
    return kept;
}

// --- Answers to requests that differ in a known way ---

/// The parsed texts that a call makes; null for the others.
std::array<json, resultTexts> documentsOf(const Texts& texts, const DataProcessRequest& request) {
    std::array<json, resultTexts> documents;
    for (std::uint32_t i = 0; i < resultTexts; ++i) {
        if (rt305_4_isMade(&request, i) != 0) {
            documents[i] = documentOf(texts[i]);
        }
    }
    return documents;
}

void sameAgain(Host& host, const Texts& texts) {
    require(answerTo(host) == texts, "the same call gives the same bytes");
}

void withUnreadBits(Host& host, const Texts& texts) {
    constexpr std::uint32_t readOfSpectrum = RT305_4_SPECTRUM_LEVEL_MASK | RT305_4_SPECTRUM_CRITERION |
                                             RT305_4_SPECTRUM_WINDOW_MASK | RT305_4_SPECTRUM_MODE_MASK;
    constexpr std::uint32_t readOfMeasurement = RT305_4_FOUR_WIRE | RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_MASK |
                                                RT305_4_FREQUENCY_CONTROL | RT305_4_KEEP_REBUILT_RMS |
                                                RT305_4_NEGATE_ACTIVE_POWER | RT305_4_NEGATE_REACTIVE_POWER |
                                                RT305_4_POWER_MASK | RT305_4_SIMULATED_SOURCE_MASK;
    host.settings.options.spectrumFlags ^= ~readOfSpectrum;
    host.settings.options.measurementFlags ^= ~readOfMeasurement;
    require(answerTo(host) == texts, "option bits without a meaning change nothing");
}

void withSkippedChannel(Host& host, const Texts& texts) {
    static constexpr double sample = 1.0;
    host.channels.resize(static_cast<std::size_t>(std::max(host.settings.channelCount, 0)));
    host.channels.push_back({2, 0, &sample, 1, 2.0, 24.9, 3.0});
    host.channels.push_back({0, 3, &sample, 1, 2.0, 24.9, 3.0});
    host.settings.channelCount = static_cast<std::int32_t>(host.channels.size());
    require(answerTo(host) == texts, "descriptors of unknown kind or phase are skipped");
}

void withParametersAlone(Host& host, const Texts& texts) {
    host.settings.operation = RT305_4_OPERATION_PARAMETERS;
    require(answerTo(host) == texts, "the parameters do not depend on what else is wanted");
}

/// Phase a becomes b, b becomes c, c becomes a.
void withPhasesMovedOn(Host& host, const Texts& texts) {
    const auto before = documentsOf(texts, host.settings);
    for (ChannelData& channel : host.channels) {
        channel.phase = channel.phase < 3 ? (channel.phase + 1) % 3 : channel.phase;
    }
    std::uint32_t& flags = host.settings.options.measurementFlags;
    const std::uint32_t rebuilt = (flags & RT305_4_REBUILT_PHASE_MASK) / RT305_4_REBUILT_PHASE_A;
    flags &= ~RT305_4_REBUILT_PHASE_MASK;
    flags |= (rebuilt == 0 ? 0 : rebuilt % 3 + 1) * RT305_4_REBUILT_PHASE_A;

    const auto answer = answerTo(host);
    require(answer.has_value(), "the order of phases does not decide about refusal");
    const auto after = documentsOf(*answer, host.settings);
    for (std::size_t i = 1; i < after.size(); ++i) {
        for (std::size_t phase = 0; phase < before[i].size(); ++phase) {
            for (const auto& [key, value] : before[i][phase].items()) {
                require(key == "name" || key == "LastName" || after[i][(phase + 1) % 3][key] == value,
                        "the rows of tables move with their phases");
            }
        }
    }
    for (const std::size_t first : {12U, 15U, 19U}) {  // phase voltages, line voltages, currents
        for (std::size_t phase = 0; phase < 3; ++phase) {
            require(before[RT305_4_TEXT_PARAMETERS][first + phase]["dataName"] ==
                        after[RT305_4_TEXT_PARAMETERS][first + (phase + 1) % 3]["dataName"],
                    "RMS values move with their phases");
        }
    }
}

/// Whether no sample and no factor is so large or small that anything overflows or underflows.
bool isTame(const Host& host) {
    const auto tame = [](double x) { return x == 0.0 || (std::fabs(x) > 1e-16 && std::fabs(x) < 1e16); };
    for (const ChannelData& channel : host.channels) {
        const double attenuation = 1.0 + (19.53125 * channel.gain + 35.0) / 1000.0;
        if (!tame(channel.coefficient) || !tame(attenuation) || attenuation == 0.0) {
            return false;
        }
    }
    return std::all_of(host.samples.begin(), host.samples.end(),
                       [&](const auto& x) { return std::all_of(x.begin(), x.end(), tame); });
}

void requireScaled(const json& before, const json& after, double factor) {
    if (before.is_array()) {
        require(after.is_array() && after.size() == before.size(), "the factor changes no length");
        for (std::size_t i = 0; i < before.size(); ++i) {
            requireScaled(before[i], after[i], factor);
        }
    } else if (before.is_object()) {
        for (const auto& [key, value] : before.items()) {
            requireScaled(value, after.at(key), factor);
        }
    } else if (before.is_number()) {
        require(after.is_number() && after.get<double>() == factor * before.get<double>(),
                "a factor of two goes exactly through the measurement");
    } else {
        require(before == after, "the factor changes numbers only");
    }
}

/// Levels in dB of twice the signal: about 6.02 dB more.
void requireRaised(const json& before, const json& after) {
    require(before.size() == after.size(), "the factor changes no length");
    for (std::size_t i = 0; i < before.size(); ++i) {
        const bool bothMissing = before[i].is_null() && after[i].is_null();
        require(
            bothMissing || std::fabs(after[i].get<double>() - before[i].get<double>() - 20.0 * std::log10(2.0)) < 1e-10,
            "twice the signal has 6.02 dB more");
    }
}

double factorOfUnit(const std::string& unit) {
    if (unit == "V" || unit == "A") {
        return 2.0;
    }
    return unit == "W" || unit == "VA" || unit == "VAR" ? 4.0 : 1.0;
}

void requireParametersOfTwice(const json& once, const json& twice) {
    requireScaled(once, twice, factorOfUnit(once["units"]));
}

void requireSignalOfTwice(const json& once, const json& twice) {
    requireScaled(once["dataName"], twice["dataName"], 2.0);
    for (std::size_t i = 0; i < once["paramData"].size(); ++i) {
        const json& statistic = once["paramData"][i];
        requireScaled(statistic, twice["paramData"][i], statistic["LastName"] == "peak2rms" ? 1.0 : 2.0);
    }
}

void requireSpectrumOfTwice(const json& once, const json& twice) {
    const double amplitudes = once["LastNameY"] == "L,dB" ? 1.0 : 2.0;
    requireScaled(once["dataTnv"], twice["dataTnv"], amplitudes);
    requireScaled(once["dataTnvf"], twice["dataTnvf"], 1.0);
    require(once["paramData"].size() == twice["paramData"].size(), "the factor changes no peak");
    for (std::size_t i = 0; i < once["paramData"].size(); ++i) {
        requireScaled(once["paramData"][i]["fi"], twice["paramData"][i]["fi"], 1.0);
        requireScaled(once["paramData"][i]["mag"], twice["paramData"][i]["mag"], amplitudes);
    }
}

void requireDistortionOfTwice(const json& once, const json& twice) {
    requireScaled(once["dataX"], twice["dataX"], 1.0);
    requireRaised(once["dataY"], twice["dataY"]);
}

void withTwiceTheCoefficients(Host& host, const Texts& texts) {
    if (!isTame(host)) {
        return;
    }
    const auto before = documentsOf(texts, host.settings);
    for (ChannelData& channel : host.channels) {
        channel.coefficient *= 2.0;
    }
    const std::uint32_t scale = host.settings.options.spectrumFlags & RT305_4_SPECTRUM_LEVEL_MASK;
    if (scale != RT305_4_SPECTRUM_LEVEL_DB) {
        host.settings.auxValue *= 2.0;  // the criterion has the amplitudes' unit
    }
    const auto answer = answerTo(host);
    require(answer.has_value(), "coefficients do not decide about refusal");
    const auto after = documentsOf(*answer, host.settings);
    constexpr void (*compare[])(const json&, const json&) = {requireParametersOfTwice, requireSignalOfTwice,
                                                             requireSpectrumOfTwice, requireDistortionOfTwice};
    for (std::size_t text = 0; text < before.size(); ++text) {
        for (std::size_t row = 0; row < before[text].size(); ++row) {
            compare[(text + 1) / 2](before[text][row], after[text][row]);
        }
    }
}

constexpr void (*variations[])(Host&, const Texts&) = {
    sameAgain, withUnreadBits, withSkippedChannel, withParametersAlone, withPhasesMovedOn, withTwiceTheCoefficients,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    for (int call = 0; call < 4 && (call == 0 || !bytes.empty()); ++call) {
        const std::size_t variation = bytes.upTo(std::size(variations) - 1);
        Host host = hostFrom(bytes);
        if (const auto texts = answerTo(host)) {
            documentsOf(*texts, host.settings);
            variations[variation](host, *texts);
        }
    }
    return 0;
}
