#include "base/time_stamp.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "base/text.h"

namespace rt305 {

namespace {

constexpr std::size_t nanosecondDigits = 9;
constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

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
std::optional<std::int64_t> parseDate(std::string_view text, bool monthFirst) {
    const std::size_t separator = text.find_first_of("-/.");
    const auto fields = separator == std::string_view::npos ? std::nullopt : parseThree(text, text[separator]);
    if (!fields) {
        return std::nullopt;
    }
    const auto& f = *fields;
    std::array orders{std::array{f[0], f[1], f[2]}, std::array{f[2], f[1], f[0]}, std::array{f[2], f[0], f[1]}};
    if (monthFirst) {
        std::swap(orders[1], orders[2]);
    }
    for (const auto& [year, month, day] : orders) {
        const std::chrono::year_month_day date{std::chrono::year(year),
                                               std::chrono::month(static_cast<unsigned>(month)),
                                               std::chrono::day(static_cast<unsigned>(day))};
        if (year >= 1900 && year <= 2099 && date.ok()) {
            return std::chrono::sys_days(date).time_since_epoch().count();
        }
    }
    return std::nullopt;
}

std::string twoDigits(std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

std::string isoDate(const std::chrono::year_month_day& date) {
    return std::to_string(static_cast<int>(date.year())) + "-" + twoDigits(static_cast<unsigned>(date.month())) + "-" +
           twoDigits(static_cast<unsigned>(date.day()));
}

/// "9:5:1,25" -> "09:05:01.25", with all decimals; the clock must be one that parseClock() takes.
std::string isoClock(std::string_view clock) {
    const std::size_t point = std::min(clock.find_first_of(".,"), clock.size());
    const auto fields = parseThree(clock.substr(0, point), ':');
    std::string text;
    for (const int field : *fields) {
        text += (text.empty() ? "" : ":") + twoDigits(field);
    }
    return point + 1 < clock.size() ? text + "." + std::string(clock.substr(point + 1)) : text;
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

/// Takes "Z" or an offset such as "+01:00", "-0530" or "+01" from the end of a time; its minutes, 0 without one.
std::optional<std::int64_t> takeOffset(std::string_view& text) {
    if (!text.empty() && text.back() == 'Z') {
        text.remove_suffix(1);
    }
    const std::size_t sign = text.find_last_of("+-");
    if (sign == std::string_view::npos) {
        return 0;
    }
    std::string digits(text.substr(sign + 1));
    digits.erase(std::remove(digits.begin(), digits.end(), ':'), digits.end());
    const auto number = parseCount(digits);
    if (!number || (digits.size() != 2 && digits.size() != 4)) {
        return std::nullopt;
    }
    const auto whole = static_cast<std::int64_t>(*number);
    const std::int64_t minutes = digits.size() == 2 ? whole * 60 : whole / 100 * 60 + whole % 100;
    const bool isBehind = text[sign] == '-';
    text = trimmed(text.substr(0, sign));
    return isBehind ? -minutes : minutes;
}

enum class HalfDay { none, am, pm };

/// Takes "AM" or "PM", in any case, from the end of a time.
HalfDay takeHalfDay(std::string_view& text) {
    for (const auto& [word, half] : {std::pair{"am", HalfDay::am}, std::pair{"pm", HalfDay::pm}}) {
        if (text.size() > 2 && lowerCase(text.substr(text.size() - 2)) == word) {
            text = trimmed(text.substr(0, text.size() - 2));
            return half;
        }
    }
    return HalfDay::none;
}

/// Parses "18:15:21.5" or, with a half of the day, "06:15:21.5" into ns since midnight.
std::optional<std::int64_t> parseClock(std::string_view text, HalfDay half) {
    const std::size_t point = std::min(text.find_first_of(".,"), text.size());
    const auto clock = parseThree(text.substr(0, point), ':');
    const auto fraction = parseFraction(text.substr(point));
    if (!clock || !fraction || (*clock)[1] > 59 || (*clock)[2] > 60) {
        return std::nullopt;
    }
    int hour = (*clock)[0];
    if (half == HalfDay::none ? hour > 23 : hour < 1 || hour > 12) {
        return std::nullopt;
    }
    if (half != HalfDay::none) {
        hour = hour % 12 + (half == HalfDay::pm ? 12 : 0);
    }
    const int seconds = (hour * 60 + (*clock)[1]) * 60 + (*clock)[2];
    return seconds * nanosecondsPerSecond + *fraction;
}

}  // namespace

std::optional<std::int64_t> parseTimeStamp(std::string_view text) {
    text = trimmed(text);
    const HalfDay half = takeHalfDay(text);
    std::int64_t days = 0;
    const std::size_t dateEnd = text.find_first_of(" T");
    if (dateEnd != std::string_view::npos) {
        const auto date = parseDate(text.substr(0, dateEnd), half != HalfDay::none);
        if (!date) {
            return std::nullopt;
        }
        days = *date;
        text = trimmed(text.substr(dateEnd + 1));
    }
    const auto offset = takeOffset(text);
    const auto clock = parseClock(text, half);
    if (!offset || !clock) {
        return std::nullopt;
    }
    return (days * 24 * 60 - *offset) * 60 * nanosecondsPerSecond + *clock;
}

std::string isoTime(std::int64_t stamp) {
    using std::chrono::days;
    const std::chrono::sys_time<std::chrono::nanoseconds> time{std::chrono::nanoseconds(stamp)};
    const auto day = std::chrono::floor<days>(time);
    if (stamp < std::chrono::nanoseconds(days(1)).count()) {
        return {};
    }
    const std::chrono::hh_mm_ss clock{time - day};
    std::string text = isoDate(day) + "T" + twoDigits(clock.hours().count()) + ":" +
                       twoDigits(clock.minutes().count()) + ":" + twoDigits(clock.seconds().count());
    if (const auto nanoseconds = clock.subseconds().count(); nanoseconds > 0) {
        std::string decimals = std::to_string(nanosecondsPerSecond + nanoseconds);
        decimals.erase(decimals.find_last_not_of('0') + 1);
        text += "." + decimals.substr(1);
    }
    return text;
}

std::string isoTimeOfComtrade(std::string_view text) {
    const std::size_t comma = std::min(text.find(','), text.size());
    const auto fields = parseThree(trimmed(text.substr(0, comma)), '/');
    const std::string_view clock = trimmed(text.substr(std::min(comma + 1, text.size())));
    if (!fields || !parseClock(clock, HalfDay::none)) {
        return std::string(text);
    }
    if (*fields == std::vector<int>{0, 0, 0}) {
        return {};
    }
    auto [first, second, year] = std::array{(*fields)[0], (*fields)[1], (*fields)[2]};
    const bool isShort = year < 100;
    if (isShort) {
        year += year < 70 ? 2000 : 1900;
        std::swap(first, second);
    }
    for (const auto& [day, month] : {std::pair{first, second}, std::pair{second, first}}) {
        const std::chrono::year_month_day date{std::chrono::year(year),
                                               std::chrono::month(static_cast<unsigned>(month)),
                                               std::chrono::day(static_cast<unsigned>(day))};
        if (date.ok()) {
            return isoDate(date) + "T" + isoClock(clock);
        }
    }
    return std::string(text);
}

}  // namespace rt305
