#include "cli/messages.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>

#include "base/text_encoding.h"

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
        std::string lines = std::string(isatty(STDERR_FILENO) != 0 ? "\033[K" : "") + "rt305:";
        std::string_view indent = " ";
        for (std::string_view rest = message;; indent = "\n  ") {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            lines.append(indent).append(shown(rest.substr(0, end)));
            if (end == rest.size()) {
                break;
            }
            rest.remove_prefix(end + 1);
        }
        writeToStderr(lines + '\n');
    } catch (const std::bad_alloc&) {
        writeToStderr("rt305: out of memory\n");
    }
}

void warn(const std::string& message) {
    printMessage("warning: " + message);
}

void warnAll(const std::vector<Remark>& warnings, const std::string& prefix) {
    for (const Remark& warning : warnings) {
        warn(prefix + warning.text);
    }
}

void note(const std::string& message) {
    printMessage("note: " + message);
}

}  // namespace rt305
