#ifndef RT305_HOST_CLI_MESSAGES_H
#define RT305_HOST_CLI_MESSAGES_H

#include <string>
#include <string_view>
#include <vector>

#include "recording/remark.h"

namespace rt305 {

/// Writes to stderr, without allocation. What cannot be written is lost.
void writeToStderr(std::string_view text) noexcept;

/// Messages to the user, on stderr. Each is written in one piece, so that those of several processes do not mix, and on
/// a terminal it replaces a progress bar. Further lines are indented, and control characters are escaped, so that a
/// text from a file looks like no other message. Without memory the message says only that.
void printMessage(const std::string& message) noexcept;
void warn(const std::string& message);
void warnAll(const std::vector<Remark>& warnings, const std::string& prefix = "");
void note(const std::string& message);

}  // namespace rt305

#endif
