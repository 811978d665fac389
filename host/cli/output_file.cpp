#include "cli/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>

#include "base/failure.h"
#include "cli/open_file.h"

namespace rt305 {

namespace {

namespace fs = std::filesystem;

using FileStatus = struct stat;

[[noreturn]] void failOutput(const std::string& name, int error = errno) {
    failEnvironment(name + ": " + std::strerror(error));
}

std::optional<FileStatus> statusOf(const std::string& file) {
    FileStatus status{};
    return stat(file.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

constexpr int endingSignals[] = {SIGHUP, SIGINT, SIGTERM};
std::array<char, PATH_MAX> unfinishedFile{};  // for the signal handler

void removeUnfinishedFile(int signal) {
    unlink(unfinishedFile.data());
    static_cast<void>(std::signal(signal, SIG_DFL));
    static_cast<void>(raise(signal));
}

/// A new file beside its target. It is removed unless it takes the target's place, also when a signal ends the program.
class UnfinishedFile {
public:
    UnfinishedFile(std::string target, mode_t mode) : target_(std::move(target)) {
        const std::string name = (fs::path(target_).parent_path() / ".rt305-XXXXXX").string();
        if (name.size() >= unfinishedFile.size()) {
            errno = ENAMETOOLONG;
            failOutput(target_);
        }
        name.copy(unfinishedFile.data(), name.size());
        unfinishedFile.at(name.size()) = '\0';
        const int file = mkstemp(unfinishedFile.data());
        if (file < 0) {
            failOutput(target_);
        }
        for (const int signal : endingSignals) {
            if (std::signal(signal, removeUnfinishedFile) == SIG_IGN) {
                static_cast<void>(std::signal(signal, SIG_IGN));
            }
        }
        static_cast<void>(fchmod(file, mode));
        close(file);
    }
    UnfinishedFile(const UnfinishedFile&) = delete;
    UnfinishedFile& operator=(const UnfinishedFile&) = delete;
    ~UnfinishedFile() {
        if (!isFinished_) {
            unlink(unfinishedFile.data());
        }
    }

    static const char* name() { return unfinishedFile.data(); }

    void finish() {
        if (std::rename(name(), target_.c_str()) != 0) {
            failOutput(target_);
        }
        isFinished_ = true;
    }

private:
    std::string target_;
    bool isFinished_ = false;
};

/// Writes content to a file under its own name.
void writeDirectly(const std::string& path, const std::string& shownName,
                   const std::function<void(std::ostream&)>& content) {
    OpenFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
    if (file.descriptor() < 0) {
        failOutput(shownName);
    }
    DescriptorBuffer buffer(file.descriptor());
    std::ostream stream(&buffer);
    content(stream);
    stream.flush();
    if (!stream) {
        failOutput(shownName, buffer.error());
    }
    if (!file.close()) {
        failOutput(shownName);
    }
}

/// The file that a symbolic link leads to, whether it exists or not.
std::string withoutLinks(const std::string& file) {
    constexpr int mostLinks = 40;
    fs::path path = file;
    std::error_code none;
    for (int i = 0; i < mostLinks && fs::is_symlink(path, none); ++i) {
        path = path.parent_path() / fs::read_symlink(path, none);
    }
    return path.string();
}

}  // namespace

mode_t modeOfNewFile() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666U & ~mask;
}

void refuseInputAsOutput(const std::string& target, const std::vector<SourceFile>& inputs) {
    const auto output = target.empty() ? std::nullopt : statusOf(target);
    const auto isOutput = [&output](const SourceFile& file) {
        const auto input = statusOf(file.isStdin() ? "/dev/stdin" : file.name);
        return input && input->st_dev == output->st_dev && input->st_ino == output->st_ino;
    };
    if (output && S_ISREG(output->st_mode)) {
        if (const auto input = std::find_if(inputs.begin(), inputs.end(), isOutput); input != inputs.end()) {
            failUsage("-o " + target + " is " +
                      (input->name == target ? "an input" : "the input " + (input->isStdin() ? "stdin" : input->name)) +
                      " and would be lost: name another file");
        }
    }
}

void writeOutput(const std::string& target, const std::function<void(std::ostream&)>& content) {
    if (target.empty()) {
        content(std::cout);
        return;
    }
    const auto old = statusOf(target);
    if (old && !S_ISREG(old->st_mode)) {
        return writeDirectly(target, target, content);
    }
    if (old && access(target.c_str(), W_OK) != 0) {
        failOutput(target);
    }
    UnfinishedFile unfinished(withoutLinks(target), old ? old->st_mode & 07777U : modeOfNewFile());
    writeDirectly(UnfinishedFile::name(), target, content);
    unfinished.finish();
}

}  // namespace rt305
