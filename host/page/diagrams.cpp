#include "page/diagrams.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>

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

/// The smallest number of the form 1, 2 or 5 times a power of ten that is not below the value; 1 if the value is not
/// positive.
double roundedUp(double value) {
    if (!(value > 0.0)) {
        return 1.0;
    }
    const double decade = std::pow(10.0, std::floor(std::log10(value)));
    constexpr std::array<double, 3> steps{1.0, 2.0, 5.0};
    const auto* const step = std::find_if(steps.begin(), steps.end(), [&](double s) { return s * decade >= value; });
    return (step == steps.end() ? 10.0 : *step) * decade;
}

/// The area of the bars.
struct BarField {
    double left = 48.0;
    double right = 712.0;
    double top = 12.0;
    double bottom = 184.0;
    double largest = 1.0;  // percent at the top

    double heightOf(double percent) const { return (bottom - top) * percent / largest; }
};

std::string barGrid(const BarField& field, std::size_t orders) {
    std::string grid;
    constexpr int parts = 4;
    for (int i = 0; i <= parts; ++i) {
        const double percent = field.largest * i / parts;
        const double y = field.bottom - field.heightOf(percent);
        grid += line("grid", {field.left, y}, {field.right, y}) +
                label("tick", {field.left - 6.0, y + 4.0}, "end", formatNumber(percent) + " %");
    }
    const double step = (field.right - field.left) / static_cast<double>(orders);
    for (std::size_t i = 0; i < orders; ++i) {
        if (const std::size_t order = i + 2; order % 2 == 1 || orders < 15) {
            grid += label("tick", {field.left + (static_cast<double>(i) + 0.5) * step, field.bottom + 16.0}, "middle",
                          std::to_string(order));
        }
    }
    return grid + label("tick", {(field.left + field.right) / 2.0, field.bottom + 34.0}, "middle", "Harmonic order");
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
    const Phasors& voltages = fundamentals.voltages;
    const Phasors& currents = fundamentals.currents;
    const double reference = std::arg(std::abs(voltages[0]) > 0.0 ? voltages[0] : currents[0]);
    for (const auto& [set, radius, first] :
         {std::tuple{&voltages, voltageRadius, std::size_t{0}}, {&currents, currentRadius, phaseTotal}}) {
        const double largest = std::fmax(std::abs((*set)[0]), std::fmax(std::abs((*set)[1]), std::abs((*set)[2])));
        for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
            const Phasor turned = (*set)[phase] * std::polar(1.0, -reference);
            content += arrow(first + phase, turned, radius * std::abs(turned) / largest);
        }
    }
    return drawing("phasors", 2.0 * centre.x, 2.0 * centre.y, "Phasors of the fundamentals", content);
}

std::string harmonicBars(const std::vector<Harmonics>& channels) {
    std::vector<std::vector<double>> percents;
    BarField field;
    double largest = 0.0;
    std::size_t orders = 1;
    for (const Harmonics& channel : channels) {
        const auto all = percentsOf(channel);
        percents.emplace_back(all.begin() + (all.empty() ? 0 : 1), all.end());  // without the fundamental
        orders = std::max(orders, percents.back().size());
        for (const double percent : percents.back()) {
            largest = std::fmax(largest, percent);
        }
    }
    field.largest = roundedUp(largest);
    const double step = (field.right - field.left) / static_cast<double>(orders);
    const double width = 0.8 * step / static_cast<double>(phaseTotal);
    std::string content = barGrid(field, orders);
    for (std::size_t c = 0; c < percents.size(); ++c) {
        for (std::size_t i = 0; i < percents[c].size(); ++i) {
            const double height = field.heightOf(percents[c][i]);
            if (height >= 0.05) {  // not NaN, and high enough to be visible
                const double x = field.left + (static_cast<double>(i) + 0.1) * step + static_cast<double>(c) * width;
                content += element("rect",
                                   attributes({{"class", "bar " + phaseClass(c)},
                                               {"x", at(x)},
                                               {"y", at(field.bottom - height)},
                                               {"width", at(width)},
                                               {"height", at(height)}}),
                                   "");
            }
        }
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
