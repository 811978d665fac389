#include "output/recording_facts.h"

namespace rt305 {

RecordingFacts factsOf(const Recording& recording, std::optional<std::size_t> segment, double nominalHz) {
    RecordingFacts facts{.file = recording.source,
                         .format = recording.format,
                         .station = recording.fact("Station"),
                         .recorder = recording.fact("Recorder"),
                         .start = recording.fact("Start"),
                         .trigger = recording.fact("Trigger"),
                         .nominalHz = nominalHz};
    if (!recording.files.empty()) {
        facts.checksum = recording.files[0].checksum;
        facts.otherFiles.assign(recording.files.begin() + 1, recording.files.end());
    }
    if (!recording.segments.empty()) {
        facts.segment = segment ? *segment : mainSegment(recording) + 1;
        const Segment& chosen = recording.segments.at(facts.segment - 1);
        facts.rateHz = chosen.rateHz;
        facts.durationSeconds = chosen.durationSeconds();
    }
    return facts;
}

}  // namespace rt305
