#include "cli/file_batch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include "base/failure.h"
#include "cli/batch.h"
#include "cli/messages.h"
#include "cli/process.h"

namespace rt305 {

namespace {

/// The files of the command line, then those in the list.
class Names {
public:
    explicit Names(const FileOptions& options)
        : files_(options.files),
          listName_(options.filesFrom == "-" ? "stdin" : options.filesFrom),
          list_(options.filesFrom == "-" ? &std::cin : nullptr) {
        if (!listName_.empty() && list_ == nullptr) {
            file_.open(listName_);
            list_ = &file_;
            if (!file_) {
                failList();
            }
        }
    }

    /// The next name; nothing after the last, or where the list cannot be read any further.
    std::optional<std::string> next() {
        if (given_ < files_.size()) {
            return files_[given_++];
        }
        while (list_ != nullptr && list_->getline(line_.data(), static_cast<std::streamsize>(line_.size()))) {
            ++lineNumber_;
            const std::string_view name = trimmedEnd(line_.data());
            if (!name.empty()) {
                return std::string(name);
            }
        }
        return std::nullopt;
    }

    /// Fails unless the list has been read to its end.
    void requireEnd() const {
        if (list_ != nullptr && (list_->bad() || (list_ == &std::cin && std::ferror(stdin) != 0))) {
            failList();
        }
        if (list_ != nullptr && !list_->eof()) {
            failInput(listName_ + ": line " + std::to_string(lineNumber_ + 1) + " is too long for the name of a file");
        }
    }

private:
    [[noreturn]] void failList() const { failInput(listName_ + ": " + std::strerror(errno)); }

    /// Without the carriage return of a list with DOS line ends.
    static std::string_view trimmedEnd(std::string_view line) {
        return line.substr(0, line.size() - (!line.empty() && line.back() == '\r' ? 1 : 0));
    }

    const std::vector<std::string>& files_;
    std::size_t given_ = 0;
    std::string listName_;
    std::ifstream file_{};
    std::istream* list_;
    std::array<char, PATH_MAX + 2> line_{};
    std::size_t lineNumber_ = 0;
};

void checkFiles(const FileOptions& options) {
    const auto fromStdin = std::count(options.files.begin(), options.files.end(), "-") + (options.filesFrom == "-");
    if (options.isMany() && !options.each.reading.dataFile.empty()) {
        failUsage("--dat is the data file of one recording; give one FILE");
    }
    if (options.files.empty() && options.filesFrom.empty()) {
        failUsage("no FILE to measure; see rt305 COMMAND --help");
    }
    if (fromStdin > 1) {
        failUsage("stdin can be one recording or one list of names, not both");
    }
}

/// Reports a failure, writes what stands in place of the output, and returns the exit code.
int reportFailure(const FileOptions& options, const FileWork& work, std::ostream& out, const std::string& file,
                  const std::string& message, ExitCode code) {
    const bool isNamed = !options.isMany() || message.find(file) != std::string::npos;
    printMessage(isNamed ? message : file + ": " + message);
    out << work.failed(file, message, code);
    return static_cast<int>(code);
}

}  // namespace

int runFiles(const FileOptions& options, bool hasManyDocuments, const std::function<void(const std::string&)>& work) {
    if (hasManyDocuments && options.each.form == OutputForm::json) {
        failUsage("--json writes one document; --json-lines writes one for each file and window");
    }
    const auto failureLine = [&options](const std::string& file, const std::string& message, ExitCode code) {
        std::ostringstream line;
        if (options.each.form == OutputForm::jsonLines) {
            writeErrorLine(file, message, static_cast<int>(code), line);
        }
        return line.str();
    };
    return runFiles(options, {work, [](const std::string&) {}, failureLine});
}

int runFiles(const FileOptions& options, const FileWork& work) {
    checkFiles(options);
    Names names(options);
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
