#ifndef RT305_HOST_READING_RECORDING_READER_H
#define RT305_HOST_READING_RECORDING_READER_H

#include <string>

#include "reading/read_options.h"
#include "recording/recording.h"

namespace rt305 {

/// Reads a recording from a CSV, COMTRADE or sound file; "-" is standard input. COMTRADE is a .cfg and a .dat file in
/// one folder, named by either and with extensions in any case, or a single .cff file. Any of them may be compressed by
/// gzip, with ".gz" behind its name, and text may be UTF-16. The content decides on the format, except for .dat files.
/// Text that is neither UTF-8 nor of the encoding given is a warning. Fails with the name of the file, and with the
/// line or byte at fault if there is one; also on devices, and on recordings beyond the limits of base/limits.h.
Recording readRecording(const std::string& path, const ReadOptions& options = {});

/// The last step of readRecording, whatever the format: texts in UTF-8, values as the options want them, limits
/// checked.
Recording completed(Recording recording, const ReadOptions& options);

}  // namespace rt305

#endif
