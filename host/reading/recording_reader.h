#ifndef RT305_HOST_READING_RECORDING_READER_H
#define RT305_HOST_READING_RECORDING_READER_H

#include <string>

#include "reading/read_options.h"
#include "recording/recording.h"

namespace rt305 {

/// Reads a recording of any format that the tool knows: CSV, COMTRADE (a .cfg or .dat file with the other beside it, in
/// any case, or a single .cff file) and sound files; "-" is standard input. What a file is, its content says, and
/// its name for a .dat file. Fails with the file's name, and the line or byte where one is at fault.
Recording readRecording(const std::string& path, const ReadOptions& options = {});

}  // namespace rt305

#endif
