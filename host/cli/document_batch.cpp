#include "cli/document_batch.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <optional>

#include "base/failure.h"
#include "cli/batch.h"
#include "cli/file_batch.h"
#include "cli/messages.h"
#include "cli/open_file.h"
#include "cli/process.h"
#include "cli/recording_names.h"
#include "cli/result_folder.h"

namespace rt305 {

namespace {

/// The result of a recording is in the folder already.
struct ResultIsThere : std::exception {};

/// The work on the files of a command.
class DocumentBatch {
public:
    DocumentBatch(const DocumentOptions& options, const DocumentWork& work) : options_(options), work_(work) {
        if (!options.outputFolder.empty()) {
            folder_.emplace(options.outputFolder);
        }
    }

    /// Returns the exit code, with `stopsBatch` when the folder cannot be written to.
    int run(const std::string& file) const {
        try {
            return attempt(file);
        } catch (const FolderFailure& failure) {
            printMessage(failure.what());
            return static_cast<int>(failure.code()) | stopsBatch;
        }
    }

    /// Reports the failure of a file that no process works on any more.
    int fail(const std::string& file, const std::string& message, ExitCode code) const {
        Attempt attempt = newAttempt(file);
        return fail(attempt, {message.c_str(), code});
    }

private:
    struct Attempt {
        DocumentRun run;
        ManifestLine line;
        std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    };

    /// Member by member: where memory runs out in nested braces, GCC 12 destroys what is complete twice.
    Attempt newAttempt(const std::string& file) const {
        Attempt attempt;
        attempt.run.file = file;
        attempt.run.isOneOfMany = options_.isMany();
        attempt.run.keepsFolders = !folder_;
        attempt.run.known.file = file;
        attempt.run.reading = readOptionsOf(options_.each);
        attempt.line.command = work_.command;
        attempt.line.file = file;
        return attempt;
    }

    int attempt(const std::string& file) const {
        Attempt attempt = newAttempt(file);
        try {
            if (folder_) {
                runInto(*folder_, attempt);
            } else {
                attempt.run.reading.whenRead = [&attempt](const auto& files) { attempt.run.know(files); };
                attempt.run.out = &std::cout;
                work_.run(attempt.run);
            }
            return static_cast<int>(ExitCode::success);
        } catch (const FolderFailure&) {
            throw;
        } catch (const std::exception& error) {
            return fail(attempt, endingOf(error));
        }
    }

    /// Measures a recording unless its result is there.
    void runInto(const ResultFolder& folder, Attempt& attempt) const {
        ManifestLine& line = attempt.line;
        attempt.run.reading.whenRead = [&](const std::vector<SourceFile>& files) {
            attempt.run.know(files);
            line.checksum = files[0].checksum;
            line.result = ResultIdentity{work_.command, work_.library, work_.options, files}.fileName();
            if (!options_.force && folder.has(line.result)) {
                throw ResultIsThere();
            }
        };
        try {
            UnfinishedResult unfinished(folder);
            attempt.run.out = &unfinished.stream();
            work_.run(attempt.run);
            unfinished.finish(line.result);
        } catch (const ResultIsThere&) {
            line.state = stateSkipped;
        }
        line.windows = folder.linesOf(line.result);
        log(*folder_, attempt);
    }

    int fail(Attempt& attempt, const Ending& end) const {
        const int exitCode = static_cast<int>(end.code);
        const std::string message = attempt.run.named(end.message);
        printMessage(message);
        if (folder_) {
            attempt.line.state = stateFailed;
            attempt.line.result.clear();
            attempt.line.error = message;
            attempt.line.exitCode = exitCode;
            log(*folder_, attempt);
        } else if (options_.each.form == OutputForm::jsonLines) {
            writeErrorLine({attempt.run.known, work_.options, work_.library, end.message, exitCode}, std::cout);
        }
        return exitCode;
    }

    static void log(const ResultFolder& folder, Attempt& attempt) {
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - attempt.start;
        attempt.line.seconds = elapsed.count();
        folder.log(attempt.line);
    }

    const DocumentOptions& options_;
    const DocumentWork& work_;
    std::optional<ResultFolder> folder_{};
};

/// What failed, and of a folder that could not be read what is in it.
std::vector<std::string> filesToRetry(const std::string& folder, const std::string& command) {
    std::vector<std::string> files;
    for (const std::string& failed : failedFilesIn(folder, command)) {
        const auto some = isFolder(failed) ? recordingsNamed(failed) : std::vector{failed};
        files.insert(files.end(), some.begin(), some.end());
    }
    return files;
}

}  // namespace

Recording DocumentRun::read() {
    Recording recording = readShowingProgress(file, reading);
    if (!keepsFolders) {
        for (Remark& warning : recording.warnings) {
            warning.text = withoutFolders(std::move(warning.text), recording);
        }
        for (SourceFile& part : recording.files) {
            part.name = baseNameOf(part.name);
        }
        recording.source = baseNameOf(recording.source);
    }
    known = factsOf(recording, std::nullopt, recording.nominalHz);
    return recording;
}

void DocumentRun::know(const std::vector<SourceFile>& files) {
    known.checksum = files[0].checksum;
    known.otherFiles.assign(files.begin() + 1, files.end());
}

std::string DocumentRun::named(const std::string& message) const {
    const std::string name = baseNameOf(file);
    if (!isOneOfMany || message.find(file) != std::string::npos) {
        return message;
    }
    const bool hasName = message.compare(0, name.size() + 1, name + ":") == 0;
    return file + (hasName ? message.substr(name.size()) : ": " + message);
}

void DocumentRun::warnOf(const Remark& warning) const {
    warn(named(warning.text));
}

void prepareFiles(DocumentOptions& options, const std::string& command) {
    OutputForm& form = options.each.form;
    if (options.outputFolder.empty() && (options.force || options.retriesFailed)) {
        failUsage("--force and --retry-failed are about the results in a folder: give --output-folder");
    }
    if (!options.outputFolder.empty() && form != OutputForm::text && form != OutputForm::jsonLines) {
        failUsage("--output-folder takes JSON lines; the other forms are for stdout");
    }
    if (options.retriesFailed && !(options.files.empty() && options.filesFrom.empty())) {
        failUsage("--retry-failed takes the files from the manifest in the folder; give no FILE");
    }
    options.files =
        options.retriesFailed ? filesToRetry(options.outputFolder, command) : recordingsNamed(options.files);
    form = options.outputFolder.empty() ? form : OutputForm::jsonLines;
}

int runDocuments(const DocumentOptions& options, const DocumentWork& work) {
    if (!options.retriesFailed) {
        checkFiles(options);
    }
    if (work.hasManyDocuments && options.each.form == OutputForm::json) {
        failUsage("--json writes one document; --json-lines writes one for each file and window");
    }
    RecordingNames names(options.files, options.filesFrom);
    const std::size_t total = options.filesFrom.empty() ? options.files.size() : 0;
    const DocumentBatch batch(options, work);
    const Work each{[&batch](const std::string& file) { return batch.run(file); },
                    [&batch](const auto&... failure) { return batch.fail(failure...); },
                    options.each.form == OutputForm::text ? "\n" : ""};
    const int exitCode = runBatch([&names] { return names.next(); }, total, options.jobs, each);
    names.requireEnd();
    return exitCode;
}

}  // namespace rt305
