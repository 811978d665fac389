#ifndef RT305_HOST_SIGNAL_LINEAR_PREDICTION_H
#define RT305_HOST_SIGNAL_LINEAR_PREDICTION_H

#include <cstddef>
#include <vector>

namespace rt305 {

/// The `count` samples that follow x by linear prediction: sums of sines go on as they are, noise and what has died
/// away decay to the mean. The order is a third of the samples, at most 96; the last 1024 of them are looked at. Empty
/// x is followed by zeros; x must hold no NaN. J. P. Burg, Maximum Entropy Spectral Analysis, 37th meeting of the
/// Society of Exploration Geophysicists (1967).
std::vector<double> predicted(const std::vector<double>& x, std::size_t count);

}  // namespace rt305

#endif
