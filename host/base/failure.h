#ifndef RT305_HOST_BASE_FAILURE_H
#define RT305_HOST_BASE_FAILURE_H

#include <stdexcept>
#include <string>

namespace rt305 {

/// The tool's exit codes; `exitCodeText` describes them in the help.
enum class ExitCode { success = 0, refused = 1, usage = 2, unreadable = 3, partial = 4, environment = 5 };

inline constexpr const char* exitCodeText =
    "Exit codes: 0 success, 1 the library refuses the measurement or fails a check, 2 unusable options, 3 input that "
    "cannot be read or measured, 4 some of several files failed, 5 no library, no memory, output that cannot be "
    "written, or an internal error.";

/// An error that ends the program with its exit code; the message goes to stderr.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

/// Malformed or contradictory options.
[[noreturn]] inline void failUsage(const std::string& message) {
    throw Failure(ExitCode::usage, message);
}

/// Unreadable files, and recordings without the data that is needed.
[[noreturn]] inline void failInput(const std::string& message) {
    throw Failure(ExitCode::unreadable, message);
}

/// Problems of the environment: a library that cannot be opened, output that cannot be written.
[[noreturn]] inline void failEnvironment(const std::string& message) {
    throw Failure(ExitCode::environment, message);
}

}  // namespace rt305

#endif
