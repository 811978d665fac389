#include "cli/batch.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <deque>
#include <iostream>
#include <memory>
#include <vector>

#include "base/failure.h"
#include "cli/messages.h"
#include "cli/progress.h"

namespace rt305 {

namespace {

struct CloseFile {
    void operator()(FILE* file) const { static_cast<void>(std::fclose(file)); }
};
using File = std::unique_ptr<FILE, CloseFile>;

/// A name with the process that works on it. The output of the process is kept in a temporary file.
struct Job {
    std::string name;
    pid_t process;
    File output;
    std::optional<int> exitCode{};
};

Job startJob(const std::string& name, const Work& work) {
    File output(std::tmpfile());
    if (output == nullptr) {
        failEnvironment(std::string("cannot make a temporary file: ") + std::strerror(errno));
    }
    std::cout.flush();
    const pid_t process = fork();
    if (process < 0) {
        failEnvironment(std::string("cannot start a process: ") + std::strerror(errno));
    }
    if (process == 0) {
        int exitCode = static_cast<int>(ExitCode::environment);
        if (dup2(fileno(output.get()), STDOUT_FILENO) >= 0) {
            exitCode = work(name);
            std::cout.flush();
        }
        _exit(std::cout ? exitCode : static_cast<int>(ExitCode::environment));
    }
    return {name, process, std::move(output)};
}

void waitForOne(std::deque<Job>& jobs) {
    int status = 0;
    pid_t ended = -1;
    do {
        ended = wait(&status);
    } while (ended < 0 && errno == EINTR);
    for (Job& job : jobs) {
        if (job.process == ended) {
            job.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : static_cast<int>(ExitCode::environment);
            if (!WIFEXITED(status)) {
                printMessage(job.name + ": the process that measured it ended by signal " +
                             std::to_string(WTERMSIG(status)));
            }
        }
    }
}

void copyToStdout(FILE* file) {
    std::rewind(file);
    std::array<char, 65536> block;
    for (std::size_t got = 0; (got = std::fread(block.data(), 1, block.size(), file)) > 0;) {
        std::cout.write(block.data(), static_cast<std::streamsize>(got));
    }
    std::cout.flush();
}

/// Counts the names that are done, and collects those that failed.
class Tally {
public:
    explicit Tally(std::size_t total) : progress_("files", total, total != 1) {}

    void add(const std::string& name, int exitCode) {
        ++done_;
        lastCode_ = exitCode;
        if (exitCode != 0) {
            failed_.push_back(name);
        }
        progress_.show(done_);
    }

    int finish() {
        progress_.clear();
        if (done_ < 2 || failed_.empty()) {
            return failed_.empty() ? 0 : lastCode_;
        }
        std::string list;
        for (const std::string& name : failed_) {
            list += "\n  " + name;
        }
        printMessage(std::to_string(failed_.size()) + " of " + std::to_string(done_) + " files failed:" + list);
        return static_cast<int>(ExitCode::partial);
    }

private:
    Progress progress_;
    std::vector<std::string> failed_{};
    std::size_t done_ = 0;
    int lastCode_ = 0;
};

}  // namespace

int runBatch(const NextName& next, std::size_t total, std::size_t jobs, const Work& work) {
    Tally tally(total);
    std::deque<Job> running;  // in input order; jobs that have ended wait for earlier ones
    const auto isBusy = [&] {
        const auto busy = std::count_if(running.begin(), running.end(), [](const Job& job) { return !job.exitCode; });
        return static_cast<std::size_t>(busy) >= jobs;
    };
    const auto reap = [&] {
        waitForOne(running);
        for (; !running.empty() && running.front().exitCode; running.pop_front()) {
            copyToStdout(running.front().output.get());
            tally.add(running.front().name, *running.front().exitCode);
        }
    };
    while (const auto name = next()) {
        if (jobs <= 1) {
            const int exitCode = work(*name);
            std::cout.flush();
            tally.add(*name, exitCode);
            continue;
        }
        running.push_back(startJob(*name, work));
        while (isBusy()) {
            reap();
        }
    }
    while (!running.empty()) {
        reap();
    }
    return tally.finish();
}

}  // namespace rt305
