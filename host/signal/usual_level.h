#ifndef RT305_HOST_SIGNAL_USUAL_LEVEL_H
#define RT305_HOST_SIGNAL_USUAL_LEVEL_H

#include <span>
#include <vector>

namespace rt305 {

/// The RMS that signals usually have, mean of those of at least 80 % of the highest, so that a dead phase or one in a
/// dip does not count: the median over the cycles of the first steady part in the first 10 s whose RMS is at least half
/// of the highest cycle; without such a part that of the first such cycle. The signals are of one length and without
/// NaN; the fundamental is within 20 % of `nominalHz`. 0 without signals or cycles.
double usualLevelOf(std::vector<std::span<const double>> signals, double rateHz, double nominalHz);

}  // namespace rt305

#endif
