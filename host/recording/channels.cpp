#include "recording/channels.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "base/text.h"

namespace rt305 {

namespace {

/// Parses "Ua=x" into channel and text: (0, "x").
std::optional<std::pair<std::size_t, std::string_view>> parseAssignment(std::string_view item) {
    const std::size_t equals = item.find('=');
    if (equals == std::string_view::npos) {
        return std::nullopt;
    }
    const auto channel = findChannel(trimmed(item.substr(0, equals)));
    if (!channel) {
        return std::nullopt;
    }
    return std::pair{*channel, trimmed(item.substr(equals + 1))};
}

void requireFirst(bool isGiven, std::string_view option, std::size_t channel) {
    if (isGiven) {
        failUsage(std::string(option) + ": " + std::string(channelNames[channel]) + " is given twice");
    }
}

}  // namespace

std::optional<std::size_t> findChannel(std::string_view name) {
    const auto* const found = std::find_if(channelNames.begin(), channelNames.end(),
                                           [&](std::string_view known) { return lowerCase(known) == lowerCase(name); });
    if (found == channelNames.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - channelNames.begin());
}

PerChannel<double> parsePerChannel(std::string_view option, std::string_view text, double otherwise) {
    PerChannel<double> values;
    values.fill(otherwise);
    const auto items = split(text, ',');
    const bool named = text.find('=') != std::string_view::npos;
    PerChannel<bool> isGiven{};
    bool valid = named || items.size() == channelTotal;
    for (std::size_t i = 0; valid && i < items.size(); ++i) {
        const auto target = named ? parseAssignment(items[i]) : std::pair{i, items[i]};
        const auto value = target ? parseNumber(target->second) : std::nullopt;
        valid = value && std::isfinite(*value);
        if (valid) {
            requireFirst(isGiven[target->first], option, target->first);
            isGiven[target->first] = true;
            values[target->first] = *value;
        }
    }
    if (!valid) {
        failUsage(std::string(option) + ": " + inQuotes(text) +
                  " is neither six numbers (Ua,Ub,Uc,Ia,Ib,Ic) nor a list such as Ua=1.5,Ib=20");
    }
    return values;
}

PerChannel<std::string> parseColumnMap(std::string_view option, std::string_view text) {
    PerChannel<std::string> columns;
    if (text.empty()) {
        return columns;
    }
    for (const std::string_view item : split(text, ',')) {
        const auto target = parseAssignment(item);
        if (!target || target->second.empty()) {
            failUsage(std::string(option) + ": " + inQuotes(item) + " is not of the form Ua=COLUMN");
        }
        requireFirst(!columns[target->first].empty(), option, target->first);
        columns[target->first] = target->second;
    }
    return columns;
}

}  // namespace rt305
