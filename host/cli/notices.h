#ifndef RT305_HOST_CLI_NOTICES_H
#define RT305_HOST_CLI_NOTICES_H

#include <string_view>

namespace rt305 {

/// The copyright and licence notices of the parts that the tool and its reports contain, embedded by the build.
extern const std::string_view notices;

}  // namespace rt305

#endif
