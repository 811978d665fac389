#ifndef RT305_HOST_CLI_RESULT_FOLDER_H
#define RT305_HOST_CLI_RESULT_FOLDER_H

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/failure.h"
#include "cli/open_file.h"
#include "output/recording_facts.h"

namespace rt305 {

/// Results of recordings in a folder, each in a file of its own, and a manifest of what was done. Processes on any
/// number of machines may work on one folder at the same time.

/// What decides on the content of a result.
struct ResultIdentity {
    std::string command;
    std::string library;
    GivenOptions options;
    std::vector<SourceFile> files;  // with their checksums; the first one names the result

    /// "NAME-HASH.jsonl": the name of the first file, and 16 digits of the SHA-256 of everything else. Folders do not
    /// count, so that a recording has the same result wherever it lies.
    std::string fileName() const;
};

inline constexpr const char* stateDone = "done";
inline constexpr const char* stateSkipped = "skipped";
inline constexpr const char* stateFailed = "failed";

/// What the manifest says about a recording.
struct ManifestLine {
    std::string command{};
    std::string file{};  // as it was named
    const char* state = stateDone;
    std::string result{};    // the name of its file; empty if there is none
    std::string checksum{};  // of the recording's first file; empty if it could not be read
    double seconds = 0.0;
    int exitCode = 0;
    std::size_t windows = 0;  // lines of the result
    std::string error{};
};

/// The folder cannot be written to, so that the run should end.
class FolderFailure : public Failure {
public:
    explicit FolderFailure(const std::string& message) : Failure(ExitCode::environment, message) {}
};

class ResultFolder {
public:
    /// Makes the folder unless it is there, and removes what processes left that were killed.
    explicit ResultFolder(const std::string& path);

    bool has(const std::string& result) const;
    std::size_t linesOf(const std::string& result) const;

    /// Adds a line to the manifest.
    void log(const ManifestLine& line) const;

    const std::string& path() const { return path_; }

    /// Where results are written until they are complete.
    std::string unfinishedFolder() const { return path_ + "/.unfinished"; }

private:
    std::string path_;
};

/// The files whose last state in the manifest of a folder is "failed" for this command, in the order in which they
/// first occur there. Lines that are not whole are skipped. Fails when there is no manifest.
std::vector<std::string> failedFilesIn(const std::string& folder, const std::string& command);

/// A result while it is written. It takes its place in the folder when it is complete and on the disk, or never.
class UnfinishedResult {
public:
    explicit UnfinishedResult(const ResultFolder& folder);
    UnfinishedResult(const UnfinishedResult&) = delete;
    UnfinishedResult& operator=(const UnfinishedResult&) = delete;
    ~UnfinishedResult();

    std::ostream& stream() { return stream_; }

    /// Takes the place of an earlier result of that name.
    void finish(const std::string& result);

private:
    const ResultFolder& folder_;
    std::string path_;
    int file_ = -1;  // locked while the process lives
    std::optional<DescriptorBuffer> buffer_{};
    std::ostream stream_{nullptr};
};

}  // namespace rt305

#endif
