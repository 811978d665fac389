#ifndef RT305_HOST_CLI_FILE_BATCH_H
#define RT305_HOST_CLI_FILE_BATCH_H

#include <functional>
#include <iostream>
#include <string>

#include "base/failure.h"
#include "cli/commands.h"

namespace rt305 {

/// Fails on files that contradict each other or other options.
void checkFiles(const FileOptions& options);

/// What a batch does with its files, several in processes of their own.
struct FileWork {
    std::function<void(const std::string& file)> work;   // writes to std::cout
    std::function<void(const std::string& file)> begin;  // in this process, before the work on each file
    std::function<std::string(const std::string& file, const std::string& message, ExitCode code)>
        failed;                     // what to write in place of the output
    std::ostream& out = std::cout;  // receives the outputs of several files
};

/// Runs the work, which may throw, for each file in the command line and in the list of names: see runBatch(). Reports
/// failures, and returns the exit code.
int runFiles(const FileOptions& options, const FileWork& work);

}  // namespace rt305

#endif
