#ifndef RT305_4_BENCH_MEDIAN_H
#define RT305_4_BENCH_MEDIAN_H

#include <algorithm>
#include <limits>
#include <vector>

/// The upper one of two middle values; NaN of no values.
inline double median(std::vector<double> values) {
    if (values.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

#endif
