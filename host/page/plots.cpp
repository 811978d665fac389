#include "page/plots.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <numeric>

namespace rt305 {

namespace {

using json = nlohmann::ordered_json;

/// Numbers rounded to that many decimals; NaN and infinities become null.
json rounded(const std::vector<double>& values, int decimals) {
    const double scale = std::pow(10.0, decimals);
    json numbers = json::array();
    for (const double value : values) {
        const double scaled = std::round(value * scale);
        // whole numbers without ".0"
        numbers.push_back(std::fabs(scaled) < 1e15 && std::fmod(scaled, scale) == 0.0
                              ? json(static_cast<std::int64_t>(scaled / scale))
                              : json(scaled / scale));
    }
    return numbers;
}

json panelData(const PlotPanel& panel, std::size_t mostPoints) {
    const auto places = thinnedPlaces(panel.curves.at(0).values.size(), mostPoints);
    json curves = json::array();
    for (const Curve& curve : panel.curves) {
        curves.push_back({{"name", curve.name},
                          {"phase", std::string(1, static_cast<char>('a' + curve.phase))},
                          {"values", rounded(thinned(curve.values, places), panel.decimals)}});
    }
    return {{"axis", panel.axis},   {"decimals", panel.decimals},
            {"start", panel.start}, {"step", panel.step},
            {"index", places},      {"series", curves}};
}

}  // namespace

std::vector<std::size_t> thinnedPlaces(std::size_t count, std::size_t most) {
    if (count <= most) {
        std::vector<std::size_t> all(count);
        std::iota(all.begin(), all.end(), std::size_t{0});
        return all;
    }
    std::vector<std::size_t> places;
    const std::size_t intervals = most / 2;
    for (std::size_t i = 0; i < intervals; ++i) {
        places.push_back(i * count / intervals);
        places.push_back((i + 1) * count / intervals - 1);
    }
    return places;
}

std::vector<double> thinned(const std::vector<double>& values, const std::vector<std::size_t>& places) {
    if (places.size() == values.size()) {
        return values;
    }
    std::vector<double> kept;
    for (std::size_t i = 0; i + 1 < places.size(); i += 2) {
        const auto begin = values.begin() + static_cast<std::ptrdiff_t>(places[i]);
        const auto end = values.begin() + static_cast<std::ptrdiff_t>(places[i + 1] + 1);
        if (std::any_of(begin, end, [](double x) { return std::isnan(x); })) {
            kept.insert(kept.end(), 2, std::numeric_limits<double>::quiet_NaN());
            continue;
        }
        const auto [smallest, largest] = std::minmax_element(begin, end);
        kept.push_back(*std::min(smallest, largest));
        kept.push_back(*std::max(smallest, largest));
    }
    return kept;
}

std::string plotData(const std::vector<PlotGroup>& groups) {
    json data = json::array();
    for (const PlotGroup& group : groups) {
        json panels = json::array();
        for (const PlotPanel& panel : group.panels) {
            panels.push_back(panelData(panel, group.mostPoints));
        }
        if (!panels.empty()) {
            data.push_back({{"name", group.name},
                            {"axis", group.axis},
                            {"decimals", group.decimals},
                            {"shown", group.shown},
                            {"panels", panels}});
        }
    }
    std::string text = data.dump(-1, ' ', false, json::error_handler_t::replace);
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos;) {
        text.replace(at, 1, "\\u003c");
    }
    return text;
}

}  // namespace rt305
