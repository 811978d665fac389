#include "base/text.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

#include "base/limits.h"

namespace rt305 {

namespace {

constexpr std::size_t longestNumber = 40;  // characters of a number in general notation
constexpr std::size_t longestFixed = 340;  // the largest double has 309 digits before the decimal point
constexpr int mostDecimals = 9;

template <class T>
std::optional<T> parseWhole(std::string_view text) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Whether the digits before the decimal point are one to three, not beginning with 0, and then groups of a comma and
/// three.
bool hasGroupsOfThree(std::string_view number) {
    std::string_view whole = number.substr(0, number.find_first_of(".eE"));
    whole.remove_prefix(!whole.empty() && whole.front() == '-' ? 1 : 0);
    const std::size_t first = whole.find(',');
    bool valid = first >= 1 && first <= 3 && whole.front() != '0' && number.find(',', whole.size()) == number.npos;
    for (std::size_t i = first; valid && i < whole.size(); i += 4) {
        valid = whole[i] == ',' && whole.size() - i >= 4 && whole.find(',', i + 1) >= i + 4;
    }
    return valid;
}

/// Appends the digits from `at` on to a number, modulo 2^64, and moves `at` behind them. Returns how many they are.
std::size_t takeDigits(const char*& at, const char* end, std::uint64_t& number) {
    const char* const begin = at;
    for (; at != end && static_cast<unsigned char>(*at - '0') < 10; ++at) {
        number = number * 10 + static_cast<std::uint64_t>(*at - '0');
    }
    return static_cast<std::size_t>(at - begin);
}

}  // namespace

std::optional<double> parseNumber(std::string_view text, Comma comma) {
    if (text.size() > longestNumberText) {
        return std::nullopt;
    }
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    if (text.size() == 3 && lowerCase(text) == "nan") {
        return std::numeric_limits<double>::quiet_NaN();
    }
    std::string withoutComma;
    if (comma != Comma::none && text.find(',') != std::string_view::npos) {
        if (comma == Comma::betweenGroups && !hasGroupsOfThree(text)) {
            return std::nullopt;
        }
        withoutComma = text;
        if (comma == Comma::decimalSign) {
            std::replace(withoutComma.begin(), withoutComma.end(), ',', '.');
        } else {
            withoutComma.erase(std::remove(withoutComma.begin(), withoutComma.end(), ','), withoutComma.end());
        }
        text = withoutComma;
    }
    const auto value = parseWhole<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::size_t parseLeadingNumber(std::string_view text, bool allowComma, double& value) {
    constexpr std::size_t mostDigits = 18;  // of a 64-bit number
    constexpr std::uint64_t largestExact = std::uint64_t{1} << 53;
    static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                                        1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};
    const char* const end = text.data() + text.size();
    const char* at = text.data();
    const bool isNegative = at != end && *at == '-';
    at += isNegative ? 1 : 0;
    const char* const first = at;
    std::uint64_t digits = 0;
    const std::size_t whole = takeDigits(at, end, digits);
    std::size_t decimals = 0;
    const bool hasComma = allowComma && at != end && *at == ',';
    if (whole > 0 && at != end && (*at == '.' || hasComma)) {
        ++at;
        decimals = takeDigits(at, end, digits);
    }
    if (whole == 0) {
        return 0;
    }
    // a whole number and a power of ten that are both exact give the nearest double (W. D. Clinger, 1990)
    if (whole + decimals <= mostDigits && digits <= largestExact && (at == end || (*at != 'e' && *at != 'E'))) {
        const double magnitude = static_cast<double>(digits) / powers[decimals];
        value = isNegative ? -magnitude : magnitude;
        return static_cast<std::size_t>(at - text.data());
    }
    const char* const limit = text.data() + std::min(text.size(), longestNumberText);
    const auto [last, error] = std::from_chars(text.data(), limit, value);
    const bool isRead = !hasComma && error == std::errc{} && last > first && std::isfinite(value);
    return isRead ? static_cast<std::size_t>(last - text.data()) : 0;
}

std::optional<std::size_t> parseCount(std::string_view text) {
    return parseWhole<std::size_t>(text);
}

std::string formatNumber(double value, int digits) {
    std::array<char, longestNumber> text;
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, digits);
    assert(error == std::errc{});
    return {text.data(), end};
}

std::string formatFixed(double value, int decimals) {
    if (std::isnan(value)) {
        return "-";
    }
    std::array<char, longestFixed> text;
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, decimals);
    assert(error == std::errc{});
    std::string_view shown(text.data(), static_cast<std::size_t>(end - text.data()));
    if (shown[0] == '-' && shown.find_first_not_of("-0.") == std::string_view::npos) {
        shown.remove_prefix(1);
    }
    return std::string(shown);
}

int decimalsFor(double magnitude, int digits) {
    if (!(magnitude > 0.0) || !std::isfinite(magnitude)) {
        return 0;
    }
    return std::clamp(digits - 1 - static_cast<int>(std::floor(std::log10(magnitude))), 0, mostDecimals);
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return lowerCase(c); });
    return lower;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    parts.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), separator)) + 1);
    std::size_t end = 0;
    do {
        end = text.find(separator);
        parts.push_back(trimmed(text.substr(0, end)));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    } while (end != std::string_view::npos);
    return parts;
}

std::string wrapped(std::string_view text, std::size_t width) {
    std::string lines;
    while (text.size() > width) {
        const std::size_t blank = text.find_last_of(' ', width);
        if (blank == std::string_view::npos) {
            break;
        }
        lines += std::string(text.substr(0, blank)) + '\n';
        text.remove_prefix(blank + 1);
    }
    return lines + std::string(text) + '\n';
}

std::string counted(std::size_t count, std::string_view noun) {
    return std::to_string(count).append(" ").append(noun).append(count == 1 ? "" : "s");
}

MetricPrefix metricPrefixFor(double magnitude) {
    static constexpr MetricPrefix prefixes[] = {{1e9, "G"}, {1e6, "M"}, {1e3, "k"}, {}, {1e-3, "m"}, {1e-6, "\u00b5"}};
    constexpr double rounding = 0.9999995;  // 999.9996 V reads as 1.00000 kV
    if (!(magnitude > 0.0) || !std::isfinite(magnitude)) {
        return {};
    }
    const auto* const fitting =
        std::find_if(std::begin(prefixes), std::end(prefixes),
                     [magnitude](const MetricPrefix& prefix) { return magnitude >= rounding * prefix.factor; });
    return fitting == std::end(prefixes) ? MetricPrefix{1e-9, "n"} : *fitting;
}

std::string joined(const std::vector<std::string>& words, std::string_view last) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        text += i == 0 ? "" : i + 1 == words.size() ? " " + std::string(last) + " " : ", ";
        text += words[i];
    }
    return text;
}

std::string firstBytes(std::string_view text, std::size_t most) {
    std::size_t end = std::min(text.size(), most);
    while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return std::string(text.substr(0, end));
}

std::string inQuotes(std::string_view text) {
    constexpr std::size_t most = 80;
    return '"' + firstBytes(text, most) + (text.size() > most ? "...\"" : "\"");
}

}  // namespace rt305
