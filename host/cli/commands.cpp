#include "cli/commands.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <optional>

#include "base/failure.h"
#include "base/terminal.h"
#include "base/text.h"
#include "cli/messages.h"
#include "cli/output_file.h"
#include "cli/progress.h"
#include "conformance/check.h"
#include "measuring/full_measurement.h"
#include "measuring/library.h"
#include "measuring/measured_results.h"
#include "measuring/thd_gate.h"
#include "output/recording_summary.h"
#include "output/remarks.h"
#include "output/result_tables.h"
#include "reading/recording_reader.h"

namespace rt305 {

namespace {

Recording read(const MeasureOptions& options) {
    Recording recording = readShowingProgress(options.file, readOptionsOf(options));
    warnAll(recording.warnings);
    return recording;
}

/// A measurement and the document for it.
struct Measured {
    Measurement measurement;
    Library library;
    ResultDocument document;
    double cycles;
    GridState state{};

    ResultTexts texts(std::uint32_t operation) const {
        const Activity activity("measuring");
        return library.measure(measurement, operation);
    }

    void warnAndKeep(const std::string& message) {
        warn(message);
        document.warnings.emplace_back(message);
    }

    /// THD, frequencies, lines and power by phase angles are those of a steady signal.
    void warnOfChange() {
        state = gridStateOf(measurement, measurement.nominalHz);
        if (const std::string change = describeChange(state, measurement); !change.empty()) {
            warnAndKeep(change +
                        ", so figures of the fundamental and the harmonics, and lines beside them, can be wrong; rt305 "
                        "measure lists the steady parts");
        }
    }
};

/// Recordings hold the line voltages ab, bc and ca; two wattmeters require cb.
void setForTwoWattmeters(Measurement& measurement) {
    if (measurement.has(RT305_4_FOUR_WIRE)) {
        failUsage(
            "--power two-wattmeter takes line voltages: give --wiring three if Ua, Ub, Uc are line voltages; rt305 "
            "measure computes them from phase voltages");
    }
    invertForTwoWattmeters(measurement.settings);
    note("two wattmeters require the line voltage cb: Ub, which is bc, and Q are inverted");
}

Measured measure(const MeasureOptions& options, std::uint32_t operation) {
    Recording recording = read(options);
    std::optional<Activity> preparation(std::in_place, "preparing the samples");
    Measurement measurement = makeMeasurement(
        recording, options.settings, operation == RT305_4_OPERATION_SIGNALS ? RateMatters::no : RateMatters::yes);
    preparation.reset();
    std::for_each(measurement.notes.begin(), measurement.notes.end(), note);
    warnAll(measurement.warnings);
    if (measurement.powerFlag() == RT305_4_POWER_TWO_WATTMETER) {
        setForTwoWattmeters(measurement);
    }
    const Library library(options.library);
    ResultDocument document = documentOf(recording, measurement, library.version());
    document.options = options.given;
    if (const std::string remark = remarkOnTexts(measurement, operation == RT305_4_OPERATION_SPECTRUM);
        options.form == OutputForm::raw && !remark.empty()) {
        note(remark);
    }
    const double cycles = cyclesOf(measurement);
    document.remarks.emplace_back("Measured: all " + counted(measurement.length, "sample") + ", " +
                                  formatFixed(cycles, 2) + " cycles; rt305 measure measures whole cycles.");
    return {std::move(measurement), library, std::move(document), cycles};
}

void show(const MeasureOptions& options, const ResultDocument& document) {
    writeHeading(options.form, document, std::cout);
    write(document, options.form, stdoutTakesStyle(), std::cout);
}

/// Shows the results of both kinds as tables. Lists share their name; of others it is followed by "_u" or "_i".
template <class Channel>
void showKinds(const MeasureOptions& options, ResultDocument& document, std::vector<KindResults<Channel>> kinds,
               const std::string& name, ResultTable (*tabulate)(const std::string&, const std::vector<Channel>&)) {
    for (auto& kind : kinds) {
        document.rawTexts.push_back(std::move(kind.text));
        ResultTable table = tabulate(name, kind.channels);
        table.name += table.isList() ? "" : kind.areCurrents ? "_i" : "_u";
        document.tables.push_back(std::move(table));
    }
    show(options, document);
}

}  // namespace

Recording readShowingProgress(const std::string& file, const ReadOptions& reading) {
    const Activity activity("reading " + file);
    return readRecording(file, reading);
}

ReadOptions readOptionsOf(const MeasureOptions& options) {
    ReadOptions reading = options.reading;
    reading.withChecksums =
        reading.withChecksums || options.form == OutputForm::json || options.form == OutputForm::jsonLines;
    return reading;
}

void showRecording(const MeasureOptions& options) {
    const Recording recording = read(options);
    std::cout << (options.form == OutputForm::json
                      ? recordingDocument(recording, options.settings.columns, options.given)
                      : reportRecording(recording, options.settings.columns));
}

void showParameters(const MeasureOptions& options) {
    const bool byTwoWattmeters = (options.settings.flags & RT305_4_POWER_MASK) == RT305_4_POWER_TWO_WATTMETER;
    Measured result = measure(options, RT305_4_OPERATION_PARAMETERS);
    result.warnOfChange();
    const ResultTexts texts = result.texts(RT305_4_OPERATION_PARAMETERS);
    auto parameters = measuredParameters(texts.parameters, result.measurement);
    for (NamedValue& parameter : parameters) {
        if (byTwoWattmeters && parameter.name == "Ud0") {  // ab + cb + ca is not the zero-sequence voltage
            parameter.value = std::numeric_limits<double>::quiet_NaN();
        }
    }
    ResultDocument& document = result.document;
    document.settings = describeMethods(result.measurement);
    document.tables.push_back(parameterTable(parameters));
    for (const Remark& remark :
         remarksOn(parameters, result.measurement, result.cycles, result.measurement.powerFlag())) {
        document.remarks.push_back(remark);
    }
    if (std::isnan(parameterNamed(parameters, "Pf").value) && result.measurement.isCombined()) {
        document.remarks.emplace_back("No power factors: this library does not compute them; rt305 measure does.");
    }
    document.rawTexts.push_back(texts.parameters);
    show(options, document);
}

void showSignals(const MeasureOptions& options) {
    Measured result = measure(options, RT305_4_OPERATION_SIGNALS);
    result.document.remarks.emplace_back(
        "The library removes each channel's offset first, so the means are close to zero.");
    const SignalTexts texts = options.form == OutputForm::raw ? SignalTexts::wanted : SignalTexts::notWanted;
    showKinds(options, result.document, measuredSignals(result.measurement, result.library, texts), "signals",
              signalTable);
}

void showSpectra(const MeasureOptions& options) {
    Measured result = measure(options, RT305_4_OPERATION_SPECTRUM);
    result.warnOfChange();
    result.document.remarks.emplace_back(
        (options.settings.spectrumFlags & RT305_4_SPECTRUM_LEVEL_MASK) == RT305_4_SPECTRUM_LEVEL_DB
            ? "dB below the largest line; side lobes of larger lines are left out."
            : "Peak values, corrected for the gain of the window; side lobes of larger lines are left out.");
    ResultTexts texts = result.texts(RT305_4_OPERATION_SPECTRUM);
    showKinds(options, result.document,
              measuredSpectra(std::move(texts), result.measurement, result.measurement.settings), "spectrum",
              spectrumTable);
}

void showHarmonics(const MeasureOptions& options) {
    Measured result = measure(options, RT305_4_OPERATION_DISTORTION);
    result.warnOfChange();
    if (const std::string remark = remarkOnLength(result.measurement, result.cycles); !remark.empty()) {
        result.warnAndKeep(remark);
    }
    ResultTexts texts = result.texts(RT305_4_OPERATION_DISTORTION);
    const Measurement& measurement = result.measurement;
    const Parameters parameters = measuredParameters(texts.parameters, measurement);
    auto harmonics = measuredHarmonics(std::move(texts), measurement);
    const DistortionDoubts doubts =
        removeDoubtful(harmonics, fundamentalsOf(measurement, result.state.frequencyHz, true));
    result.document.tables.push_back(distortionTable(withoutDoubtful(parameters, doubts, measurement.hasVoltages())));
    result.document.remarks.emplace_back("0 dB is 1 V or 1 A RMS; % is of the fundamental.");
    for (const auto& remarks :
         {remarksOnDoubts(doubts, measurement), remarksOnDistortion(parameters, measurement, doubts)}) {
        result.document.remarks.insert(result.document.remarks.end(), remarks.begin(), remarks.end());
    }
    showKinds(options, result.document, std::move(harmonics), "harmonics", harmonicTable);
}

void checkLibrary(const CheckOptions& options) {
    if (!checkConformance(Library(options.library), std::cout)) {
        throw Failure(ExitCode::refused, "the library fails conformance checks");
    }
}

void generateRecording(const GenerateOptions& options) {
    std::optional<Activity> activity(std::in_place, "generating");
    const Recording recording = generate(options.settings);
    activity.reset();
    writeOutput(options.file, [&](std::ostream& out) { writeCsv(recording, options.digits, out); });
}

}  // namespace rt305
