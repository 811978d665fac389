#include "base/version.h"

namespace rt305 {

const char* const toolVersion = RT305_4_PROJECT_VERSION;

}  // namespace rt305
