#include "base/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace rt305 {

std::size_t textWidth() {
    winsize size{};
    if (isatty(STDOUT_FILENO) == 0 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return 100;
    }
    return std::clamp<std::size_t>(size.ws_col, 40, 120);
}

bool stdoutTakesStyle() {
    const char* const noColor = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && (noColor == nullptr || *noColor == '\0') &&
           (terminal == nullptr || std::strcmp(terminal, "dumb") != 0);
}

}  // namespace rt305
