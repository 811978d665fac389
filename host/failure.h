#ifndef RT305_HOST_FAILURE_H
#define RT305_HOST_FAILURE_H

#include <stdexcept>
#include <string>

namespace rt305 {

/// What the tool's exit code says.
enum class ExitCode { success = 0, refused = 1, unusableInput = 2 };

/// A failure that is told to the user on stderr and ends the program with its exit code.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message) : std::runtime_error(message), _code(code) {}
    ExitCode code() const { return _code; }

private:
    ExitCode _code;
};

/// Options that contradict each other, files that cannot be read, a library that cannot be opened.
[[noreturn]] inline void failInput(const std::string& message) {
    throw Failure(ExitCode::unusableInput, message);
}

}  // namespace rt305

#endif
