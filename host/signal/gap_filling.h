#ifndef RT305_HOST_SIGNAL_GAP_FILLING_H
#define RT305_HOST_SIGNAL_GAP_FILLING_H

#include <cstddef>
#include <vector>

namespace rt305 {

/// Fills gaps, runs of NaN, of up to `longest` samples; longer ones stay. A gap gets the linear predictions from its
/// two sides (linear_prediction.h), faded from one to the other, so sums of sines continue unchanged; at an end of x,
/// or beside a gap that stays, the one prediction; and a straight line where neither side has 16 samples. With many
/// gaps, the predictions use fewer samples, so that the time stays in proportion to the length. Returns the number of
/// samples filled.
std::size_t fillGaps(std::vector<double>& x, std::size_t longest);

/// Replaces all NaN by linear interpolation between the neighbours, or by the only neighbour.
std::vector<double> bridged(std::vector<double> x);

}  // namespace rt305

#endif
