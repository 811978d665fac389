#ifndef RT305_HOST_BASE_TERMINAL_H
#define RT305_HOST_BASE_TERMINAL_H

#include <cstddef>

namespace rt305 {

/// The width of text on stdout: that of its terminal, but 40 to 120 characters, and 100 where it is no terminal.
std::size_t textWidth();

/// Whether stdout is a terminal that shows styled text: not with NO_COLOR in the environment (no-color.org), nor on a
/// dumb terminal.
bool stdoutTakesStyle();

}  // namespace rt305

#endif
