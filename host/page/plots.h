#ifndef RT305_HOST_PAGE_PLOTS_H
#define RT305_HOST_PAGE_PLOTS_H

#include <string>
#include <vector>

namespace rt305 {

struct Curve {
    std::string name;
    std::size_t phase;  // 0: a, 1: b, 2: c
    std::vector<double> values;
};

/// Curves over one axis: value k of each is at start + k * step.
struct PlotPanel {
    std::string axis;  // "Voltage, V"
    int decimals;
    double start;
    double step;
    std::vector<Curve> curves;
};

/// Plots one above the other that share their x axis and are zoomed together.
struct PlotGroup {
    std::string name;  // the id of its place in the page
    std::string axis;  // "Time, s"
    int decimals;
    std::size_t mostPoints;  // of a curve, an even number
    double shown;            // how much of the axis is shown at first; 0: all
    std::vector<PlotPanel> panels;
};

/// The places to keep of evenly spaced values when at most `most` (even) may stay: the first and the last of each of
/// most / 2 equal stretches. All of them when they are no more than that.
std::vector<std::size_t> thinnedPlaces(std::size_t count, std::size_t most);

/// What is shown at these places: of each stretch the smallest and the largest value in the order in which they come,
/// so that no peak is lost. A stretch with NaN is NaN.
std::vector<double> thinned(const std::vector<double>& values, const std::vector<std::size_t>& places);

/// The plots as the page's script wants them: JSON without groups that have no panels and without "<",
/// which would end the block that holds it.
std::string plotData(const std::vector<PlotGroup>& groups);

}  // namespace rt305

#endif
