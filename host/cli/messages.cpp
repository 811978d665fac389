#include "cli/messages.h"

#include <unistd.h>

#include <cerrno>
#include <new>

namespace rt305 {

void writeToStderr(std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            return;
        }
        text.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
}

void printMessage(const std::string& message) noexcept {
    try {
        writeToStderr((isatty(STDERR_FILENO) != 0 ? "\033[K" : "") + ("rt305: " + message + '\n'));
    } catch (const std::bad_alloc&) {
        writeToStderr("rt305: out of memory\n");
    }
}

void warn(const std::string& message) {
    printMessage("warning: " + message);
}

void note(const std::string& message) {
    printMessage("note: " + message);
}

}  // namespace rt305
