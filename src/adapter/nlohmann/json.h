#ifndef RT305_4_ADAPTER_NLOHMANN_JSON_H
#define RT305_4_ADAPTER_NLOHMANN_JSON_H

// The only place in the library that includes the JSON library.
#include <nlohmann/json.hpp>
#include <string>

/// Compact text: no indentation, non-ASCII unescaped, invalid UTF-8 raises nlohmann::json::type_error 316.
inline std::string compactText(const nlohmann::json& value) {
    return value.dump(-1, ' ', false);
}

#endif
