#include "page/checksum.h"

#include <sha2.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "base/failure.h"

namespace rt305 {

std::string checksumOfFile(const std::string& path) {
    std::array<char, SHA256_DIGEST_STRING_LENGTH> digits{};
    if (SHA256File(path.c_str(), digits.data()) == nullptr) {
        failInput(path + ": " + std::strerror(errno));
    }
    return digits.data();
}

std::string policyHashOf(std::string_view text) {
    SHA2_CTX context;
    std::array<std::uint8_t, SHA256_DIGEST_LENGTH + 1>
        digest{};  // and a zero byte: Base64 encodes three bytes at a time
    SHA256Init(&context);
    SHA256Update(&context, reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    SHA256Final(digest.data(), &context);
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string base64;
    for (std::size_t i = 0; i < digest.size(); i += 3) {
        const unsigned bits = unsigned{digest[i]} << 16U | unsigned{digest[i + 1]} << 8U | unsigned{digest[i + 2]};
        for (unsigned shift = 24; shift > 0;) {
            shift -= 6;
            base64 += letters[bits >> shift & 63U];
        }
    }
    base64.back() = '=';  // in place of the added zero byte
    return "'sha256-" + base64 + "'";
}

}  // namespace rt305
