#ifndef RT305_HOST_CLI_PROGRESS_H
#define RT305_HOST_CLI_PROGRESS_H

#include <chrono>
#include <string>

namespace rt305 {

/// A progress bar on stderr. It appears after a second, and only if stderr is a terminal and stdout is not, as results
/// on a terminal show the progress themselves.
class Progress {
public:
    Progress(std::string what, std::size_t total, bool isWanted = true);  // total 0: unknown
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { clear(); }  // erases the bar

    void show(std::size_t done);
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    std::string what_;
    std::size_t total_;
    bool isWanted_;
    bool isVisible_ = false;
    Clock::time_point next_;
};

/// A line on stderr, if that is a terminal, that says what is done and for how many seconds. It appears after a second
/// and is written by a timer's signal, so that the work needs not know of it. One at a time. A forked process has none.
class Activity {
public:
    explicit Activity(const std::string& what);  // at most 100 bytes are shown
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;
    ~Activity();  // erases the line

private:
    bool isShown_;
};

}  // namespace rt305

#endif
