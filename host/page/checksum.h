#ifndef RT305_HOST_PAGE_CHECKSUM_H
#define RT305_HOST_PAGE_CHECKSUM_H

#include <string>
#include <string_view>

namespace rt305 {

/// The SHA-256 of a file in hexadecimal digits, as sha256sum prints it. Fails when it cannot be read.
std::string checksumOfFile(const std::string& path);

/// The SHA-256 of a text in the form of a content security policy: 'sha256-...' in Base64 (RFC 4648).
std::string policyHashOf(std::string_view text);

}  // namespace rt305

#endif
