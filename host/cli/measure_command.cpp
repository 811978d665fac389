#include <algorithm>
#include <cmath>
#include <iostream>
#include <optional>

#include "base/failure.h"
#include "base/terminal.h"
#include "cli/document_batch.h"
#include "cli/messages.h"
#include "cli/progress.h"
#include "measuring/full_measurement.h"
#include "measuring/library.h"
#include "measuring/measure_all.h"
#include "output/full_document.h"
#include "output/quality_document.h"
#include "output/quality_settings.h"
#include "output/remarks.h"
#include "reading/recording_reader.h"

namespace rt305 {

namespace {

/// Measures recordings, and writes a document for each window of a recording.
class Measurer {
public:
    explicit Measurer(const BatchOptions& options) : options_(options), library_(options.each.library) {}

    std::string libraryVersion() const { return library_.version(); }

    void measure(DocumentRun& run) {
        Recording recording = run.read();
        std::optional<Activity> activity(std::in_place, "preparing the samples");
        FullMeasurement full = prepare(recording, options_.each.settings,
                                       options_.windowSeconds > 0.0 ? WholeCycles::inWindows : WholeCycles::here);
        activity.reset();
        run.known = factsOf(recording, full.measurement.settings.segment, full.measurement.nominalHz);
        const auto warnOf = [&run](const Remark& warning) { run.warnOf(warning); };
        std::for_each(recording.warnings.begin(), recording.warnings.end(), warnOf);
        std::for_each(full.measurement.warnings.begin(), full.measurement.warnings.end(), warnOf);
        if (!full.isSteady()) {
            run.warnOf(full.unsteadiness);
        }
        if (!run.isOneOfMany) {
            std::for_each(full.measurement.notes.begin(), full.measurement.notes.end(), note);
            if (const std::string remark = remarkOnTexts(full.measurement, false);
                options_.each.form == OutputForm::raw && !remark.empty()) {
                note(remark);
            }
        }
        if (options_.windowSeconds == 0.0) {
            return writeOne(recording, std::move(full), *run.out);
        }
        const double step = options_.stepSeconds > 0.0 ? options_.stepSeconds : options_.windowSeconds;
        const std::size_t windows = countWindows(full.measurement, step, recording.source);
        Progress progress("windows", windows, !run.isOneOfMany);
        for (std::size_t i = 0; i < windows && *run.out; ++i) {
            writeOne(recording, windowOf(full, static_cast<double>(i) * step, options_.windowSeconds), *run.out);
            progress.show(i + 1);
        }
    }

private:
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

    void writeOne(const Recording& recording, FullMeasurement full, std::ostream& out) {
        const OutputForm form = options_.each.form;
        if (form == OutputForm::text && documents_++ > 0) {
            out << '\n';
        }
        std::optional<Activity> activity(std::in_place, "measuring");
        const Shown shown = shownBy(form);
        ResultDocument document = fullDocument(recording, full, measureAll(full, library_, shown));
        document.options = options_.each.given;
        if (shown == Shown::everything && options_.windowSeconds == 0.0) {
            full.appendRest();
            addEvents(recording, full, document);
        }
        activity.reset();
        write(document, form, styled_, out);
        out.flush();
    }

    static Shown shownBy(OutputForm form) {
        const bool hasRemarks = form == OutputForm::text || form == OutputForm::json || form == OutputForm::jsonLines;
        return hasRemarks ? Shown::everything : form == OutputForm::raw ? Shown::texts : Shown::figures;
    }

    /// Adds a remark when there were events.
    static void addEvents(const Recording& recording, const FullMeasurement& full, ResultDocument& document) {
        const auto settings = qualitySettingsOf(recording, full);
        const std::string events =
            settings ? remarkOnEvents(analyse(full.asRecorded().samples, *settings, KeepTraces::no)) : "";
        if (!events.empty()) {
            document.remarks.emplace_back(events);
        }
    }

    const BatchOptions& options_;
    Library library_;
    bool styled_ = stdoutTakesStyle();
    std::size_t documents_ = 0;
};

void checkWindows(const BatchOptions& options) {
    if (options.stepSeconds > 0.0 && options.windowSeconds == 0.0) {
        failUsage("--step needs --window");
    }
}

}  // namespace

int measureEverything(BatchOptions options) {
    checkWindows(options);
    prepareFiles(options, "measure");
    Measurer measurer(options);
    writeHeading(options.each.form, {.figures = figuresOfFullDocument()}, std::cout);
    return runDocuments(options, {.command = "measure",
                                  .library = measurer.libraryVersion(),
                                  .options = options.each.given,
                                  .hasManyDocuments = options.isMany() || options.windowSeconds > 0.0,
                                  .run = [&measurer](DocumentRun& run) { measurer.measure(run); }});
}

}  // namespace rt305
