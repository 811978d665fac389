#ifndef RT305_HOST_OUTPUT_RECORDING_SUMMARY_H
#define RT305_HOST_OUTPUT_RECORDING_SUMMARY_H

#include <string>

#include "output/recording_facts.h"
#include "recording/channels.h"
#include "recording/recording.h"

namespace rt305 {

/// A recording in text: the facts in its file, its segments and the gaps between them, and its columns with range,
/// missing and clipped samples, and the channel that each is assigned to and why.
std::string reportRecording(const Recording& recording, const PerChannel<std::string>& chosenColumns);

/// The same as a JSON document.
std::string recordingDocument(const Recording& recording, const PerChannel<std::string>& chosenColumns,
                              const GivenOptions& options);

}  // namespace rt305

#endif
