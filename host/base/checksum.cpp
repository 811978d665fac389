#include "base/checksum.h"

#include <sha2.h>

namespace rt305 {

std::array<std::uint8_t, 32> sha256Of(std::string_view bytes) {
    std::array<std::uint8_t, 32> digest{};
    SHA2_CTX context;
    SHA256Init(&context);
    SHA256Update(&context, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    SHA256Final(digest.data(), &context);
    return digest;
}

std::string checksumOf(std::string_view bytes) {
    constexpr std::string_view letters = "0123456789abcdef";
    std::string digits;
    for (const std::uint8_t byte : sha256Of(bytes)) {
        digits += letters[byte / 16U];
        digits += letters[byte % 16U];
    }
    return digits;
}

}  // namespace rt305
