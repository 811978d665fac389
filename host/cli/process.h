#ifndef RT305_HOST_CLI_PROCESS_H
#define RT305_HOST_CLI_PROCESS_H

#include <exception>

#include "base/failure.h"

namespace rt305 {

/// Makes the process independent of how it was started and prepares its end:
/// - stdin, stdout and stderr are open, so that no other file takes their numbers. Those that were closed fail to read
///   or write.
/// - A closed pipe and the limit of the file size are write errors, not signals. The end of a child can be waited for.
/// - An exception where none may be thrown, and exit() in another library, both of which happen when memory runs out,
///   end the process with a message and the exit code for the environment.
void prepareProcess();

/// Marks that main returns: from now on exit() is the tool's own.
int ending(int exitCode);

/// Writes what std::cout holds back. Fails when it or earlier output cannot be written.
void flushStdout();

/// The message and exit code for an exception. Allocates nothing. The message lives as long as the exception.
struct Ending {
    const char* message;
    ExitCode code;
};
Ending endingOf(const std::exception& error) noexcept;

}  // namespace rt305

#endif
