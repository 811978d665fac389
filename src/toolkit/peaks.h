#ifndef RT305_4_TOOLKIT_PEAKS_H
#define RT305_4_TOOLKIT_PEAKS_H

#include <vector>

#include "toolkit/reductions.h"

namespace coder {

struct Peak {
    double value;
    int position;  // 1-based
};

/// Peaks of a row in ascending position order: local maxima above minHeight, and every +Inf. A local maximum rises
/// before and falls after; a plateau counts once, at its first element; the first and last element never count, and NaN
/// and +Inf end a run. A NaN minHeight admits +Inf only.
std::vector<Peak> peaksAbove(samples y, double minHeight);

/// The count highest peaks, highest first, equal ones by position; none for count < 1.
std::vector<Peak> highestPeaks(samples y, int count);

/// Of the peaks above the criterion the count highest, in ascending position order; none for count < 1.
std::vector<Peak> peaksByCriterion(samples y, double criterion, int count);

}  // namespace coder

#endif
