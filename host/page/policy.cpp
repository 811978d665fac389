#include "page/policy.h"

#include <algorithm>
#include <array>

#include "base/checksum.h"

namespace rt305 {

std::string policyHashOf(std::string_view text) {
    const auto hash = sha256Of(text);
    std::array<std::uint8_t, hash.size() + 1> digest{};  // and a zero byte: Base64 encodes three bytes at a time
    std::copy(hash.begin(), hash.end(), digest.begin());
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
