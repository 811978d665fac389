#ifndef RT305_4_ADAPTER_NLOHMANN_JSON_H
#define RT305_4_ADAPTER_NLOHMANN_JSON_H

// The only file of the library that includes the JSON library. The last two functions use its private parts, because
// its public interface writes a number only through a value and a string of its own, which takes several times as long.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

/// Compact text: no indentation, non-ASCII unescaped, invalid UTF-8 raises nlohmann::json::type_error 316.
inline std::string compactText(const nlohmann::json& value) {
    return value.dump(-1, ' ', false);
}

/// Whether compactText only puts the text in quotes: printable ASCII without quotes and backslashes.
inline bool needsNoEscape(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

/// The text as compactText gives it, faster for most.
inline std::string quotedText(const std::string& text) {
    return needsNoEscape(text) ? '"' + text + '"' : compactText(text);
}

/// Writes a finite number as compactText gives it, at most 24 characters, and returns its end.
inline char* libraryNumber(char* out, double value) {
    return nlohmann::detail::to_chars(out, out + 24, value);
}

/// libraryNumber for a subnormal number f * 2^-1074, f > 0. The library would normalise it and its bounds f +- 1/2 one
/// bit at a time, up to 63 steps each; here each takes one shift.
inline char* librarySubnormal(char* out, double value) {
    namespace digits = nlohmann::detail::dtoa_impl;
    const std::uint64_t f = std::bit_cast<std::uint64_t>(std::fabs(value));
    const int exponent = -1075 - std::countl_zero(2 * f + 1);
    const auto inPlace = [&](std::uint64_t twice) {
        return digits::diyfp(twice << std::countl_zero(2 * f + 1), exponent);
    };
    *out = '-';
    out += std::signbit(value) ? 1 : 0;
    int length = 0;
    int decimalExponent = 0;
    digits::grisu2(out, length, decimalExponent, inPlace(2 * f - 1), inPlace(2 * f), inPlace(2 * f + 1));
    return digits::format_buffer(out, length, decimalExponent, -4, 15);
}

#endif
