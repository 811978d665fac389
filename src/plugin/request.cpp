#include "plugin/request.h"

#include <algorithm>
#include <span>

using calc_modul_K9_web_ns::Measurement;
using calc_modul_K9_web_ns::RawChannel;
using calc_modul_K9_web_ns::RawChannelSet;

const std::array<std::int32_t, 4> supportedSub1Types{4, 8, 21, 0};

namespace {

/// The terminating 0 is compared too, so type 0 is accepted.
bool isSupported(std::uint32_t inputType) {
    return std::any_of(supportedSub1Types.begin(), supportedSub1Types.end(),
                       [=](std::int32_t type) { return static_cast<std::uint32_t>(type) == inputType; });
}

/// What an input type requires. A type that is not in the list requires nothing.
struct Required {
    std::uint32_t inputType;
    std::int32_t descriptors;
    bool voltages;
    bool currents;
};
constexpr Required requirements[] = {
    {RT305_4_INPUT_VOLTAGES, 3, true, false},
    {RT305_4_INPUT_CURRENTS, 3, false, true},
    {RT305_4_INPUT_VOLTAGES_AND_CURRENTS, 6, true, true},
};

bool allHold(const RawChannelSet& channels, std::uint64_t count) {
    return std::all_of(channels.begin(), channels.end(), [=](const RawChannel& channel) {
        return !channel.samples.empty() && channel.samples.size() == count;
    });
}

coder::samples samplesOf(const ChannelData& descriptor) {
    const bool usable = descriptor.samples != nullptr && descriptor.count <= RT305_4_MAX_SAMPLES;
    return usable ? coder::samples(descriptor.samples, descriptor.count) : coder::samples();
}

void fillFrom(RawChannel& channel, const RawChannel& partner) {
    if (channel.samples.empty()) {
        channel.samples = partner.samples;
    }
}

}  // namespace

bool hasAllOutputs(const DataProcessRequest& request) {
    const auto outputs = {request.paramData,      request.timeSignalDataU, request.timeSignalDataI,
                          request.spectrumParamU, request.spectrumParamI,  request.paramDataThdU,
                          request.paramDataThdI,  request.errorString};
    return std::none_of(outputs.begin(), outputs.end(), [](const char** output) { return output == nullptr; });
}

const char* firstError(const DataProcessRequest& request, const Measurement& measurement) {
    if (!isSupported(request.inputType)) {
        return "This data type is not supported";
    }
    if (request.samplesNumber == 0 || request.sampleRate == 0.0) {
        return "The sample rate or sample number is not correct";
    }
    if (request.operation > RT305_4_OPERATION_DISTORTION) {
        return "This operation is not supported";
    }
    for (const Required& required : requirements) {
        if (required.inputType != request.inputType) {
            continue;
        }
        if (request.channelCount < required.descriptors) {
            return "There is no data for one or more phases";
        }
        if ((required.voltages && !allHold(measurement.voltages, request.samplesNumber)) ||
            (required.currents && !allHold(measurement.currents, request.samplesNumber))) {
            return "The number of samples is  not correct";
        }
    }
    return nullptr;
}

Measurement measurementOf(const DataProcessRequest& request) {
    Measurement measurement;
    measurement.samplesNumber = static_cast<double>(request.samplesNumber);
    measurement.sampleRate = request.sampleRate;
    measurement.auxValue = request.auxValue;
    measurement.auxMode = request.auxMode;
    measurement.inputType = static_cast<double>(request.inputType);
    measurement.spectrumFlags = request.options.spectrumFlags;
    measurement.measurementFlags = request.options.measurementFlags;
    measurement.processingMode = request.operation;

    const std::size_t count =
        request.channels != nullptr && request.channelCount > 0 ? static_cast<std::size_t>(request.channelCount) : 0;
    for (const ChannelData& descriptor : std::span(request.channels, count)) {
        if (descriptor.phase > RT305_4_PHASE_C ||
            (descriptor.signalKind != RT305_4_KIND_VOLTAGE && descriptor.signalKind != RT305_4_KIND_CURRENT)) {
            continue;
        }
        RawChannelSet& set =
            descriptor.signalKind == RT305_4_KIND_VOLTAGE ? measurement.voltages : measurement.currents;
        set[descriptor.phase] = {samplesOf(descriptor), descriptor.gain, descriptor.coefficient,
                                 descriptor.inputResistance};
    }
    return measurement;
}

void fillMissingChannels(Measurement& measurement, std::uint32_t inputType) {
    RawChannelSet& voltages = measurement.voltages;
    RawChannelSet& currents = measurement.currents;
    if (inputType != RT305_4_INPUT_CURRENTS && inputType != RT305_4_INPUT_VOLTAGES_AND_CURRENTS) {
        fillFrom(currents[0], voltages[0]);
        fillFrom(currents[1], voltages[1]);
    }
    fillFrom(currents[2], voltages[2]);
    for (std::size_t phase = 0; phase < voltages.size(); ++phase) {
        fillFrom(voltages[phase], currents[phase]);
    }
}
