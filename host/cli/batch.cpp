#include "cli/batch.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <deque>
#include <iostream>
#include <utility>
#include <vector>

#include "cli/messages.h"
#include "cli/process.h"
#include "cli/progress.h"

namespace rt305 {

namespace {

[[noreturn]] void failProcess(const std::string& what) {
    failEnvironment(what + ": " + std::strerror(errno));
}

/// A file in memory, which a full disk does not limit.
class MemoryFile {
public:
    MemoryFile() : file_(memfd_create("rt305", MFD_CLOEXEC)) {
        if (file_ < 0) {
            failProcess("cannot keep an output in memory");
        }
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    MemoryFile(MemoryFile&& other) noexcept : file_(std::exchange(other.file_, -1)) {}
    MemoryFile& operator=(MemoryFile&&) = delete;
    ~MemoryFile() {
        if (file_ >= 0) {
            close(file_);
        }
    }

    int descriptor() const { return file_; }

    std::string content() const {
        std::string content;
        std::array<char, 65536> block;
        for (ssize_t got; (got = pread(file_, block.data(), block.size(), static_cast<off_t>(content.size()))) > 0;) {
            content.append(block.data(), static_cast<std::size_t>(got));
        }
        return content;
    }

private:
    int file_;
};

/// A name with the process that works on it.
struct Job {
    std::string name;
    pid_t process;
    MemoryFile output;
    std::optional<int> status{};  // that of wait(), when it has ended
};

/// Added to the exit code of a process that has written all of its output.
constexpr int completedMark = 64;

/// Works on a name in a new process, which ends with its parent.
[[noreturn]] void runAsProcess(const std::string& name, int output, pid_t parent, const Work& work) noexcept {
    int exitCode = 0;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent && dup2(output, STDOUT_FILENO) >= 0) {
        try {
            exitCode = work.run(name) | completedMark;
            std::cout.flush();
        } catch (const std::exception&) {
            exitCode = 0;
        }
    }
    _exit(std::cout ? exitCode : 0);
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
            list += '\n' + name;
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

/// The processes of a batch.
class Jobs {
public:
    Jobs(const Work& work, std::size_t most, Tally& tally) : work_(work), tally_(tally) {
        constexpr std::size_t otherFiles = 16;
        constexpr std::size_t outputsPerProcess = 8;
        rlimit files{};
        getrlimit(RLIMIT_NOFILE, &files);
        const std::size_t room = files.rlim_cur > otherFiles ? files.rlim_cur - otherFiles : 1;
        mostRunning_ = std::min(most, room);
        mostKept_ = std::min(mostRunning_ * outputsPerProcess, room);
    }
    Jobs(const Jobs&) = delete;
    Jobs& operator=(const Jobs&) = delete;
    ~Jobs() {
        for (const Job& job : jobs_) {
            if (!job.status) {
                kill(job.process, SIGKILL);
                waitpid(job.process, nullptr, 0);
            }
        }
    }

    /// Starts a process, and waits until another one may be started.
    void start(const std::string& name) {
        MemoryFile output;
        std::cout.flush();
        const pid_t parent = getpid();
        pid_t process = fork();
        for (; process < 0 && errno == EAGAIN && running() > 0; process = fork()) {
            waitForOne();
        }
        if (process < 0) {
            failProcess("cannot start a process");
        }
        if (process == 0) {
            runAsProcess(name, output.descriptor(), parent, work_);
        }
        jobs_.push_back({name, process, std::move(output)});
        while (running() >= mostRunning_ || jobs_.size() >= mostKept_) {
            writeNext();
        }
    }

    void finish() {
        while (!jobs_.empty()) {
            writeNext();
        }
    }

private:
    std::size_t running() const {
        return static_cast<std::size_t>(
            std::count_if(jobs_.begin(), jobs_.end(), [](const Job& job) { return !job.status; }));
    }

    void waitForOne() {
        int status = 0;
        pid_t ended = -1;
        do {
            ended = wait(&status);
        } while (ended < 0 && errno == EINTR);
        if (ended < 0) {
            failProcess("cannot wait for a process");
        }
        for (Job& job : jobs_) {
            if (job.process == ended) {
                job.status = status;
            }
        }
    }

    /// Waits for a process and writes the outputs that no longer wait for an earlier one.
    void writeNext() {
        waitForOne();
        for (; !jobs_.empty() && jobs_.front().status; jobs_.pop_front()) {
            tally_.add(jobs_.front().name, write(jobs_.front()));
        }
    }

    /// Writes the output of a process that has ended, and returns the exit code for its name.
    int write(const Job& job) {
        const int status = *job.status;
        const bool isComplete = WIFEXITED(status) && WEXITSTATUS(status) >= completedMark;
        std::string content = job.output.content();
        content.resize(isComplete ? content.size() : content.rfind('\n') + 1);
        work_.out << (hasWritten_ && !content.empty() ? work_.separator : "") << content;
        hasWritten_ = hasWritten_ || !content.empty();
        const int exitCode =
            isComplete
                ? WEXITSTATUS(status) & ~(completedMark | stopsBatch)
                : work_.fail(job.name,
                             WIFSIGNALED(status) ? "the process that measured it was ended by signal " +
                                                       std::to_string(WTERMSIG(status))
                                                 : "the process that measured it ended early, as when memory runs out",
                             ExitCode::environment);
        flushStdout();
        if (isComplete && (WEXITSTATUS(status) & stopsBatch) != 0) {
            failEnvironment("the run ends, as results cannot be written");
        }
        return exitCode;
    }

    const Work& work_;
    Tally& tally_;
    std::size_t mostRunning_ = 1;
    std::size_t mostKept_ = 1;
    std::deque<Job> jobs_{};  // in input order
    bool hasWritten_ = false;
};

}  // namespace

int runBatch(const NextName& next, std::size_t total, std::size_t jobs, const Work& work) {
    Tally tally(total);
    Jobs processes(work, jobs, tally);
    while (const auto name = next()) {
        if (total == 1) {
            tally.add(*name, work.run(*name) & ~stopsBatch);
        } else {
            processes.start(*name);
        }
    }
    processes.finish();
    return tally.finish();
}

}  // namespace rt305
