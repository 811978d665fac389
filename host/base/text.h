#ifndef RT305_HOST_BASE_TEXT_H
#define RT305_HOST_BASE_TEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rt305 {

/// Conversion between numbers and text, independent of the locale, and helpers for text.

/// What a comma inside a number is: a decimal sign like the point, or between groups of three digits: "1,234.5".
enum class Comma { none, decimalSign, betweenGroups };

/// Parses a text that is one decimal number: "1.5E+03", "+7", "NaN" in any case. Gives nothing for any other text, for
/// infinities, for numbers outside the range of a double and for texts longer than `longestNumberText`.
std::optional<double> parseNumber(std::string_view text, Comma comma = Comma::none);

/// Parses the number at the start of a text into `value`, as parseNumber does, and returns its length; 0 where none
/// begins with a digit, or with "-" and a digit. The decimal sign is a point, or a comma if that is allowed.
std::size_t parseLeadingNumber(std::string_view text, bool allowComma, double& value);

/// Parses a text that is one whole number without a sign.
std::optional<std::size_t> parseCount(std::string_view text);

/// Notation of printf's %g: at most `digits` significant digits, no trailing zeros.
std::string formatNumber(double value, int digits = 6);

/// Fixed notation; "-" for NaN, and no minus sign before a rounded zero.
std::string formatFixed(double value, int decimals);

/// The number of decimals, 0 to 9, that shows `digits` significant digits of the magnitude.
int decimalsFor(double magnitude, int digits);

std::string_view trimmed(std::string_view text);
std::string lowerCase(std::string_view text);

/// The parts between separators, trimmed; one empty part for an empty text.
std::vector<std::string_view> split(std::string_view text, char separator);

/// Breaks a text at blanks into lines of at most `width` characters, each with a line end.
std::string wrapped(std::string_view text, std::size_t width);

/// "1 sample", "2 samples".
std::string counted(std::size_t count, std::string_view noun);

/// The prefix, of those from nano to giga, with which a magnitude reads from 1 to 1000; none for 0 and what is not
/// finite. A value in the unit is `factor` times the one in the prefixed unit.
struct MetricPrefix {
    double factor = 1.0;
    const char* symbol = "";
};
MetricPrefix metricPrefixFor(double magnitude);

/// "Ua, Ub and Uc".
std::string joined(const std::vector<std::string>& words, std::string_view last = "and");

/// At most `most` bytes of UTF-8, of whole characters.
std::string firstBytes(std::string_view text, std::size_t most);

/// A text in quotes; of a longer one the first 80 bytes with "...", without a part of a UTF-8 character.
std::string inQuotes(std::string_view text);

}  // namespace rt305

#endif
