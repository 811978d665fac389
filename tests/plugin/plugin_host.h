#ifndef RT305_4_TESTS_PLUGIN_PLUGIN_HOST_H
#define RT305_4_TESTS_PLUGIN_PLUGIN_HOST_H

#include <dlfcn.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "rt305_4/rt305_4.h"

/// The library as a host sees it: opened at run time, reached through its exported names only.
class Plugin {
public:
    explicit Plugin(const char* file) : handle_(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {
        if (handle_ == nullptr) {
            throw std::runtime_error(dlerror());
        }
        dataProccess_ = symbol<std::int32_t(DataProcessRequest)>("dataProccess");
    }

    /// The build's own library.
    static const Plugin& instance() {
        static const Plugin plugin(RT305_4_LIBRARY_FILE);
        return plugin;
    }

    template <class Function>
    Function* symbol(const char* name) const {
        void* const address = dlsym(handle_, name);
        if (address == nullptr) {
            throw std::runtime_error(dlerror());
        }
        return reinterpret_cast<Function*>(address);
    }

    std::int32_t process(const DataProcessRequest& request) const { return dataProccess_(request); }

private:
    void* handle_;
    std::int32_t (*dataProccess_)(DataProcessRequest) = nullptr;
};

/// A request that owns its descriptors, the places for the answers and, unless they are viewed, its samples.
struct Call {
    enum Text { parameters, signalsU, signalsI, spectrumU, spectrumI, distortionU, distortionI, error, textCount };

    Call() {
        texts.fill(untouched);
        request.sampleRate = 10000.0;
        request.paramData = &texts[parameters];
        request.timeSignalDataU = &texts[signalsU];
        request.timeSignalDataI = &texts[signalsI];
        request.spectrumParamU = &texts[spectrumU];
        request.spectrumParamI = &texts[spectrumI];
        request.paramDataThdU = &texts[distortionU];
        request.paramDataThdI = &texts[distortionI];
        request.errorString = &texts[error];
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    static constexpr std::int32_t voltage = RT305_4_KIND_VOLTAGE;
    static constexpr std::int32_t current = RT305_4_KIND_CURRENT;

    void add(std::int32_t kind, std::uint32_t phase, std::vector<double> x) {
        samples.push_back(std::move(x));
        descriptors.push_back({kind, phase, nullptr, samples.back().size(), 1.0, 1.0, 0.0});
    }

    /// A channel whose samples somebody else keeps.
    void view(std::int32_t kind, std::uint32_t phase, const std::vector<double>& x) {
        samples.emplace_back();
        descriptors.push_back({kind, phase, x.data(), x.size(), 1.0, 1.0, 0.0});
    }

    std::int32_t run(const Plugin& plugin = Plugin::instance()) {
        for (std::size_t i = 0; i < descriptors.size(); ++i) {
            if (descriptors[i].samples == nullptr && !samples[i].empty()) {
                descriptors[i].samples = samples[i].data();
            }
        }
        request.channels = descriptors.data();
        if (!countGiven) {
            request.channelCount = static_cast<std::int32_t>(descriptors.size());
        }
        return plugin.process(request);
    }

    /// The texts that a successful call of this type and operation makes; all others are what an earlier call left.
    std::vector<Text> made() const {
        std::vector<Text> makes{parameters};
        const std::uint32_t type = request.inputType;
        const std::uint32_t operation = request.operation;
        if (operation != 0 && (type == 4 || type == 21)) {
            makes.push_back(static_cast<Text>(2 * operation - 1));
        }
        if (operation != 0 && (type == 8 || type == 21)) {
            makes.push_back(static_cast<Text>(2 * operation));
        }
        return makes;
    }

    static constexpr const char* untouched = "untouched";
    DataProcessRequest request{};
    std::array<const char*, textCount> texts{};
    std::vector<std::vector<double>> samples;
    std::vector<ChannelData> descriptors;
    bool countGiven = false;  // request.channelCount was set by the test
};

/// amplitude * cos(2 pi frequency (i / rate) + phase) for i = 0 ... n - 1.
inline std::vector<double> sine(std::size_t n, double amplitude, double frequency, double phase = 0.0,
                                double rate = 10000.0) {
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        x[i] = amplitude * std::cos(2.0 * 3.14159265358979323846 * frequency * static_cast<double>(i) / rate + phase);
    }
    return x;
}

#endif
