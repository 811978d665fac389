#ifndef RT305_HOST_SIGNAL_LINEAR_PREDICTION_H
#define RT305_HOST_SIGNAL_LINEAR_PREDICTION_H

#include <cstddef>
#include <vector>

namespace rt305 {

/// Continues x by `count` samples with linear prediction: sums of sines continue unchanged, noise and decaying
/// components fall to the mean. Uses the last 1024 samples; the order is a third of their number, at most 96. Empty x
/// gives zeros; x must not contain NaN. J. P. Burg, Maximum Entropy Spectral Analysis, 37th meeting of the Society of
/// Exploration Geophysicists (1967).
std::vector<double> predicted(const std::vector<double>& x, std::size_t count);

}  // namespace rt305

#endif
