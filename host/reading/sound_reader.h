#ifndef RT305_HOST_READING_SOUND_READER_H
#define RT305_HOST_READING_SOUND_READER_H

#include <string>
#include <string_view>

#include "reading/read_options.h"
#include "recording/recording.h"

namespace rt305 {

/// Whether the content is a WAV or FLAC file.
bool isSound(std::string_view content);

/// Reads a sound file: one column per channel, named by the user or numbered from 1. Full scale is 1. Fails with the
/// message of the sound library when the content is damaged, and when it expands to more than `mostSamplesIn` its size.
Recording readSound(std::string_view content, const std::string& source, const ReadOptions& options = {});

}  // namespace rt305

#endif
