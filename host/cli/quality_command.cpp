#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>

#include "base/failure.h"
#include "base/terminal.h"
#include "cli/file_batch.h"
#include "cli/messages.h"
#include "measuring/full_measurement.h"
#include "output/quality_document.h"
#include "output/quality_settings.h"
#include "output/result_tables.h"

namespace rt305 {

namespace {

/// Analyses recordings one after the other.
class QualityWork {
public:
    explicit QualityWork(const QualityOptions& options)
        : options_(options), limits_(options.limitsFile.empty() ? LimitSet{} : readLimits(options.limitsFile)) {}

    void operator()(const std::string& file) const {
        const MeasureOptions& each = options_.each;
        Recording recording = readShowingProgress(file, readOptionsOf(each));
        const RecordedPhases phases = recordedPhases(recording, each.settings);
        report({recording.warnings.begin(), recording.warnings.end()}, file);
        report(phases.measurement.warnings, file);
        if (!options_.isMany()) {
            std::for_each(phases.measurement.notes.begin(), phases.measurement.notes.end(), note);
        }
        if (const std::string obstacle = obstacleToQuality(phases.measurement); !obstacle.empty()) {
            failInput(recording.source + ": " + obstacle);
        }
        const QualitySettings settings =
            qualitySettings(recording, phases.measurement, phases.fromLineVoltages, options_.choice);
        if (settings.hasVoltages() && !(settings.declaredVolts > 0.0)) {
            failInput(
                recording.source +
                ": the voltages are dead or have gaps, so events have nothing to compare with; give --declared V");
        }
        QualityDocument document{
            .recording = factsOf(recording, phases.measurement.settings.segment, phases.measurement.nominalHz),
            .content = contentOf(phases.measurement),
            .isDeclaredKnown = options_.choice.settings.declaredVolts > 0.0,
            .limits = limits_};
        document.warnings = recording.warnings;
        for (const Remark& warning : phases.measurement.warnings) {
            document.warnings.push_back(warning.text);
        }
        if (each.form == OutputForm::csv || each.form == OutputForm::jsonLines) {
            QualityRowWriter writer(file, options_.rows, each.form, settings, std::cout);
            document.results = analyse(phases.measurement.samples, settings, KeepTraces::no, writer.listener());
            document.verdicts = judge(limits_, document.results);
            writer.finish(document);
        } else {
            document.results = analyse(phases.measurement.samples, settings, KeepTraces::no);
            document.verdicts = judge(limits_, document.results);
            document.remarks = qualityRemarks(document);
            writeQuality(document, each.form, stdoutTakesStyle(), std::cout);
        }
        std::cout.flush();
    }

private:
    static LimitSet readLimits(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        if (!stream) {
            failInput(file + ": " + std::strerror(errno));
        }
        return parseLimits(text, file);
    }

    void report(const std::vector<Remark>& warnings, const std::string& file) const {
        const std::string prefix = options_.isMany() ? file + ": " : "";
        std::for_each(warnings.begin(), warnings.end(), [&](const Remark& warning) { warn(prefix + warning.text); });
    }

    const QualityOptions& options_;
    LimitSet limits_;
};

}  // namespace

int analyseQuality(const QualityOptions& options) {
    if (options.each.settings.durationCycles > 0.0) {
        failUsage("rt305 measure and rt305 report take a --duration in cycles; give it in seconds here");
    }
    const QualityWork work(options);
    return runFiles(options, options.isMany(), [&work](const std::string& file) { work(file); });
}

}  // namespace rt305
