#include "page/diagrams.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "base/text.h"
#include "page/html.h"

namespace rt305 {

namespace {

struct Point {
    double x;
    double y;
};

/// A coordinate or length; one unit is a pixel at natural size.
std::string at(double value) {
    return formatFixed(value, 1);
}

std::string at(Point point) {
    return at(point.x) + "," + at(point.y);
}

/// name="value" for each.
std::string attributes(const std::vector<std::pair<std::string, std::string>>& pairs) {
    std::string text;
    for (const auto& [name, value] : pairs) {
        text.append(text.empty() ? "" : " ").append(name).append("=\"").append(value).append("\"");
    }
    return text;
}

std::string line(const std::string& classes, Point from, Point to) {
    return element(
        "line",
        attributes({{"class", classes}, {"x1", at(from.x)}, {"y1", at(from.y)}, {"x2", at(to.x)}, {"y2", at(to.y)}}),
        "");
}

std::string label(const char* classes, Point place, const char* anchor, const std::string& text) {
    return element("text",
                   attributes({{"class", classes}, {"x", at(place.x)}, {"y", at(place.y)}, {"text-anchor", anchor}}),
                   escaped(text));
}

std::string drawing(const std::string& classes, double width, double height, const std::string& title,
                    const std::string& content) {
    return element("svg",
                   attributes({{"class", classes},
                               {"viewBox", "0 0 " + at(width) + " " + at(height)},
                               {"role", "img"},
                               {"aria-label", escaped(title)}}),
                   content);
}

std::string phaseClass(std::size_t phase) {
    return std::string("phase-") + static_cast<char>('a' + phase % phaseTotal);
}

constexpr Point centre{180.0, 180.0};
constexpr double voltageRadius = 140.0;
constexpr double currentRadius = 90.0;

/// A direction in the drawing, where y grows downward.
Point towards(Phasor direction, double radius, double turnedBy = 0.0) {
    const Phasor turned = std::polar(radius, std::arg(direction) + turnedBy);
    return {centre.x + turned.real(), centre.y - turned.imag()};
}

std::string arrow(std::size_t channel, Phasor phasor, double length) {
    constexpr double headLength = 10.0;
    if (!(length > headLength)) {
        return {};  // NaN, or too short to draw
    }
    const std::string phase = phaseClass(channel);
    const double spread = 4.0 / (length - headLength);
    const std::string corners = at(towards(phasor, length)) + " " + at(towards(phasor, length - headLength, spread)) +
                                " " + at(towards(phasor, length - headLength, -spread));
    const Point name = towards(phasor, length + 14.0);
    return line("arrow " + phase + (isCurrent(channel) ? " current" : ""), centre,
                towards(phasor, length - headLength)) +
           element("polygon", attributes({{"class", "head " + phase}, {"points", corners}}), "") +
           label("name", {name.x, name.y + 4.0}, "middle", std::string(channelNames[channel]));
}

/// The smallest number of the form 1, 2 or 5 times a power of ten that is not below a positive value.
double roundedUp(double value) {
    const double decade = std::pow(10.0, std::floor(std::log10(value)));
    constexpr std::array<double, 3> steps{1.0, 2.0, 5.0};
    const auto* const step = std::find_if(steps.begin(), steps.end(), [&](double s) { return s * decade >= value; });
    return (step == steps.end() ? 10.0 : *step) * decade;
}

constexpr double leastShownPercent = 0.01;  // where a logarithmic axis begins

/// The area of the bars, with a linear or a logarithmic axis.
struct BarField {
    bool isLogarithmic = false;
    double largest = 1.0;  // percent at the top
    std::size_t orders = 2;

    static constexpr double left = 56.0, right = 712.0, top = 12.0, bottom = 184.0;

    double heightOf(double percent) const {
        const double share = isLogarithmic ? std::log10(std::fmax(percent, leastShownPercent) / leastShownPercent) /
                                                 std::log10(largest / leastShownPercent)
                                           : percent / largest;
        return (bottom - top) * share;
    }
    double step() const { return (right - left) / static_cast<double>(orders - 1); }
    double leftOf(std::size_t order) const { return left + static_cast<double>(order - 2) * step(); }
    const char* name() const { return isLogarithmic ? "log" : "linear"; }

