#include "library.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

#include "failure.h"

namespace rt305 {

namespace {

constexpr const char* soname = "libRT305_4.so.1";

std::string lastLoadError() {
    const char* const message = dlerror();
    return message != nullptr ? message : "unknown reason";
}

/// Beside the executable, where an installation puts the library, and where the build tree does.
std::string findNearExecutable() {
    std::error_code ignored;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", ignored).parent_path();
    for (const char* const place : {".", "../lib", "../" RT305_4_LIBRARY_FOLDER, "../src/plugin"}) {
        const auto candidate = folder / place / soname;
        if (std::filesystem::exists(candidate, ignored)) {
            return candidate.lexically_normal().string();
        }
    }
    return {};
}

/// A name without a slash would be searched for on the system, so a file of the present folder gets one.
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

template <class Function>
Function findFunction(void* handle, const char* name) {
    void* const address = dlsym(handle, name);
    if (address == nullptr) {
        failInput(std::string("this is not the measurement library, it has no function ") + name + ": " +
                  lastLoadError());
    }
    return reinterpret_cast<Function>(address);
}

}  // namespace

Library::Library(const std::string& file) {
    void* const handle = dlopen(chooseFile(file).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        failInput("cannot open the measurement library: " + lastLoadError() +
                  "\nIt is looked for beside rt305, in ../lib and on the system; or name it with --library FILE or in "
                  "the environment variable RT305_4_LIBRARY.");
    }
    _getVersion = findFunction<decltype(_getVersion)>(handle, "getVersion");
    _dataProccess = findFunction<decltype(_dataProccess)>(handle, "dataProccess");
}

ResultTexts Library::measure(const Measurement& measurement, std::uint32_t operation) const {
    const MeasurementSettings& settings = measurement.settings;
    std::vector<ChannelData> descriptors;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const std::vector<double>& samples = measurement.samples[channel];
        if (!samples.empty()) {
            descriptors.push_back({isCurrent(channel) ? RT305_4_KIND_CURRENT : RT305_4_KIND_VOLTAGE,
                                   static_cast<std::uint32_t>(channel % phaseTotal), samples.data(), samples.size(),
                                   settings.coefficients[channel], settings.resistances[channel],
                                   settings.gains[channel]});
        }
    }
    const char* parameters = "";
    const char* signals[2] = {"", ""};
    const char* unused[4] = {};
    const char* error = "";
    DataProcessRequest request{};
    request.channels = descriptors.data();
    request.channelCount = static_cast<std::int32_t>(descriptors.size());
    request.samplesNumber = measurement.length;
    request.sampleRate = measurement.rateHz;
    request.inputType = measurement.inputType;
    request.options = {0, settings.flags};
    request.operation = operation;
    request.paramData = &parameters;
    request.timeSignalDataU = &signals[0];
    request.timeSignalDataI = &signals[1];
    request.spectrumParamU = &unused[0];
    request.spectrumParamI = &unused[1];
    request.paramDataThdU = &unused[2];
    request.paramDataThdI = &unused[3];
    request.errorString = &error;
    if (_dataProccess(request) == 0) {
        throw Failure(ExitCode::refused, std::string("the library refuses this measurement: ") + error);
    }
    return {parameters, signals[0], signals[1]};
}

}  // namespace rt305
