#include "cli/progress.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace rt305 {

namespace {

constexpr std::size_t barWidth = 30;
constexpr const char* eraseLine = "\033[K";

}  // namespace

Progress::Progress(std::string what, std::size_t total, bool isWanted)
    : what_(std::move(what)),
      total_(total),
      isWanted_(isWanted && isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0),
      next_(Clock::now() + std::chrono::seconds(1)) {}

void Progress::show(std::size_t done) {
    if (!isWanted_ || Clock::now() < next_) {
        return;
    }
    next_ = Clock::now() + std::chrono::milliseconds(100);
    std::string line = eraseLine;
    if (total_ > 0) {
        const std::size_t filled = barWidth * std::min(done, total_) / total_;
        line += '[' + std::string(filled, '#') + std::string(barWidth - filled, '.') + "] ";
    }
    line += std::to_string(done) + (total_ > 0 ? " of " + std::to_string(total_) : "") + ' ' + what_;
    std::cerr << line + '\r';  // the next message replaces the line
    isVisible_ = true;
}

void Progress::clear() {
    if (isVisible_) {
        std::cerr << eraseLine;
        isVisible_ = false;
    }
}

}  // namespace rt305
