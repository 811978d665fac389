#ifndef RT305_HOST_PAGE_PLOTS_H
#define RT305_HOST_PAGE_PLOTS_H

#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace rt305 {

struct Curve {
    std::string name;
    std::size_t phase;  // 0: a, 1: b, 2: c
    std::span<const double> values;
    int decimals = 0;  // that the page shows, in the unit of the panel
};

/// A run of values, by their indexes.
struct Stretch {
    std::size_t first;
    std::size_t count;
};

/// A line to draw across.
struct PlotLevel {
    std::string label;
    double value;
    bool isWanted;  // the axis reaches it
};

/// Curves over one axis: value k of each is at start + k * step. The page gets every value of the stretch, and of all
/// values the smallest and the largest in each of `bands` intervals, so that no peak is lost.
struct PlotPanel {
    std::string quantity;  // "Voltage"
    std::string unit{};    // "kV"
    double factor = 1.0;   // of the unit
    double start;
    double step;
    Stretch stretch{};
    std::size_t bands = 0;                                     // 0: the stretch holds all values
    double lowest = -std::numeric_limits<double>::infinity();  // values below are drawn there
    std::vector<Curve> curves{};
    std::vector<PlotLevel> levels{};
};

/// A moment or, with a length, a part of the axis to mark.
struct PlotMark {
    double from;
    double to;
    std::string label;
};

/// Plots one above the other, with one x axis, that zoom together.
struct PlotGroup {
    std::string name;        // the id of its element in the page
    std::string quantity;    // "Time"
    std::string unit;        // "s"
    std::string item;        // what one value stands for: "sample"
    double shownFrom = 0.0;  // the part of the axis that is shown first
    double shownTo = 0.0;
    bool hasOverview = false;
    std::optional<std::int64_t> clock{};  // date and time at 0 s, in ns since 1970
    std::vector<PlotMark> marks{};
    std::vector<PlotPanel> panels{};
};

/// Where band i of `bands` begins: the index i * count / bands.
std::size_t bandStart(std::size_t i, std::size_t bands, std::size_t count);

/// The smallest and the largest value in each of `bands` intervals; values that are missing (NaN) do not count, and
/// an interval without others has NaN.
struct Bands {
    std::vector<double> low;
    std::vector<double> high;
};
Bands bandsOf(std::span<const double> values, std::size_t bands);

/// Values as text for the script: times 10^decimals and rounded to whole numbers, of which the differences, or the
/// differences of these, are written as bytes, in Base64. The first character says which: "1" or "2", the shorter one.
/// A byte holds seven bits, the lowest first; those of a number but its last one have the highest bit set. A
/// difference d >= 0 is written as 2 d + 1, another as -2 d, and a missing value as 0.
std::string packed(std::span<const double> values, double factor, int decimals);

/// The plots as JSON for the script of the page. Leaves out groups without panels, and escapes "<", which could end the
/// data block.
std::string plotData(const std::vector<PlotGroup>& groups);

}  // namespace rt305

#endif
