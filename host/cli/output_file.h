#ifndef RT305_HOST_CLI_OUTPUT_FILE_H
#define RT305_HOST_CLI_OUTPUT_FILE_H

#include <sys/types.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "recording/recording.h"

namespace rt305 {

/// Fails when `target` is one of the files in `inputs`, under whatever name: a hard link, a symbolic link. Stdin is
/// the file that it reads. An empty target is stdout.
void refuseInputAsOutput(const std::string& target, const std::vector<SourceFile>& inputs);

/// The mode of a new file: all may read and write it, except for the bits of the process's mask.
mode_t modeOfNewFile();

/// Writes content to a file, or to stdout if `target` is empty. The file is written beside its target under a temporary
/// name and then renamed, so that a failure leaves what was there and removes the temporary file. Symbolic links are
/// followed; the mode of an existing file is kept. Devices and pipes are written directly.
void writeOutput(const std::string& target, const std::function<void(std::ostream&)>& content);

}  // namespace rt305

#endif
