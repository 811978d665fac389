#ifndef RT305_HOST_SIGNAL_FUNDAMENTAL_H
#define RT305_HOST_SIGNAL_FUNDAMENTAL_H

#include <optional>
#include <vector>

namespace rt305 {

/// A rough fundamental frequency in Hz, good enough to explain a result, not to be one: the mean distance of upward
/// zero crossings of the mean-free signal, placed between samples by a straight line. A crossing counts when the signal
/// has been below -h and then rises above +h, h being a quarter of the largest magnitude, so that noise and harmonics
/// near zero do not count twice. Nothing for less than two crossings or a signal with NaN.
std::optional<double> estimateFundamental(const std::vector<double>& samples, double rateHz);

}  // namespace rt305

#endif
