#include "measuring/library.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

#include "base/failure.h"

namespace rt305 {

namespace {

constexpr const char* soname = "libRT305_4.so.1";

std::string lastLoadError() {
    const char* const message = dlerror();
    return message != nullptr ? message : "unknown reason";
}

/// Where the library is, relative to the executable: in the folder of an installation or, only beside the files of a
/// build, in that of the build.
std::string findNearExecutable() {
    std::error_code ignored;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
    const bool isBuild = std::filesystem::exists(folder / "../CMakeCache.txt", ignored);
    for (const char* const place : {".", isBuild ? "../src/plugin" : "../" RT305_4_LIBRARY_FOLDER}) {
        const auto candidate = folder / place / soname;
        if (std::filesystem::exists(candidate, ignored)) {
            return candidate.lexically_normal().string();
        }
    }
    return {};
}

/// Adds a folder to a plain file name, which dlopen would search for on the system.
std::string asPath(const std::string& file) {
    return file.find('/') == std::string::npos ? "./" + file : file;
}

std::string chooseFile(const std::string& given) {
    if (!given.empty()) {
        return asPath(given);
    }
    if (const char* const fromEnvironment = std::getenv("RT305_4_LIBRARY");
        fromEnvironment != nullptr && *fromEnvironment != '\0') {
        return asPath(fromEnvironment);
    }
    const std::string near = findNearExecutable();
    return near.empty() ? soname : near;
}

}  // namespace

Call::Call(const Measurement& measurement, const MeasurementSettings& settings, std::uint32_t operation) {
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const std::vector<double>& samples = measurement.handedOver(channel);
        const std::size_t source = measurement.standIns[channel];
        if (!samples.empty()) {
            ChannelData& added =
                channels.emplace_back(rt305_4_channel(isCurrent(channel) ? RT305_4_KIND_CURRENT : RT305_4_KIND_VOLTAGE,
                                                      static_cast<std::uint32_t>(channel % phaseTotal), samples.data(),
                                                      samples.size(), settings.coefficients[source]));
            added.inputResistance = settings.resistances[source];
            added.gain = settings.gains[source];
        }
    }
    request.samplesNumber = measurement.length;
    request.sampleRate = measurement.rateHz;
    request.auxValue = settings.peakCriterion;
    request.auxMode = settings.peaks;
    request.inputType = measurement.inputType;
    request.options = {settings.spectrumFlags, settings.flags};
    request.operation = operation;
    for (std::uint32_t i = 0; i < RT305_4_TEXTS; ++i) {
        texts[i] = "";
        *rt305_4_output(&request, i) = &texts[i];
    }
}

Library::Library(const std::string& file) {
    handle_ = dlopen(chooseFile(file).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        failEnvironment("cannot open the measurement library: " + lastLoadError() +
                        "\nrt305 searches its own folder, ../" RT305_4_LIBRARY_FOLDER
                        " and the system; or name the file with --library FILE or in the "
                        "environment variable RT305_4_LIBRARY.");
    }
    for (const char* const name : {"getVersion", "dataProccess"}) {
        if (find(name) == nullptr) {
            failEnvironment(std::string("this is not the measurement library: it has no function ") + name + ": " +
                            lastLoadError());
        }
    }
    getVersion_ = reinterpret_cast<decltype(getVersion_)>(find("getVersion"));
    dataProccess_ = reinterpret_cast<decltype(dataProccess_)>(find("dataProccess"));
}

void* Library::find(const char* name) const {
    return dlsym(handle_, name);
}

std::int32_t Library::process(Call& call) const {
    call.request.channels = call.channels.data();
    call.request.channelCount = static_cast<std::int32_t>(call.channels.size());
    return dataProccess_(call.request);
}

ResultTexts Library::measure(const Measurement& measurement, std::uint32_t operation) const {
    Call call(measurement, operation);
    return measure(call);
}

ResultTexts Library::measure(Call& call) const {
    if (process(call) == 0) {
        throw Failure(ExitCode::refused,
                      std::string("the library refuses this measurement: ") + call.texts[RT305_4_TEXT_ERROR]);
    }
    const auto made = [&call](std::uint32_t text) {
        return rt305_4_isMade(&call.request, text) != 0 ? call.texts[text] : "";
    };
    const std::uint32_t operation = call.request.operation;
    ResultTexts texts{.parameters = made(RT305_4_TEXT_PARAMETERS)};
    if (operation != RT305_4_OPERATION_PARAMETERS) {
        texts.voltages = made(2 * operation - 1);
        texts.currents = made(2 * operation);
    }
    return texts;
}

}  // namespace rt305
