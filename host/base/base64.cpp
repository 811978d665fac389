#include "base/base64.h"

#include <algorithm>
#include <string_view>

namespace rt305 {

std::string base64Of(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t here = std::min<std::size_t>(3, bytes.size() - i);
        unsigned bits = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            bits = bits << 8U | (k < here ? bytes[i + k] : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= here ? letters[bits >> (18U - 6U * static_cast<unsigned>(k)) & 63U] : '=';
        }
    }
    return text;
}

}  // namespace rt305
