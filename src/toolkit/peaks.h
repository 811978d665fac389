#ifndef RT305_4_TOOLKIT_PEAKS_H
#define RT305_4_TOOLKIT_PEAKS_H

#include <vector>

#include "toolkit/array.h"

namespace coder {

struct Peak {
    double value;
    int position;  // 1-based
};

// The peaks of a row are its local maxima and every +Inf. The row rises before a local maximum and falls after it; a
// plateau is one peak, at its first element; the first and last element are not peaks unless they are +Inf. A NaN or
// +Inf neighbour counts neither as a rise nor as a fall.

/// The `count` highest peaks, highest first, equal ones by position; none for count < 1.
std::vector<Peak> highestPeaks(samples y, int count);

/// The `count` highest of the peaks that exceed the criterion or are +Inf, in the order of their positions; none for
/// count < 1. A NaN criterion admits +Inf only.
std::vector<Peak> peaksByCriterion(samples y, double criterion, int count);

}  // namespace coder

#endif
