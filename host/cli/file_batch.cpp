#include "cli/file_batch.h"

#include <algorithm>

#include "base/failure.h"
#include "cli/batch.h"
#include "cli/messages.h"
#include "cli/process.h"
#include "cli/recording_names.h"

namespace rt305 {

namespace {

/// Reports a failure, writes what stands in place of the output, and returns the exit code.
int reportFailure(const FileOptions& options, const FileWork& work, std::ostream& out, const std::string& file,
                  const std::string& message, ExitCode code) {
    const bool isNamed = !options.isMany() || message.find(file) != std::string::npos;
    printMessage(isNamed ? message : file + ": " + message);
    out << work.failed(file, message, code);
    return static_cast<int>(code);
}

}  // namespace

void checkFiles(const FileOptions& options) {
    const auto fromStdin = std::count(options.files.begin(), options.files.end(), "-") + (options.filesFrom == "-");
    if (options.isMany() && !options.each.reading.dataFile.empty()) {
        failUsage("--dat is the data file of one recording; give one FILE");
    }
    if (options.files.empty() && options.filesFrom.empty()) {
        failUsage("no FILE is given; a recording, a folder, a pattern, or --files-from a list");
    }
    if (fromStdin > 1) {
        failUsage("stdin can be one recording or one list of names, not both");
    }
}

int runFiles(const FileOptions& options, const FileWork& work) {
    checkFiles(options);
    RecordingNames names(options.files, options.filesFrom);
    const std::size_t total = options.filesFrom.empty() ? options.files.size() : 0;
    const auto run = [&](const std::string& file) {
        try {
            work.work(file);
            return static_cast<int>(ExitCode::success);
        } catch (const std::exception& error) {
            const Ending end = endingOf(error);
            return reportFailure(options, work, options.isMany() ? std::cout : work.out, file, end.message, end.code);
        }
    };
    const Work each{run, [&](const auto&... failure) { return reportFailure(options, work, work.out, failure...); },
                    options.each.form == OutputForm::text ? "\n" : "", work.out};
    const auto next = [&] {
        auto name = names.next();
        if (name) {
            work.begin(*name);
        }
        return name;
    };
    const int exitCode = runBatch(next, total, options.jobs, each);
    names.requireEnd();
    return exitCode;
}

}  // namespace rt305
