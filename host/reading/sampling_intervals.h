#ifndef RT305_HOST_READING_SAMPLING_INTERVALS_H
#define RT305_HOST_READING_SAMPLING_INTERVALS_H

#include <optional>
#include <vector>

namespace rt305 {

/// How evenly the rows of a recording follow each other.
struct SamplingIntervals {
    double usualStep = 0.0;         // the median; 0 when there is none
    std::vector<std::size_t> gaps;  // rows, from 1 on, before which time jumps
    bool even = true;               // false: the stamps say nothing of gaps, and gaps is empty
};

/// Finds where time jumps, from the steps between neighbouring rows (steps[k] from row k to k + 1; NaN: unknown).
///
/// A step is a jump when it is off the median by more than half of it and neither neighbour makes up for that, as it
/// does when a single stamp came late. Where jumps are many (more than 1 and 5 % of the steps), or the median is zero,
/// the stamps are jittering or too coarse and no row is known to be missing.
SamplingIntervals samplingIntervalsOf(const std::vector<double>& steps);

}  // namespace rt305

#endif
