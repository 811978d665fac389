#ifndef RT305_HOST_OUTPUT_RECORDING_FACTS_H
#define RT305_HOST_OUTPUT_RECORDING_FACTS_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "recording/recording.h"

namespace rt305 {

/// What a document says about its recording. Empty or 0: not known.
struct RecordingFacts {
    std::string file{};
    std::string checksum{};                // SHA-256 of the file
    std::vector<SourceFile> otherFiles{};  // that were read with it, such as the data of a COMTRADE record
    std::string format{};
    std::string station{};
    std::string recorder{};
    std::string start{};  // date and time of the first sample, ISO 8601; as in the file if that is no date
    std::string trigger{};
    std::size_t segment = 0;  // from 1; rate and duration are those of the segment
    double rateHz = 0.0;
    double durationSeconds = 0.0;
    double nominalHz = 0.0;
};

/// The options that decide on the figures, sorted by name: without "--", and the value as given. A switch has no value.
using GivenOptions = std::vector<std::pair<std::string, std::string>>;

/// The facts with the segment of that number, from 1, or without it the main one if the rate is known. `nominalHz` is
/// that of the grid.
RecordingFacts factsOf(const Recording& recording, std::optional<std::size_t> segment, double nominalHz);

}  // namespace rt305

#endif
