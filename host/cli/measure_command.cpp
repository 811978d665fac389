#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>

#include "base/failure.h"
#include "cli/batch.h"
#include "cli/commands.h"
#include "cli/messages.h"
#include "cli/process.h"
#include "cli/progress.h"
#include "measuring/full_measurement.h"
#include "measuring/library.h"
#include "measuring/measure_all.h"
#include "output/full_document.h"
#include "output/remarks.h"
#include "reading/recording_reader.h"

namespace rt305 {

namespace {

/// Measures recordings, and writes a document for each window of a recording.
class Measurer {
public:
    Measurer(const BatchOptions& options, bool isOneOfMany)
        : options_(options), isOneOfMany_(isOneOfMany), library_(options.each.library) {}

    /// Reports failures and returns the exit code.
    int operator()(const std::string& file) {
        try {
            measure(file);
            return static_cast<int>(ExitCode::success);
        } catch (const std::exception& error) {
            const Ending end = endingOf(error);
            return fail(file, end.message, end.code);
        }
    }

    int fail(const std::string& file, const std::string& message, ExitCode code) const {
        const bool isNamed = !isOneOfMany_ || message.find(file) != std::string::npos;
        printMessage(isNamed ? message : file + ": " + message);
        if (options_.each.form == OutputForm::jsonLines) {
            writeErrorLine(file, message, static_cast<int>(code), std::cout);
        }
        return static_cast<int>(code);
    }

private:
    void measure(const std::string& file) {
        const Recording recording = readRecording(file, readOptionsOf(options_.each));
        const FullMeasurement full = prepare(recording, options_.each.settings);
        const std::string prefix = isOneOfMany_ ? file + ": " : "";
        const auto warnPrefixed = [&prefix](const std::string& message) { warn(prefix + message); };
        std::for_each(recording.warnings.begin(), recording.warnings.end(), warnPrefixed);
        std::for_each(full.measurement.warnings.begin(), full.measurement.warnings.end(), warnPrefixed);
        if (!full.isSteady()) {
            warnPrefixed(full.unsteadiness);
        }
        if (!isOneOfMany_) {
            std::for_each(full.measurement.notes.begin(), full.measurement.notes.end(), note);
            if (const std::string remark = remarkOnTexts(full.measurement, false);
                options_.each.form == OutputForm::raw && !remark.empty()) {
                note(remark);
            }
        }
        if (options_.windowSeconds == 0.0) {
            return writeOne(recording, full);
        }
        const double step = options_.stepSeconds > 0.0 ? options_.stepSeconds : options_.windowSeconds;
        const std::size_t windows = countWindows(full.measurement, step, recording.source);
        Progress progress("windows", windows, !isOneOfMany_);
        for (std::size_t i = 0; i < windows && std::cout; ++i) {
            writeOne(recording, windowOf(full, static_cast<double>(i) * step, options_.windowSeconds));
            progress.show(i + 1);
        }
    }

    std::size_t countWindows(const Measurement& measurement, double step, const std::string& source) const {
        const double left =
            (measurement.durationSeconds() - options_.windowSeconds) * (1.0 + 1e-12) + 0.25 / measurement.rateHz;
        if (left < 0.0) {
            failInput(source + ": the recording is shorter than a window");
        }
        if (step * measurement.rateHz < 0.999) {
            failUsage("windows would begin less than one sample apart: give a longer " +
                      std::string(options_.stepSeconds > 0.0 ? "--step" : "--window"));
        }
        return static_cast<std::size_t>(left / step) + 1;
    }

    void writeOne(const Recording& recording, const FullMeasurement& full) {
        const OutputForm form = options_.each.form;
        if (form == OutputForm::text && documents_++ > 0) {
            std::cout << '\n';
        }
        write(fullDocument(recording, full, measureAll(full, library_)), form, styled_, std::cout);
        std::cout.flush();
    }

    const BatchOptions& options_;
    bool isOneOfMany_;
    Library library_;
    bool styled_ = stdoutTakesStyle();
    std::size_t documents_ = 0;
};

/// The files of the command line, then those in the list.
class Names {
public:
    explicit Names(const BatchOptions& options)
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

void checkOptions(const BatchOptions& options) {
    const bool isMany = options.files.size() > 1 || !options.filesFrom.empty() || options.windowSeconds > 0.0;
    const auto fromStdin = std::count(options.files.begin(), options.files.end(), "-") + (options.filesFrom == "-");
    if (isMany && options.windowSeconds == 0.0 && !options.each.reading.dataFile.empty()) {
        failUsage("--dat is the data file of one recording; give one FILE");
    }
    if (options.files.empty() && options.filesFrom.empty()) {
        failUsage("no FILE to measure; see rt305 measure --help");
    }
    if (fromStdin > 1) {
        failUsage("stdin can be one recording or one list of names, not both");
    }
    if (isMany && options.each.form == OutputForm::json) {
        failUsage("--json writes one document; --json-lines writes one for each file and window");
    }
    if (options.stepSeconds > 0.0 && options.windowSeconds == 0.0) {
        failUsage("--step needs --window");
    }
}

}  // namespace

int measureEverything(const BatchOptions& options) {
    checkOptions(options);
    Names names(options);
    Measurer measurer(options, options.files.size() > 1 || !options.filesFrom.empty());
    writeHeading(options.each.form, std::cout);
    const std::size_t total = options.filesFrom.empty() ? options.files.size() : 0;
    const Work work{[&measurer](const std::string& file) { return measurer(file); },
                    [&measurer](const auto&... failure) { return measurer.fail(failure...); },
                    options.each.form == OutputForm::text ? "\n" : ""};
    const int exitCode = runBatch([&names] { return names.next(); }, total, options.jobs, work);
    names.requireEnd();
    return exitCode;
}

}  // namespace rt305
