#ifndef RT305_4_TOOLKIT_PEAKS_H
#define RT305_4_TOOLKIT_PEAKS_H

#include <vector>

#include "toolkit/reductions.h"

namespace coder {

struct Peak {
    double value;
    int position;  // 1-based
};

// Peaks of a row: its local maxima, and every +Inf. A local maximum rises before and falls after; a plateau counts
// once, at its first element; the first and last element never count, and NaN and +Inf end a rise and a fall.

/// The count highest peaks, highest first, equal ones by position; none for count < 1.
std::vector<Peak> highestPeaks(samples y, int count);

/// Of the peaks above the criterion and those at +Inf the count highest, in ascending position order; none for count <
/// 1. A NaN criterion admits +Inf only.
std::vector<Peak> peaksByCriterion(samples y, double criterion, int count);

}  // namespace coder

#endif
