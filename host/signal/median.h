#ifndef RT305_HOST_SIGNAL_MEDIAN_H
#define RT305_HOST_SIGNAL_MEDIAN_H

#include <algorithm>
#include <vector>

namespace rt305 {

/// The middle of the values in order, of an even number the upper of the two; 0 without values, which must not be NaN.
inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

}  // namespace rt305

#endif
