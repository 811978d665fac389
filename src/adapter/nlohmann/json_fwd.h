#ifndef RT305_4_ADAPTER_NLOHMANN_JSON_FWD_H
#define RT305_4_ADAPTER_NLOHMANN_JSON_FWD_H

#include <nlohmann/json_fwd.hpp>

#endif
