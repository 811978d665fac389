#include "page/plots.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "base/base64.h"

namespace rt305 {

namespace {

using json = nlohmann::ordered_json;

constexpr std::int64_t missing = std::numeric_limits<std::int64_t>::min();

void append(std::uint64_t number, std::vector<std::uint8_t>& bytes) {
    for (; number > 127; number >>= 7U) {
        bytes.push_back(static_cast<std::uint8_t>(number | 128U));
    }
    bytes.push_back(static_cast<std::uint8_t>(number));
}

/// The differences of whole numbers, or with order 2 the differences of these, as bytes.
std::vector<std::uint8_t> differences(const std::vector<std::int64_t>& numbers, int order) {
    std::vector<std::uint8_t> bytes;
    std::int64_t previous = 0;
    std::int64_t slope = 0;
    for (const std::int64_t number : numbers) {
        if (number == missing) {
            append(0, bytes);
            continue;
        }
        const std::int64_t difference = number - previous - (order == 2 ? slope : 0);
        append(static_cast<std::uint64_t>(difference >= 0 ? 2 * difference + 1 : -2 * difference), bytes);
        slope = number - previous;
        previous = number;
    }
    return bytes;
}

json curveData(const PlotPanel& panel, const Curve& curve) {
    const auto write = [&](std::span<const double> values) {
        return packed(values, 1.0 / panel.factor, curve.decimals);
    };
    std::vector<double> stretch(
        curve.values.begin() + static_cast<std::ptrdiff_t>(panel.stretch.first),
        curve.values.begin() + static_cast<std::ptrdiff_t>(panel.stretch.first + panel.stretch.count));
    for (double& value : stretch) {
        value = value < panel.lowest ? panel.lowest : value;
    }
    json data{{"name", curve.name},
              {"phase", std::string(1, static_cast<char>('a' + curve.phase))},
              {"decimals", curve.decimals},
              {"values", write(stretch)}};
    if (panel.bands > 0) {
        auto [low, high] = bandsOf(curve.values, panel.bands);
        for (auto* const limits : {&low, &high}) {
            for (double& value : *limits) {
                value = value < panel.lowest ? panel.lowest : value;
            }
        }
        data["low"] = write(low);
        data["high"] = write(high);
    }
    return data;
}

json panelData(const PlotPanel& panel) {
    json curves = json::array();
    for (const Curve& curve : panel.curves) {
        curves.push_back(curveData(panel, curve));
    }
    json levels = json::array();
    for (const PlotLevel& level : panel.levels) {
        levels.push_back({{"label", level.label}, {"value", level.value / panel.factor}, {"wanted", level.isWanted}});
    }
    return {{"quantity", panel.quantity},
            {"unit", panel.unit},
            {"start", panel.start},
            {"step", panel.step},
            {"count", panel.curves.at(0).values.size()},
            {"first", panel.stretch.first},
            {"bands", panel.bands},
            {"levels", levels},
            {"curves", curves}};
}

json groupData(const PlotGroup& group) {
    json panels = json::array();
    for (const PlotPanel& panel : group.panels) {
        panels.push_back(panelData(panel));
    }
    json marks = json::array();
    for (const PlotMark& mark : group.marks) {
        marks.push_back({{"from", mark.from}, {"to", mark.to}, {"label", mark.label}});
    }
    return {{"name", group.name},
            {"quantity", group.quantity},
            {"unit", group.unit},
            {"item", group.item},
            {"shown", {group.shownFrom, group.shownTo}},
            {"overview", group.hasOverview},
            {"clock", group.clock ? std::to_string(*group.clock) : ""},
            {"marks", marks},
            {"panels", panels}};
}

}  // namespace

std::size_t bandStart(std::size_t i, std::size_t bands, std::size_t count) {
    return i * count / bands;
}

Bands bandsOf(std::span<const double> values, std::size_t bands) {
    Bands result;
    for (std::size_t i = 0; i < bands; ++i) {
        double low = std::numeric_limits<double>::quiet_NaN();
        double high = low;
        const std::size_t end = bandStart(i + 1, bands, values.size());
        for (std::size_t k = bandStart(i, bands, values.size()); k < end; ++k) {
            low = std::fmin(low, values[k]);
            high = std::fmax(high, values[k]);
        }
        result.low.push_back(low);
        result.high.push_back(high);
    }
    return result;
}

std::string packed(std::span<const double> values, double factor, int decimals) {
    const double scale = factor * std::pow(10.0, decimals);
    constexpr double most = 1e15;  // below which a double holds every whole number
    std::vector<std::int64_t> numbers;
    for (const double value : values) {
        const double scaled = std::round(value * scale);
        numbers.push_back(std::fabs(scaled) < most ? static_cast<std::int64_t>(scaled) : missing);
    }
    const auto once = differences(numbers, 1);
    const auto twice = differences(numbers, 2);
    return twice.size() < once.size() ? "2" + base64Of(twice) : "1" + base64Of(once);
}

std::string plotData(const std::vector<PlotGroup>& groups) {
    json data = json::array();
    for (const PlotGroup& group : groups) {
        if (!group.panels.empty()) {
            data.push_back(groupData(group));
        }
    }
    std::string text = data.dump(-1, ' ', false, json::error_handler_t::replace);
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos;) {
        text.replace(at, 1, "\\u003c");
    }
    return text;
}

}  // namespace rt305
