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
        gains.emplace_back(trimmed(item.substr(0, equals)), *factor);
    }
    return gains;
}

double parseNominal(const std::string& text) {
    constexpr double highest = 10000.0;
    const std::string word = lowerCase(trimmed(text));
    const bool hasUnit = word.size() > 2 && word.compare(word.size() - 2, 2, "hz") == 0;
    const auto value = parseNumber(trimmed(std::string_view(word).substr(0, word.size() - (hasUnit ? 2 : 0))));
    if (word != "auto" && !(value && *value >= 1.0 && *value <= highest)) {
        failUsage("--nominal: " + inQuotes(text) + " is neither auto nor a frequency from 1 to " +
                  formatNumber(highest) + " Hz");
    }
    return value.value_or(0.0);
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

}  // namespace rt305
