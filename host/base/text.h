#ifndef RT305_HOST_BASE_TEXT_H
#define RT305_HOST_BASE_TEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rt305 {

/// Numbers to and from text, the same in every locale, and the little handling of text around them.

/// A decimal number ("1.5E+03", "+7", "NaN" in any case) that fills the whole text; nothing for all other text,
/// infinities and what no double holds. With decimalComma the comma is a second decimal sign.
std::optional<double> parseNumber(std::string_view text, bool decimalComma = false);

/// A count without a sign that fills the whole text.
std::optional<std::size_t> parseCount(std::string_view text);

/// As a person writes it: at most `digits` significant digits, no trailing zeros.
std::string formatNumber(double value, int digits = 6);

/// With a fixed number of decimals; "-" for NaN, and no minus sign before a plain zero.
std::string formatFixed(double value, int decimals);

/// How many decimals show `digits` significant digits of the magnitude, from 0 to 9.
int decimalsFor(double magnitude, int digits);

std::string_view trimmed(std::string_view text);
std::string lowerCase(std::string_view text);

/// The pieces between separators, trimmed; one empty piece for an empty text.
std::vector<std::string_view> split(std::string_view text, char separator);

/// The words of a text on lines of at most `width` characters, each ended.
std::string wrapped(std::string_view text, std::size_t width);

/// "Ua, Ub and Uc".
std::string joined(const std::vector<std::string>& words);

inline std::string inQuotes(std::string_view text) {
    return '"' + std::string(text) + '"';
}

}  // namespace rt305

#endif
