#include "toolkit/peaks.h"

#include <algorithm>
#include <limits>

#include "toolkit/non_finite.h"
#include "toolkit/simd.h"

namespace coder {
namespace {

/// Whether y[i] is +Inf or a local maximum.
bool isPeak(samples y, std::size_t i) {
    assert(i < y.size());
    if (y[i] == rtInf) {
        return true;
    }
    if (i == 0 || !(y[i] > y[i - 1])) {
        return false;
    }
    std::size_t next = i + 1;
    while (next < y.size() && y[next] == y[i]) {
        ++next;
    }
    return next < y.size() && y[next] < y[i];
}

/// Keeps the `count` highest peaks, highest first.
void keepHighest(std::vector<Peak>& peaks, std::size_t count) {
    const auto kept = static_cast<std::ptrdiff_t>(std::min(peaks.size(), count));
    std::partial_sort(peaks.begin(), peaks.begin() + kept, peaks.end(), [](const Peak& a, const Peak& b) {
        return a.value > b.value || (a.value == b.value && a.position < b.position);
    });
    peaks.resize(static_cast<std::size_t>(kept));
}

ALWAYS_INLINE inline bool anyAbove(const double* y, std::size_t n, double floor) {
    std::size_t above = 0;
    for (std::size_t i = 0; i < n; ++i) {
        above += y[i] > floor ? 1U : 0U;
    }
    return above > 0;
}

/// The `count` highest peaks above minHeight, highest first.
std::vector<Peak> highestAbove(samples y, double minHeight, int count) {
    std::vector<Peak> peaks;
    if (count < 1) {
        return peaks;
    }
    const auto wanted = static_cast<std::size_t>(count);
    // +Inf is always admitted: the floor is at most the largest double.
    constexpr double largestDouble = std::numeric_limits<double>::max();
    double floor = minHeight < largestDouble ? minHeight : largestDouble;
    constexpr std::size_t blockSize = 64;
    for (std::size_t from = 0; from < y.size(); from += blockSize) {
        const std::size_t to = std::min(from + blockSize, y.size());
        if (!vectorized<anyAbove>(y.data() + from, to - from, floor)) {
            continue;
        }
        for (std::size_t i = from; i < to; ++i) {
            if (y[i] > floor && isPeak(y, i)) {
                peaks.push_back({y[i], static_cast<int>(i) + 1});
            }
        }
        if (peaks.size() >= 2 * wanted) {  // only peaks higher than the last of these can still be kept
            keepHighest(peaks, wanted);
            floor = peaks.back().value;
        }
    }
    keepHighest(peaks, wanted);
    return peaks;
}

}  // namespace

std::vector<Peak> highestPeaks(samples y, int count) {
    return highestAbove(y, rtMinusInf, count);
}

std::vector<Peak> peaksByCriterion(samples y, double criterion, int count) {
    std::vector<Peak> peaks = highestAbove(y, criterion, count);
    std::sort(peaks.begin(), peaks.end(), [](const Peak& a, const Peak& b) { return a.position < b.position; });
    return peaks;
}

}  // namespace coder
