#include "toolkit/peaks.h"

#include <algorithm>
#include <cmath>

#include "toolkit/non_finite.h"

namespace coder {
namespace {

bool breaksRuns(double value) {
    return std::isnan(value) || value == rtInf;
}

void keepHighest(std::vector<Peak>& peaks, int count) {
    const auto kept = std::min(peaks.size(), static_cast<std::size_t>(std::max(count, 0)));
    std::partial_sort(peaks.begin(), peaks.begin() + static_cast<std::ptrdiff_t>(kept), peaks.end(),
                      [](const Peak& a, const Peak& b) {
                          return a.value > b.value || (a.value == b.value && a.position < b.position);
                      });
    peaks.resize(kept);
}

}  // namespace

std::vector<Peak> peaksAbove(samples y, double minHeight) {
    std::vector<Peak> peaks;
    bool rising = false;
    std::size_t top = 0;  // first element of the plateau that a rise led to
    for (std::size_t i = 0; i < y.size(); ++i) {
        if (y[i] == rtInf) {
            peaks.push_back({y[i], static_cast<int>(i) + 1});
        }
        if (i == 0 || breaksRuns(y[i]) || breaksRuns(y[i - 1])) {
            rising = false;
        } else if (y[i] > y[i - 1]) {
            rising = true;
            top = i;
        } else if (y[i] < y[i - 1]) {
            if (rising && y[top] > minHeight) {
                peaks.push_back({y[top], static_cast<int>(top) + 1});
            }
            rising = false;
        }
    }
    return peaks;
}

std::vector<Peak> highestPeaks(samples y, int count) {
    std::vector<Peak> peaks = peaksAbove(y, rtMinusInf);
    keepHighest(peaks, count);
    return peaks;
}

std::vector<Peak> peaksByCriterion(samples y, double criterion, int count) {
    std::vector<Peak> peaks = peaksAbove(y, criterion);
    keepHighest(peaks, count);
    std::sort(peaks.begin(), peaks.end(), [](const Peak& a, const Peak& b) { return a.position < b.position; });
    return peaks;
}

}  // namespace coder
