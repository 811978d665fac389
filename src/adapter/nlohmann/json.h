#ifndef RT305_4_ADAPTER_NLOHMANN_JSON_H
#define RT305_4_ADAPTER_NLOHMANN_JSON_H

// The only place in the library that includes the JSON library.
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

/// Compact text: no indentation, non-ASCII unescaped, invalid UTF-8 raises nlohmann::json::type_error 316.
inline std::string compactText(const nlohmann::json& value) {
    return value.dump(-1, ' ', false);
}

/// Appends the text of one value as compactText gives it. For numbers that is the library's own formatter, called
/// without a value in between; non-finite ones are null.
inline void appendJson(std::string& out, double value) {
    if (!std::isfinite(value)) {
        out += "null";
        return;
    }
    char digits[64];
    const char* const end = nlohmann::detail::to_chars(digits, digits + sizeof digits, value);
    out.append(digits, static_cast<std::size_t>(end - digits));
}

inline void appendJson(std::string& out, const std::string& text) {
    out += compactText(text);
}

/// The longest text of a double.
inline constexpr std::size_t longestJsonDouble = 24;

#endif
