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
    int decimals = 0;
    double start;
    double step;
    std::vector<Curve> curves{};
};

/// Plots one above the other, with one x axis, that zoom together.
struct PlotGroup {
    std::string name;  // the id of its element in the page
    std::string axis;  // "Time, s"
    int decimals;
    std::size_t mostPoints;  // of a curve, an even number
    double shown;            // length of the axis that is shown first; 0: all
    std::vector<PlotPanel> panels{};
};

/// The indexes to keep of `count` values when at most `most` (even) are wanted: the first and the last of each of most
/// / 2 equal intervals. All of them if there are no more than `most`.
std::vector<std::size_t> thinnedPlaces(std::size_t count, std::size_t most);

/// The values to show at these indexes: the smallest and the largest value of each interval, in the order in which they
/// occur, so that no peak is lost. NaN for an interval that contains NaN.
std::vector<double> thinned(const std::vector<double>& values, const std::vector<std::size_t>& places);

/// The plots as JSON for the script of the page. Leaves out groups without panels, and escapes "<", which could end the
/// data block.
std::string plotData(const std::vector<PlotGroup>& groups);

}  // namespace rt305

#endif
