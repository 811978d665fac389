#ifndef RT305_HOST_PAGE_POLICY_H
#define RT305_HOST_PAGE_POLICY_H

#include <string>
#include <string_view>

namespace rt305 {

/// The SHA-256 of a text in the form of a content security policy: 'sha256-...' in Base64 (RFC 4648).
std::string policyHashOf(std::string_view text);

}  // namespace rt305

#endif
