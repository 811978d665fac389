#ifndef RT305_HOST_BASE_BASE64_H
#define RT305_HOST_BASE_BASE64_H

#include <cstdint>
#include <span>
#include <string>

namespace rt305 {

/// The bytes in Base64 (RFC 4648), padded with "=".
std::string base64Of(std::span<const std::uint8_t> bytes);

}  // namespace rt305

#endif
