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

}  // namespace rt305

#endif
