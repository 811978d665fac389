#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace rt305 {

namespace {

constexpr std::size_t barWidth = 30;
constexpr const char* eraseLine = "\033[K";

}  // namespace

Progress::Progress(std::string what, std::size_t total, bool isWanted)
    : _what(std::move(what)),
      _total(total),
      _isWanted(isWanted && isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0),
      _next(Clock::now() + std::chrono::seconds(1)) {}

void Progress::show(std::size_t done) {
    if (!_isWanted || Clock::now() < _next) {
        return;
    }
    _next = Clock::now() + std::chrono::milliseconds(100);
    std::string line = eraseLine;
    if (_total > 0) {
        const std::size_t filled = barWidth * std::min(done, _total) / _total;
        line += '[' + std::string(filled, '#') + std::string(barWidth - filled, '.') + "] ";
    }
    line += std::to_string(done) + (_total > 0 ? " of " + std::to_string(_total) : "") + ' ' + _what;
    std::cerr << line + '\r';  // a message overwrites it
    _isVisible = true;
}

void Progress::clear() {
    if (_isVisible) {
        std::cerr << eraseLine;
        _isVisible = false;
    }
}

}  // namespace rt305
