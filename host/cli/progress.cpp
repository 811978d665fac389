#include "cli/progress.h"

#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <iostream>

#include "base/text_encoding.h"
#include "cli/messages.h"

namespace rt305 {

namespace {

constexpr std::size_t barWidth = 30;
constexpr const char* eraseLine = "\033[K";

/// What the signal handler shows. It may only call what is safe in a handler.
struct ActivityLine {
    std::array<char, 128> text{};
    std::size_t length = 0;
    volatile std::sig_atomic_t seconds = 0;
};
ActivityLine activityLine;

void showActivity(int) {
    const int error = errno;
    activityLine.seconds = activityLine.seconds + 1;
    std::array<char, 16> digits{};
    std::size_t first = digits.size();
    for (int rest = activityLine.seconds; rest > 0 && first > 0; rest /= 10) {
        digits.at(--first) = static_cast<char>('0' + rest % 10);
    }
    writeToStderr({activityLine.text.data(), activityLine.length});
    writeToStderr({&digits.at(first), digits.size() - first});
    writeToStderr(" s\r");
    errno = error;
}

void setTimer(time_t seconds) {
    const itimerval timer{{seconds, 0}, {seconds, 0}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace

Activity::Activity(const std::string& what) : isShown_(isatty(STDERR_FILENO) != 0) {
    constexpr std::size_t mostShown = 100;
    if (!isShown_) {
        return;
    }
    const std::string line = eraseLine + shown(what).substr(0, mostShown) + ", ";
    activityLine.length = line.copy(activityLine.text.data(), activityLine.text.size());
    activityLine.seconds = 0;
    struct sigaction action {};
    action.sa_handler = showActivity;
    action.sa_flags = SA_RESTART;
    sigaction(SIGALRM, &action, nullptr);
    setTimer(1);
}

Activity::~Activity() {
    if (isShown_) {
        setTimer(0);
        if (activityLine.seconds > 0) {
            writeToStderr(eraseLine);
        }
    }
}

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
