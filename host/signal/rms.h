#ifndef RT305_HOST_SIGNAL_RMS_H
#define RT305_HOST_SIGNAL_RMS_H

#include <cmath>
#include <span>

#include "base/sum.h"

namespace rt305 {

/// The RMS of valueOf(0) ... valueOf(count - 1) without their mean. NaN for none, and where a value is NaN.
template <class Value>
double rmsWithoutMean(std::size_t count, Value valueOf) {
    const auto total = static_cast<double>(count);
    const double mean = sumOf(count, valueOf) / total;
    const auto square = [&](std::size_t k) { return (valueOf(k) - mean) * (valueOf(k) - mean); };
    return std::sqrt(sumOf(count, square) / total);
}

inline double rmsWithoutMean(std::span<const double> samples) {
    return rmsWithoutMean(samples.size(), [samples](std::size_t k) { return samples[k]; });
}

}  // namespace rt305

#endif
