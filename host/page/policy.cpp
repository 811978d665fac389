#include "page/policy.h"

#include "base/base64.h"
#include "base/checksum.h"

namespace rt305 {

std::string policyHashOf(std::string_view text) {
    return "'sha256-" + base64Of(sha256Of(text)) + "'";
}

}  // namespace rt305
