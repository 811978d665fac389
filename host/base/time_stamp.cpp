#include "base/time_stamp.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <vector>

#include "base/text.h"

namespace rt305 {

namespace {

constexpr std::size_t nanosecondDigits = 9;

/// Parses three whole numbers with separators between them.
std::optional<std::vector<int>> parseThree(std::string_view text, char separator) {
    std::vector<int> fields;
    for (const std::string_view piece : split(text, separator)) {
        const auto field = parseCount(piece);
        if (!field || *field > 9999) {
            return std::nullopt;
        }
        fields.push_back(static_cast<int>(*field));
    }
    return fields.size() == 3 ? std::optional(fields) : std::nullopt;
}

/// Parses a date into days since 1970.
std::optional<std::int64_t> parseDate(std::string_view text) {
    const std::size_t separator = text.find_first_of("-/.");
    const auto fields = separator == std::string_view::npos ? std::nullopt : parseThree(text, text[separator]);
    if (!fields) {
        return std::nullopt;
    }
    const auto& f = *fields;
    for (const auto& [year, month, day] :
         {std::array{f[0], f[1], f[2]}, std::array{f[2], f[1], f[0]}, std::array{f[2], f[0], f[1]}}) {
        const std::chrono::year_month_day date{std::chrono::year(year),
                                               std::chrono::month(static_cast<unsigned>(month)),
                                               std::chrono::day(static_cast<unsigned>(day))};
        if (year >= 1900 && year <= 2099 && date.ok()) {
            return std::chrono::sys_days(date).time_since_epoch().count();
        }
    }
    return std::nullopt;
}

/// Parses decimals of a second, with the point, into ns: ".25" -> 250 000 000.
std::optional<std::int64_t> parseFraction(std::string_view decimals) {
    if (decimals.empty()) {
        return 0;
    }
    std::string digits(decimals.substr(1));
    if (digits.size() > nanosecondDigits) {
        return std::nullopt;
    }
    digits.resize(nanosecondDigits, '0');
    const auto nanoseconds = parseCount(digits);
    return nanoseconds ? std::optional(static_cast<std::int64_t>(*nanoseconds)) : std::nullopt;
}

}  // namespace

std::optional<std::int64_t> parseTimeStamp(std::string_view text) {
    std::int64_t days = 0;
    const std::size_t dateEnd = text.find_first_of(" T");
    if (dateEnd != std::string_view::npos) {
        const auto date = parseDate(text.substr(0, dateEnd));
        if (!date) {
            return std::nullopt;
        }
        days = *date;
        text = trimmed(text.substr(dateEnd + 1));
    }
    if (!text.empty() && text.back() == 'Z') {
        text.remove_suffix(1);
    }
    const std::size_t point = std::min(text.find_first_of(".,"), text.size());
    const auto clock = parseThree(text.substr(0, point), ':');
    const auto fraction = parseFraction(text.substr(point));
    if (!clock || !fraction || (*clock)[0] > 23 || (*clock)[1] > 59 || (*clock)[2] > 60) {
        return std::nullopt;
    }
    const std::int64_t seconds = ((days * 24 + (*clock)[0]) * 60 + (*clock)[1]) * 60 + (*clock)[2];
    return seconds * 1'000'000'000 + *fraction;
}

}  // namespace rt305
