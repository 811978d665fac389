#ifndef RT305_HOST_SIGNAL_FUNDAMENTAL_H
#define RT305_HOST_SIGNAL_FUNDAMENTAL_H

#include <optional>
#include <vector>

namespace rt305 {

/// Estimates the fundamental frequency in Hz from the mean distance of upward zero crossings of the signal minus its
/// mean, interpolated linearly between samples. A crossing counts when the signal goes from below -h to above +h, where
/// h is a quarter of the largest magnitude, so that noise and harmonics near zero do not count twice. Gives nothing for
/// fewer than two crossings and for signals with NaN. Good enough to explain a result, not to be one.
std::optional<double> estimateFundamental(const std::vector<double>& samples, double rateHz);

}  // namespace rt305

#endif
