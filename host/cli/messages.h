#ifndef RT305_HOST_CLI_MESSAGES_H
#define RT305_HOST_CLI_MESSAGES_H

#include <unistd.h>

#include <iostream>
#include <string>

namespace rt305 {

/// Messages to the user go to stderr, each in one piece, so that those of several processes do not mix. On a terminal
/// the line of a progress bar is erased first.
inline void tell(const std::string& message) {
    std::cerr << (isatty(STDERR_FILENO) != 0 ? "\033[K" : "") + ("rt305: " + message + '\n');
}
inline void warn(const std::string& message) {
    tell("warning: " + message);
}
inline void note(const std::string& message) {
    tell("note: " + message);
}

}  // namespace rt305

#endif
