#ifndef RT305_HOST_WRITING_CONVERSION_H
#define RT305_HOST_WRITING_CONVERSION_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "recording/recording.h"

namespace rt305 {

/// What becomes of a recording before it is written.
struct Conversion {
    std::optional<std::size_t> segment{};                      // from 1; empty: the main one
    double startSeconds = 0.0;                                 // after the segment's first sample
    double durationSeconds = 0.0;                              // 0: to the segment's end
    std::optional<double> rateHz{};                            // to resample to
    std::vector<std::string> only{};                           // columns to keep, by name or number; empty: all
    std::vector<std::pair<std::string, std::string>> names{};  // old name or number, new name
    double nominalHz = 0.0;  // of the grid; 0: as the file says, else by the fundamental
};

/// One evenly sampled part of a recording: the columns with samples, in their own units, from time zero, with the date
/// of its first sample. Fails when the rate is unknown, on a segment, part or column that does not exist, without
/// columns, and when resampling gives more than 100 million samples.
Recording converted(const Recording& recording, const Conversion& conversion);

}  // namespace rt305

#endif