    /// The percentages at which the axis has lines.
    std::vector<double> ticks() const {
        std::vector<double> percents;
        if (isLogarithmic) {
            const auto decades = std::lround(std::log10(largest / leastShownPercent));
            for (long i = 0; i <= decades; ++i) {
                percents.push_back(leastShownPercent * std::pow(10.0, i));
            }
        } else {
            for (int i = 0; i <= 4; ++i) {
                percents.push_back(largest * i / 4.0);
            }
        }
        return percents;
    }
};

std::string barGrid(const BarField& field) {
    std::string grid;
    for (const double percent : field.ticks()) {
        const double y = field.bottom - field.heightOf(percent);
        grid += line("grid", {field.left, y}, {field.right, y}) +
                label("tick", {field.left - 6.0, y + 4.0}, "end", formatNumber(percent) + " %");
    }
    return grid;
}

std::string orderAxis(const BarField& field) {
    std::string axis;
    for (std::size_t order = 2; order <= field.orders; ++order) {
        if (order % 2 == 1 || field.orders < 25) {
            axis += label("tick", {field.leftOf(order) + 0.5 * field.step(), field.bottom + 16.0}, "middle",
                          std::to_string(order));
        }
    }
    return axis + label("tick", {(field.left + field.right) / 2.0, field.bottom + 34.0}, "middle", "Harmonic order");
}

/// The bars of one channel, and the marks of the limits, as one path each.
std::string barsOf(const BarField& field, const HarmonicChart& chart) {
    const double width = 0.8 * field.step() / static_cast<double>(phaseTotal);
    std::string content;
    for (const HarmonicChart::Channel& channel : chart.channels) {
        std::string path;
        for (std::size_t order = 2; order <= std::min(chart.orders, channel.percents.size()); ++order) {
            const double height = field.heightOf(channel.percents[order - 1]);
            if (height >= 0.05) {  // not NaN, and high enough to be visible
                const double x = field.leftOf(order) + 0.1 * field.step() + static_cast<double>(channel.phase) * width;
                path +=
                    "M" + at(x) + " " + at(field.bottom) + "v-" + at(height) + "h" + at(width) + "v" + at(height) + "z";
            }
        }
        content += element("path", attributes({{"class", "bar " + phaseClass(channel.phase)}, {"d", path}}), "");
    }
    std::string marks;
    for (const auto& [order, percent] : chart.limits) {
        if (order <= chart.orders) {
            marks += "M" + at(field.leftOf(order)) + " " + at(field.bottom - field.heightOf(percent)) + "h" +
                     at(field.step());
        }
    }
    return content + (marks.empty() ? "" : element("path", attributes({{"class", "limit"}, {"d", marks}}), ""));
}

/// Areas that show the figures of their order on hover.
std::string orderZones(const BarField& field, const HarmonicChart& chart) {
    std::string zones;
    for (std::size_t order = 2; order <= chart.orders; ++order) {
        zones += element("g", R"(class="order")",
                         element("title", "", "Order " + std::to_string(order) + ": " + escaped(chart.textOf(order))) +
                             element("rect",
                                     attributes({{"x", at(field.leftOf(order))},
                                                 {"y", at(field.top)},
                                                 {"width", at(field.step())},
                                                 {"height", at(field.bottom - field.top)}}),
                                     ""));
    }
    return zones;
}

}  // namespace

std::string phasorDiagram(const Fundamentals& fundamentals) {
    std::string content;
    for (const double radius : {voltageRadius, currentRadius}) {
        content +=
            element("circle",
                    attributes({{"class", "grid"}, {"cx", at(centre.x)}, {"cy", at(centre.y)}, {"r", at(radius)}}), "");
    }
    content += line("grid", {centre.x - voltageRadius, centre.y}, {centre.x + voltageRadius, centre.y}) +
               line("grid", {centre.x, centre.y - voltageRadius}, {centre.x, centre.y + voltageRadius});
    double reference = 0.0;
    for (std::size_t channel = channelTotal; channel-- > 0;) {
        reference = fundamentals.hasSignal[channel] ? std::arg(fundamentals.of(channel)) : reference;
    }
    for (const auto& [radius, first] : {std::pair{voltageRadius, std::size_t{0}}, {currentRadius, phaseTotal}}) {
        double largest = 0.0;
        for (std::size_t channel = first; channel < first + phaseTotal; ++channel) {
            largest = std::fmax(largest, fundamentals.hasSignal[channel] ? std::abs(fundamentals.of(channel)) : 0.0);
        }
        for (std::size_t channel = first; channel < first + phaseTotal; ++channel) {
            if (fundamentals.hasSignal[channel]) {
                const Phasor turned = fundamentals.of(channel) * std::polar(1.0, -reference);
                content += arrow(channel, turned, radius * std::abs(turned) / largest);
            }
        }
    }
    return drawing("phasors", 2.0 * centre.x, 2.0 * centre.y, "Phasors of the fundamentals", content);
}

std::string HarmonicChart::textOf(std::size_t order) const {
    std::string text;
    for (const Channel& channel : channels) {
        const double percent = order <= channel.percents.size() ? channel.percents[order - 1] : NAN;
        text += (text.empty() ? "" : ", ") + channel.name + " " + formatFixed(percent, 2) + " %";
    }
    const auto limit = limits.find(order);
    return limit == limits.end() ? text : text + ", limit " + formatNumber(limit->second) + " %";
}

std::string harmonicBars(const HarmonicChart& chart) {
    double largest = 1.0;
    for (const HarmonicChart::Channel& channel : chart.channels) {
        for (std::size_t order = 2; order <= std::min(chart.orders, channel.percents.size()); ++order) {
            largest = std::fmax(largest, channel.percents[order - 1]);
        }
    }
    for (const auto& [order, percent] : chart.limits) {
        largest = std::fmax(largest, percent);
    }
    const BarField linear{.largest = roundedUp(largest), .orders = chart.orders};
    const BarField logarithmic{
        .isLogarithmic = true, .largest = std::pow(10.0, std::ceil(std::log10(largest))), .orders = chart.orders};
    std::string content = orderZones(linear, chart) + orderAxis(linear);
    for (const BarField& field : {linear, logarithmic}) {
        content += element("g", attributes({{"class", field.name()}}), barGrid(field) + barsOf(field, chart));
    }
    return drawing("bars", 720.0, 224.0, "Harmonics in percent of the fundamental", content);
}

std::string eventDiagram(const QualityResults& results) {
    constexpr double left = 56.0, right = 416.0, top = 12.0, bottom = 212.0;
    constexpr double shortest = 0.01, longest = 60.0;  // s
    double highest = 125.0;                            // %
    for (const Event& event : results.events) {
        highest = event.isVoltageEvent() ? std::fmax(highest, event.percent) : highest;
    }
    const auto x = [=](double seconds) {
        const double share = std::log(std::clamp(seconds, shortest, longest) / shortest) / std::log(longest / shortest);
        return left + share * (right - left);
    };
    const auto y = [=](double percent) { return bottom - percent / highest * (bottom - top); };
    std::string content;
    for (const auto& [seconds, text] :
         {std::pair{0.01, "10 ms"}, {0.1, "100 ms"}, {1.0, "1 s"}, {10.0, "10 s"}, {60.0, "60 s"}}) {
        content += line("grid", {x(seconds), top}, {x(seconds), bottom}) +
                   label("tick", {x(seconds), bottom + 16.0}, "middle", text);
    }
    const QualitySettings& settings = results.settings;
    for (const double percent : {0.0, settings.interruptionPercent, 50.0, settings.dipPercent, settings.swellPercent}) {
        content += line("grid", {left, y(percent)}, {right, y(percent)}) +
                   label("tick", {left - 6.0, y(percent) + 4.0}, "end", formatNumber(percent) + " %");
    }
    for (const Event& event : results.events) {
        if (event.isVoltageEvent()) {
            content += element("circle",
                               attributes({{"class", "event"},
                                           {"cx", at(x(event.durationSeconds))},
                                           {"cy", at(y(event.percent))},
                                           {"r", "5"}}),
                               "");
        }
    }
    return drawing("events", 432.0, 236.0, "Duration and voltage of the events", content);
}

}  // namespace rt305
