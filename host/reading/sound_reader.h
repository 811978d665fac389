#ifndef RT305_HOST_READING_SOUND_READER_H
#define RT305_HOST_READING_SOUND_READER_H

#include <string>
#include <string_view>

#include "reading/read_options.h"
#include "recording/recording.h"

namespace rt305 {

/// Whether the content is of a WAV, FLAC or similar file that this tool reads as one.
bool isSound(std::string_view content);

/// Reads a sound file: one column a channel, named by the user or numbered from 1, samples relative to full scale (so
/// that 1 is the largest). Fails with the reader library's words when the content is damaged.
Recording readSound(std::string_view content, const std::string& source, const ReadOptions& options = {});

}  // namespace rt305

#endif
