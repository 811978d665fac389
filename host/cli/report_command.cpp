#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>
#include <set>
#include <sstream>

#include "base/failure.h"
#include "cli/file_batch.h"
#include "cli/messages.h"
#include "cli/open_file.h"
#include "cli/output_file.h"
#include "cli/progress.h"
#include "cli/recording_names.h"
#include "measuring/full_measurement.h"
#include "measuring/library.h"
#include "measuring/measure_all.h"
#include "page/index_page.h"
#include "page/report.h"
#include "reading/recording_reader.h"

namespace rt305 {

namespace {

namespace fs = std::filesystem;

constexpr const char* indexName = "index.html";

/// Writes the page of one recording.
class Reporter {
public:
    explicit Reporter(const ReportOptions& options)
        : options_(options),
          library_(options.each.library),
          limits_(options.limitsFile.empty() ? LimitSet{} : readLimits(options.limitsFile).limits) {}

    /// Returns the row of the page in an index.
    std::string write(const std::string& file, const std::string& target) const {
        const std::string prefix = options_.isMany() ? file + ": " : "";
        ReadOptions reading = options_.each.reading;
        reading.withChecksums = true;
        Recording recording = readShowingProgress(file, reading);
        warnAll(recording.warnings, prefix);
        refuseInputAsOutput(target, recording.files);
        std::optional<Activity> activity(std::in_place, "preparing the samples");
        FullMeasurement full = prepare(recording, options_.each.settings);
        activity.reset();
        if (!options_.isMany()) {
            std::for_each(full.measurement.notes.begin(), full.measurement.notes.end(), note);
        }
        warnAll(full.measurement.warnings, prefix);
        if (!full.isSteady()) {
            warn(prefix + full.unsteadiness);
        }
        activity.emplace("measuring");
        FullResults results = measureAll(full, library_);
        addSpectraAndStatistics(results, full, library_);
        PageTexts texts = options_.texts;
        texts.title += texts.title.empty() || !options_.isMany() ? "" : ": " + baseNameOf(file);
        const Report report =
            reportOf(recording, std::move(full), results, texts, limits_, fs::path(target).filename().string());
        activity.reset();
        writeOutput(target, [&report](std::ostream& out) { out << report.page; });
        return report.row;
    }

private:
    const ReportOptions& options_;
    Library library_;
    LimitSet limits_;
};

/// The files of the command line, none of which a page may replace.
std::vector<SourceFile> inputsOf(const ReportOptions& options) {
    std::vector<SourceFile> inputs(options.files.size());
    std::transform(options.files.begin(), options.files.end(), inputs.begin(),
                   [](const std::string& file) { return SourceFile{file}; });
    if (!options.filesFrom.empty()) {
        inputs.push_back({options.filesFrom});
    }
    return inputs;
}

/// Names of pages in a folder: that of the recording and, where several have it, a number.
class PageNames {
public:
    std::string nameFor(const std::string& file) {
        std::string name = baseNameOf(file) + ".html";
        for (std::size_t number = 2; !taken_.insert(name).second; ++number) {
            name = baseNameOf(file) + "-" + std::to_string(number) + ".html";
        }
        return name;
    }

private:
    std::set<std::string> taken_{indexName};
};

/// A page for each recording, and the index, which is written last.
int writeFolder(const ReportOptions& options) {
    const fs::path folder = options.output;
    const std::string index = (folder / indexName).string();
    const auto inputs = inputsOf(options);
    refuseInputAsOutput(index, inputs);
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        failEnvironment(options.output + ": " + error.message());
    }
    const Reporter reporter(options);
    PageNames names;
    std::string page;  // of the file that is begun
    std::ostringstream rows;
    const int exitCode = runFiles(options, {[&](const std::string& file) {
                                                const std::string target = (folder / page).string();
                                                refuseInputAsOutput(target, inputs);
                                                const std::string row = reporter.write(file, target);
                                                (options.isMany() ? std::cout : rows) << row;
                                            },
                                            [&](const std::string& file) { page = names.nameFor(file); },
                                            [](const std::string& file, const std::string& message, ExitCode) {
                                                return indexRowOfFailure(baseNameOf(file), message);
                                            },
                                            rows});
    writeOutput(index, [&](std::ostream& out) { out << indexPage(rows.str(), options.texts); });
    return exitCode;
}

}  // namespace

int writeReports(ReportOptions options) {
    options.files = recordingsNamed(options.files);
    if (options.isMany() && options.output.empty()) {
        failUsage("several recordings give several pages: name a folder for them with -o");
    }
    if (options.isMany() || options.output.ends_with('/') || isFolder(options.output)) {
        return writeFolder(options);
    }
    const Reporter reporter(options);
    return runFiles(options,
                    {[&](const std::string& file) { reporter.write(file, options.output); }, [](const std::string&) {},
                     [](const std::string&, const std::string&, ExitCode) { return std::string(); }});
}

}  // namespace rt305
