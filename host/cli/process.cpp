#include "cli/process.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>
#include <string>
#include <string_view>

#include "cli/messages.h"
#include "cli/open_file.h"

namespace rt305 {

namespace {

bool isOwnExit = false;

/// Lives to the end of the process, as std::cout does.
DescriptorBuffer& stdoutBuffer() {
    static auto& buffer = *new DescriptorBuffer(STDOUT_FILENO);
    return buffer;
}

void openClosedStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0 && errno == EBADF) {  // takes the lowest free number, which is this one
            static_cast<void>(open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

[[noreturn]] void endAtOnce(std::string_view message) {
    writeToStderr(message);
    _exit(static_cast<int>(ExitCode::environment));
}

[[noreturn]] void endOnTerminate() {
    try {
        if (std::current_exception() != nullptr) {
            throw;
        }
    } catch (const std::bad_alloc&) {
        endAtOnce("rt305: out of memory\n");
    } catch (...) {
    }
    endAtOnce("rt305: internal error\n");
}

/// Before the other static initialisers of the program, which allocate.
[[gnu::constructor(101)]] void endInitialisers() {
    std::set_terminate(endOnTerminate);
}

void endOnForeignExit() {
    if (!isOwnExit) {
        endAtOnce("rt305: a library that rt305 uses has ended the process, as when memory runs out\n");
    }
}

}  // namespace

void prepareProcess() {
    openClosedStreams();
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
    static_cast<void>(std::signal(SIGCHLD, SIG_DFL));
    static_cast<void>(std::atexit(endOnForeignExit));
    std::cout.rdbuf(&stdoutBuffer());
}

int ending(int exitCode) {
    isOwnExit = true;
    return exitCode;
}

void flushStdout() {
    std::cout.flush();
    if (!std::cout) {
        const int error = stdoutBuffer().error();
        failEnvironment("cannot write to stdout" + (error != 0 ? std::string(": ") + std::strerror(error) : ""));
    }
}

Ending endingOf(const std::exception& error) noexcept {
    if (const auto* const failure = dynamic_cast<const Failure*>(&error)) {
        return {failure->what(), failure->code()};
    }
    const bool isMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
    return {isMemory ? "out of memory" : error.what(), ExitCode::environment};
}

}  // namespace rt305
