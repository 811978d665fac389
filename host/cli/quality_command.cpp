#include <algorithm>
#include <iostream>

#include "base/checksum.h"
#include "base/failure.h"
#include "base/terminal.h"
#include "base/text.h"
#include "cli/document_batch.h"
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
    QualityWork(const QualityOptions& options, LimitSet limits) : options_(options), limits_(std::move(limits)) {}

    void operator()(DocumentRun& run) const {
        const MeasureOptions& each = options_.each;
        Recording recording = run.read();
        const RecordedPhases phases = recordedPhases(recording, each.settings);
        run.known = factsOf(recording, phases.measurement.settings.segment, phases.measurement.nominalHz);
        const auto warnOf = [&run](const Remark& warning) { run.warnOf(warning); };
        std::for_each(recording.warnings.begin(), recording.warnings.end(), warnOf);
        std::for_each(phases.measurement.warnings.begin(), phases.measurement.warnings.end(), warnOf);
        if (!run.isOneOfMany) {
            std::for_each(phases.measurement.notes.begin(), phases.measurement.notes.end(), note);
        }
        const QualitySettings settings =
            qualitySettings(recording, phases.measurement, phases.fromLineVoltages, options_.choice);
        QualityDocument document{.recording = run.known,
                                 .options = each.given,
                                 .content = contentOf(phases.measurement),
                                 .isDeclaredKnown = options_.choice.settings.declaredVolts > 0.0,
                                 .limits = limits_};
        document.warnings = recording.warnings;
        document.warnings.insert(document.warnings.end(), phases.measurement.warnings.begin(),
                                 phases.measurement.warnings.end());
        if (each.form == OutputForm::csv || each.form == OutputForm::jsonLines) {
            QualityRowWriter writer(document, options_.rows, each.form, settings, *run.out);
            document.results = analyse(phases.measurement.samples, settings, KeepTraces::no, writer.listener());
            document.verdicts = judge(limits_, document.results);
            writer.finish(document);
        } else {
            document.results = analyse(phases.measurement.samples, settings, KeepTraces::no);
            document.verdicts = judge(limits_, document.results);
            document.remarks = qualityRemarks(document);
            writeQuality(document, each.form, stdoutTakesStyle(), *run.out);
        }
        run.out->flush();
    }

private:
    const QualityOptions& options_;
    LimitSet limits_;
};

/// Reads the limits, and puts the checksum of their file in the place of its folder among the options as given.
LimitSet takeLimits(QualityOptions& options) {
    if (options.limitsFile.empty()) {
        return {};
    }
    auto [text, limits] = readLimits(options.limitsFile);
    for (auto& [name, value] : options.each.given) {
        if (name == "limits") {
            value = baseNameOf(value) + " sha256:" + checksumOf(text);
        }
    }
    return limits;
}

/// An event must be able to end, and no voltage may be two events at once.
void checkThresholds(const QualitySettings& settings) {
    const double dipEnd = settings.dipPercent + settings.hysteresisPercent;
    const double swellEnd = settings.swellPercent - settings.hysteresisPercent;
    if (dipEnd > swellEnd) {
        failUsage("a dip ends at " + formatNumber(dipEnd) + " %, --dip and --hysteresis, but a swell already at " +
                  formatNumber(swellEnd) + " %, --swell less --hysteresis: choose thresholds that leave room between");
    }
    if (settings.interruptionPercent > settings.dipPercent) {
        failUsage("an interruption begins at " + formatNumber(settings.interruptionPercent) +
                  " %, --interruption, above a dip at " + formatNumber(settings.dipPercent) + " %, --dip");
    }
}

}  // namespace

int analyseQuality(QualityOptions options) {
    if (options.each.settings.durationCycles > 0.0) {
        failUsage("rt305 measure and rt305 report take a --duration in cycles; give it in seconds here");
    }
    checkThresholds(options.choice.settings);
    prepareFiles(options, "quality");
    LimitSet limits = takeLimits(options);
    const QualityWork work(options, std::move(limits));
    return runDocuments(options, {.command = "quality",
                                  .options = options.each.given,
                                  .hasManyDocuments = options.isMany(),
                                  .run = [&work](DocumentRun& run) { work(run); }});
}

}  // namespace rt305
