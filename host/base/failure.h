#ifndef RT305_HOST_BASE_FAILURE_H
#define RT305_HOST_BASE_FAILURE_H

#include <stdexcept>
#include <string>

namespace rt305 {

/// What the tool's exit code says; `exitCodeText` tells it to people.
enum class ExitCode { success = 0, refused = 1, usage = 2, unreadable = 3, partial = 4, environment = 5 };

inline constexpr const char* exitCodeText =
    "Exit codes: 0 success, 1 the library refuses the measurement or fails a check, 2 unusable options, 3 input that "
    "cannot be read or measured, 4 some of several files failed, 5 no library, no memory, or output that cannot be "
    "written.";

/// A failure that is told to the user on stderr and ends the program with its exit code.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

/// Options that are malformed or contradict each other.
[[noreturn]] inline void failUsage(const std::string& message) {
    throw Failure(ExitCode::usage, message);
}

/// Files that cannot be read, and recordings that do not hold what is asked of them.
[[noreturn]] inline void failInput(const std::string& message) {
    throw Failure(ExitCode::unreadable, message);
}

/// What is wrong with neither options nor input: a library that cannot be opened, output that cannot be written.
[[noreturn]] inline void failEnvironment(const std::string& message) {
    throw Failure(ExitCode::environment, message);
}

}  // namespace rt305

#endif
