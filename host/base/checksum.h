#ifndef RT305_HOST_BASE_CHECKSUM_H
#define RT305_HOST_BASE_CHECKSUM_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace rt305 {

/// The SHA-256 of bytes.
std::array<std::uint8_t, 32> sha256Of(std::string_view bytes);

/// The same in hexadecimal digits, as sha256sum prints it.
std::string checksumOf(std::string_view bytes);

}  // namespace rt305

#endif
