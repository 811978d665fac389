#ifndef RT305_HOST_PAGE_DIAGRAMS_H
#define RT305_HOST_PAGE_DIAGRAMS_H

#include <map>
#include <string>
#include <vector>

#include "measuring/fundamentals.h"
#include "quality/results.h"

namespace rt305 {

/// Drawings for the page as SVG, in the colours of its style sheet.

/// The fundamentals of the channels with a signal as arrows. The first of them points to the right, and angles count
/// counter-clockwise. The largest voltage reaches the outer circle, the largest current the inner one.
std::string phasorDiagram(const Fundamentals& fundamentals);

/// The harmonics of one kind of channels.
struct HarmonicChart {
    struct Channel {
        std::string name;
        std::size_t phase;
        std::vector<double> percents;  // of the fundamental, which is the first
    };
    std::vector<Channel> channels;
    std::size_t orders;                      // the highest one, 2 or more
    std::map<std::size_t, double> limits{};  // of orders, in percent

    /// "Ua 3.02 %, Ub 2.98 %, limit 6 %"; in the order of the channels.
    std::string textOf(std::size_t order) const;
};

/// The harmonics from the second on as bars, channels side by side at each order, with marks at the limits. On a linear
/// axis, elements of class "linear", and a logarithmic one from 0.01 % on, "log". No axis ends below 1 %.
std::string harmonicBars(const HarmonicChart& chart);

/// Duration, on a logarithmic axis from 10 ms to a minute, and residual or largest voltage of each dip, swell and
/// interruption, with the thresholds as lines.
std::string eventDiagram(const QualityResults& results);

}  // namespace rt305

#endif
