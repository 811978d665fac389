#ifndef RT305_HOST_CLI_DOCUMENT_BATCH_H
#define RT305_HOST_CLI_DOCUMENT_BATCH_H

#include <functional>
#include <iosfwd>
#include <string>

#include "cli/commands.h"

namespace rt305 {

/// One file of a batch while it is worked on.
struct DocumentRun {
    std::string file{};
    bool isOneOfMany = false;
    bool keepsFolders = true;     // in the names of files in results
    std::ostream* out = nullptr;  // where its results go
    RecordingFacts known{};       // as far as they are, for the line of a failure
    ReadOptions reading{};

    /// Reads the recording.
    Recording read();

    void know(const std::vector<SourceFile>& files);

    /// A message with the name of the file unless it is there or there is only one file.
    std::string named(const std::string& message) const;
    void warnOf(const Remark& warning) const;
};

/// What a command does with each of its files.
struct DocumentWork {
    std::string command;
    std::string library{};  // its version
    GivenOptions options{};
    bool hasManyDocuments = false;          // each file, or the only one, gives more than one
    std::function<void(DocumentRun&)> run;  // may throw
};

/// Puts the recordings in the place of folders and patterns, or of nothing with --retry-failed, and sets the form of
/// the results in a folder. Fails on options that contradict each other.
void prepareFiles(DocumentOptions& options, const std::string& command);

/// Runs the work for each file and each name in the list: see runBatch(). Results go to stdout, or each into its file
/// of the folder of results unless it is there. Reports failures, for --json-lines as a line of their own, and returns
/// the exit code. Fails on options that contradict each other. The options must be prepared.
int runDocuments(const DocumentOptions& options, const DocumentWork& work);

}  // namespace rt305

#endif
