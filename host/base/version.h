#ifndef RT305_HOST_BASE_VERSION_H
#define RT305_HOST_BASE_VERSION_H

namespace rt305 {

/// The version of the tool: "1.0.0".
extern const char* const toolVersion;

}  // namespace rt305

#endif
