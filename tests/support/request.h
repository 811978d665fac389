#ifndef RT305_4_TESTS_SUPPORT_REQUEST_H
#define RT305_4_TESTS_SUPPORT_REQUEST_H

#include <dlfcn.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "rt305_4/easy.h"
#include "support/signals.h"

namespace support {

using signals::Samples;

/// make(0) ... make(5): the samples of Ua, Ub, Uc, Ia, Ib, Ic.
template <class Make>
std::vector<Samples> sixChannels(Make make) {
    return {make(0U), make(1U), make(2U), make(3U), make(4U), make(5U)};
}

using Process = decltype(&dataProccess);

/// dataProccess of the library in a file, which is loaded as a host loads it.
inline Process loadProcess(const char* file) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    void* const function = library == nullptr ? nullptr : dlsym(library, "dataProccess");
    if (function == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return reinterpret_cast<Process>(function);
}

/// That of this build's library.
inline Process builtProcess() {
    static const Process process = loadProcess(RT305_4_LIBRARY_FILE);
    return process;
}

/// A request with its channels and texts.
class Call {
public:
    /// Channels with samples that others own.
    Call(std::uint32_t type, std::uint32_t operation, std::vector<ChannelData> given)
        : channels(std::move(given)),
          request(rt305_4_request(channels.data(), static_cast<std::int32_t>(channels.size()), &texts)) {
        request.inputType = type;
        request.operation = operation;
    }
    /// A channel for each of six[0] ... six[5], the samples of Ua, Ub, Uc, Ia, Ib, Ic, that is not empty.
    Call(std::uint32_t type, std::uint32_t operation, std::vector<Samples> six)
        : Call(type, operation, channelsOf(six)) {
        samples = std::move(six);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    /// Whether the library accepts the request.
    bool run(Process process = builtProcess()) const { return process(request) == 1; }

    std::string text(std::uint32_t number) { return **rt305_4_output(&request, number); }

    /// The texts that this call makes, in the order of their numbers; the others are those of earlier calls.
    std::vector<std::string> madeTexts() {
        std::vector<std::string> made;
        for (std::uint32_t number = 0; number < RT305_4_TEXT_ERROR; ++number) {
            if (rt305_4_isMade(&request, number) != 0) {
                made.push_back(text(number));
            }
        }
        return made;
    }

    std::vector<Samples> samples;
    std::vector<ChannelData> channels;
    RT305_4_Texts texts;
    DataProcessRequest request;

private:
    static std::vector<ChannelData> channelsOf(const std::vector<Samples>& six) {
        std::vector<ChannelData> made;
        for (std::uint32_t i = 0; i < six.size(); ++i) {
            if (!six[i].empty()) {
                const auto kind = static_cast<std::int32_t>(i / 3);
                made.push_back(rt305_4_channel(kind, i % 3, six[i].data(), six[i].size(), 1.0));
            }
        }
        return made;
    }
};

}  // namespace support

#endif
