#ifndef RT305_HOST_CLI_MESSAGES_H
#define RT305_HOST_CLI_MESSAGES_H

#include <unistd.h>

#include <iostream>
#include <string>

namespace rt305 {

/// Messages to the user, on stderr. Each is written in one piece, so that those of several processes do not mix, and on
/// a terminal it replaces a progress bar.
inline void printMessage(const std::string& message) {
    std::cerr << (isatty(STDERR_FILENO) != 0 ? "\033[K" : "") + ("rt305: " + message + '\n');
}
inline void warn(const std::string& message) {
    printMessage("warning: " + message);
}
inline void note(const std::string& message) {
    printMessage("note: " + message);
}

}  // namespace rt305

#endif
