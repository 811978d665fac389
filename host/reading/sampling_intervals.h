#ifndef RT305_HOST_READING_SAMPLING_INTERVALS_H
#define RT305_HOST_READING_SAMPLING_INTERVALS_H

#include <optional>
#include <vector>

namespace rt305 {

/// The time steps between the rows of a recording.
struct SamplingIntervals {
    double usualStep = 0.0;         // the median; 0 when no step is known
    std::vector<std::size_t> gaps;  // rows before which time jumps; the first row is 0
    bool even = true;               // false: the steps are too irregular to find gaps, and gaps is empty
};

/// Finds jumps in time from the steps between neighbouring rows (steps[k] is from row k to k + 1; NaN: unknown).
///
/// A step is a jump when it differs from the median by more than half the median and no neighbouring step compensates
/// for that, as happens when a single stamp is late. With more than 1 jump and more than 5 % of the steps, or with a
/// median of zero, the stamps have jitter or are too coarse, and no gap is reported.
SamplingIntervals samplingIntervalsOf(const std::vector<double>& steps);

}  // namespace rt305

#endif
