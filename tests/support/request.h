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

/// dataProccess of the library in a file, which is loaded as a host loads it.
inline auto loadProcess(const char* file) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    void* const function = library == nullptr ? nullptr : dlsym(library, "dataProccess");
    if (function == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return reinterpret_cast<decltype(&dataProccess)>(function);
}

/// A request that owns its channels, their samples and its texts.
class Call {
public:
    /// Of six[0] ... six[5], the samples of Ua, Ub, Uc, Ia, Ib, Ic, those that are not empty become channels.
    Call(std::uint32_t type, std::uint32_t operation, std::vector<Samples> six) : samples(std::move(six)) {
        for (std::uint32_t i = 0; i < samples.size(); ++i) {
            if (const Samples& x = samples[i]; !x.empty()) {
                channels.push_back(rt305_4_channel(static_cast<std::int32_t>(i / 3), i % 3, x.data(), x.size(), 1.0));
            }
        }
        request = rt305_4_request(channels.data(), static_cast<std::int32_t>(channels.size()), &texts);
        request.inputType = type;
        request.operation = operation;
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    /// Whether the library of this build accepts the request.
    bool run() const {
        static const auto process = loadProcess(RT305_4_LIBRARY_FILE);
        return process(request) == 1;
    }

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
    RT305_4_Texts texts{};
    DataProcessRequest request{};
};

}  // namespace support

#endif
