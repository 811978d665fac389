#ifndef RT305_4_ADAPTER_NLOHMANN_JSON_H
#define RT305_4_ADAPTER_NLOHMANN_JSON_H

// The only place in the library that includes the JSON library.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

/// Compact text: no indentation, non-ASCII unescaped, invalid UTF-8 raises nlohmann::json::type_error 316.
inline std::string compactText(const nlohmann::json& value) {
    return value.dump(-1, ' ', false);
}

/// Appends a string as compactText gives it. Printable ASCII without quotes and backslashes stands for itself.
inline void appendJson(std::string& out, const std::string& text) {
    const auto plain = [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
    if (!std::all_of(text.begin(), text.end(), plain)) {
        out += compactText(text);
        return;
    }
    out += '"';
    out += text;
    out += '"';
}

/// Writes a finite number as compactText gives it, at most 24 characters, and returns its end: the library's formatter,
/// called without a value in between.
inline char* libraryNumber(char* out, double value) {
    return nlohmann::detail::to_chars(out, out + 24, value);
}

#endif
