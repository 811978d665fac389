#include "cli/option_values.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "base/text.h"
#include "base/units.h"

namespace rt305 {

namespace {

std::optional<double> parseFinite(std::string_view text) {
    const auto value = parseNumber(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

/// " from 1 to 15"; the limits that only keep a number finite are not named.
std::string limitsOf(const NumberRange& range) {
    constexpr double unlimited = 1e300;
    if (range.highest < unlimited) {
        return " from " + formatNumber(range.lowest, 10) + " to " + formatNumber(range.highest, 10);
    }
    return range.lowest > 0.0 ? " above 0" : range.lowest == 0.0 ? " of at least 0" : "";
}

/// Adds a value for a column unless it has one.
template <class Value>
void addOnce(std::vector<std::pair<std::string, Value>>& list, const char* option, std::string_view column,
             const Value& value) {
    if (std::any_of(list.begin(), list.end(), [column](const auto& known) { return known.first == column; })) {
        failUsage(std::string(option) + ": " + inQuotes(column) + " is given twice");
    }
    list.emplace_back(column, value);
}

}  // namespace

Harmonic parseHarmonic(const std::string& text) {
    const auto fields = split(text, ':');
    const auto order = parseCount(fields[0]);
    const auto percent = fields.size() > 1 ? parseFinite(fields[1]) : std::nullopt;
    const auto degrees = fields.size() > 2 ? parseFinite(fields[2]) : 0.0;
    if (!order || *order < 1 || *order > 10000 || !percent || !degrees || fields.size() > 3) {
        failUsage("the harmonic " + inQuotes(text) + " is not of the form ORDER:PERCENT[:DEGREES]");
    }
    return {static_cast<int>(*order), *percent, *degrees};
}

Dropout parseDropout(const std::string& text) {
    const auto fields = split(text, ':');
    const auto channel = findChannel(fields[0]);
    const auto start = fields.size() == 3 ? parseCount(fields[1]) : std::nullopt;
    const auto count = fields.size() == 3 ? parseCount(fields[2]) : std::nullopt;
    if (!channel || !start || !count) {
        failUsage("the dropout " + inQuotes(text) + " is not of the form CHANNEL:START:COUNT");
    }
    return {*channel, *start, *count};
}

std::vector<std::pair<std::string, double>> parseGains(const std::string& text) {
    std::vector<std::pair<std::string, double>> gains;
    for (const std::string_view item : split(text, ',')) {
        const std::size_t equals = std::min(item.rfind('='), item.size());
        const auto factor = parseFinite(trimmed(item.substr(std::min(equals + 1, item.size()))));
        if (!factor || equals == 0) {
            failUsage("--gain: " + inQuotes(item) + " is not of the form COLUMN=FACTOR");
        }
        addOnce(gains, "--gain", trimmed(item.substr(0, equals)), *factor);
    }
    return gains;
}

std::vector<std::pair<std::string, std::string>> parseNames(const std::string& text) {
    std::vector<std::pair<std::string, std::string>> names;
    for (const std::string_view item : split(text, ',')) {
        const std::size_t equals = std::min(item.find('='), item.size());
        if (equals == 0 || equals + 1 >= item.size()) {
            failUsage("--rename: " + inQuotes(item) + " is not of the form COLUMN=NAME");
        }
        addOnce(names, "--rename", trimmed(item.substr(0, equals)), std::string(trimmed(item.substr(equals + 1))));
    }
    return names;
}

double parseNumberIn(const NumberRange& range, const std::string& text) {
    const auto value = parseFinite(trimmed(text));
    if (!value || *value < range.lowest || *value > range.highest || (range.isWhole && *value != std::floor(*value))) {
        failUsage(range.option + std::string(": ") + inQuotes(text) + " is not a " + (range.isWhole ? "whole " : "") +
                  "number" + limitsOf(range));
    }
    return *value;
}

double parseFrequency(const NumberRange& range, const std::string& text) {
    std::string_view number = trimmed(text);
    if (number.size() > 2 && lowerCase(number.substr(number.size() - 2)) == "hz") {
        number = trimmed(number.substr(0, number.size() - 2));
    }
    double factor = 1.0;
    for (const auto& [prefix, value] : {std::pair{'k', 1e3}, std::pair{'K', 1e3}, std::pair{'M', 1e6}}) {
        if (!number.empty() && number.back() == prefix) {
            number = trimmed(number.substr(0, number.size() - 1));
            factor = value;
        }
    }
    const auto value = parseFinite(number);
    if (!value || *value * factor < range.lowest || *value * factor > range.highest) {
        failUsage(range.option + std::string(": ") + inQuotes(text) + " is not a frequency such as 4800, 10k or 10kHz" +
                  limitsOf(range) + " Hz");
    }
    return *value * factor;
}

double parseNominal(const std::string& text) {
    return lowerCase(trimmed(text)) == "auto" ? 0.0 : parseFrequency({"--nominal", 1.0, 10000.0, false}, text);
}

double parseDeclared(const std::string& text) {
    const std::size_t end = std::min(text.find_last_of("0123456789.") + 1, text.size());
    const std::string_view unit = trimmed(std::string_view(text).substr(end));
    const auto value = parseFinite(std::string_view(text).substr(0, end));
    const Unit known = unitOf(unit);
    const bool isVoltage = unit.empty() || known.quantity == Quantity::voltage;
    if (lowerCase(trimmed(text)) == "auto") {
        return 0.0;
    }
    if (!value || !(*value > 0.0) || !isVoltage) {
        failUsage("--declared: " + inQuotes(text) + " is neither auto nor a voltage such as 230 or 20kV");
    }
    return *value * known.factor;
}

std::optional<double> parseCycles(std::string_view text) {
    const std::size_t end = std::min(text.find_last_of("0123456789.") + 1, text.size());
    const std::string_view unit = trimmed(text.substr(end));
    if (unit != "cycles" && unit != "cycle") {
        return std::nullopt;
    }
    const auto value = parseNumber(text.substr(0, end));
    if (!value || !(*value > 0.0)) {
        failUsage("--duration: " + inQuotes(text) + " is not a number of cycles");
    }
    return value;
}

double parseTime(const std::string& option, const std::string& text) {
    const std::size_t end = std::min(text.find_last_of("0123456789.") + 1, text.size());
    const std::string_view unit = trimmed(std::string_view(text).substr(end));
    const auto value = parseFinite(std::string_view(text).substr(0, end));
    const Unit known = unitOf(unit);
    if (!value || !(*value >= 0.0 && std::isfinite(*value * known.factor)) ||
        !(unit.empty() || known.quantity == Quantity::time)) {
        failUsage(option + ": " + inQuotes(text) + " is not a time such as 0.2s or 200ms");
    }
    return *value * known.factor;
}

double parseLength(const std::string& option, const std::string& text) {
    const double seconds = parseTime(option, text);
    if (seconds == 0.0) {
        failUsage(option + ": " + inQuotes(text) + " is no length: give a longer one, or leave " + option + " out");
    }
    return seconds;
}

}  // namespace rt305
