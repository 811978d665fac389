#ifndef RT305_HOST_OUTPUT_RECORDING_SUMMARY_H
#define RT305_HOST_OUTPUT_RECORDING_SUMMARY_H

#include <string>

#include "recording/channels.h"
#include "recording/recording.h"

namespace rt305 {

/// What a recording holds: what its file says of itself, its segments and the gaps between them, its columns with their
/// ranges, missing and clipped samples, and which column is taken for which channel and why.
std::string reportRecording(const Recording& recording, const PerChannel<std::string>& chosenColumns);

}  // namespace rt305

#endif
