#include <algorithm>
#include <filesystem>
#include <iostream>
#include <optional>

#include "base/failure.h"
#include "base/text.h"
#include "cli/commands.h"
#include "cli/messages.h"
#include "cli/output_file.h"
#include "cli/progress.h"
#include "writing/comtrade_writer.h"
#include "writing/conversion.h"
#include "writing/sample_writers.h"

namespace rt305 {

namespace {

namespace fs = std::filesystem;

/// "cfg", "cff", "csv", "wav" or "npy": the form that the user names, else the extension of the output.
std::string formOf(const ConvertOptions& options) {
    static const std::vector<std::string> forms{"cfg", "cff", "csv", "wav", "npy"};
    const std::string extension = lowerCase(fs::path(options.file).extension().string());
    std::string form = !options.form.empty() ? options.form : extension.empty() ? "" : extension.substr(1);
    form = form == "dat" ? "cfg" : form;
    if (std::find(forms.begin(), forms.end(), form) == forms.end()) {
        failUsage(options.file.empty() ? "convert needs -o FILE, or --to csv, cff, wav or npy for stdout"
                                       : "-o " + options.file +
                                             ": the extension is not .cfg, .cff, .csv, .wav or .npy; --to says what "
                                             "to write");
    }
    if (form == "cfg" && options.file.empty()) {
        failUsage("a COMTRADE pair needs -o FILE; --to cff is one file");
    }
    return form;
}

void writeForm(const std::string& form, const ConvertOptions& options, const Recording& recording, std::ostream& out) {
    if (form == "cff") {
        writeComtradeFile(recording, options.samples, out);
    } else if (form == "csv") {
        writeSampleTable(recording, out);
    } else if (form == "npy") {
        writeNumpy(recording, out);
    } else {
        out << soundFile(recording);
    }
}

/// Writes FILE.cfg and FILE.dat, the data first.
void writePair(const ConvertOptions& options, const std::vector<SourceFile>& inputs, const Recording& recording) {
    const auto named = [&options](const char* extension) {
        return fs::path(options.file).replace_extension(extension).string();
    };
    refuseInputAsOutput(named(".cfg"), inputs);
    refuseInputAsOutput(named(".dat"), inputs);
    writeOutput(named(".dat"), [&](std::ostream& out) { writeComtradeData(recording, options.samples, out); });
    writeOutput(named(".cfg"), [&](std::ostream& out) { writeComtradeConfiguration(recording, options.samples, out); });
}

/// The largest difference between the delays of two columns, in s.
double spreadOfDelays(const Recording& recording) {
    const auto [least, most] = std::minmax_element(
        recording.columns.begin(), recording.columns.end(),
        [](const Column& one, const Column& other) { return one.delaySeconds < other.delaySeconds; });
    return most->delaySeconds - least->delaySeconds;
}

bool isComtrade(const std::string& form) {
    return form == "cff" || form == "cfg";
}

/// Says what the output does not have of the recording.
void noteLosses(const Recording& recording, const Recording& result, const ConvertOptions& options,
                const std::string& form) {
    if (recording.segments.size() > 1) {
        note("one of " + std::to_string(recording.segments.size()) + " segments is written; --segment chooses it");
    }
    for (const Column& column : recording.columns) {
        if (!column.fault.empty() && options.conversion.only.empty()) {
            note("left out: " + column.fault);
        }
    }
    std::string names;
    for (const Column& column : result.columns) {
        names += (names.empty() ? "" : ",") + headingOf(column);
    }
    if (isComtrade(form)) {
        if (recording.fact("Trigger").empty() && !recording.fact("Start").empty()) {
            note("the recording has no time of a trigger; the record has that of its first sample instead");
        }
    } else if (const double apart = 1e6 * spreadOfDelays(result); apart > 0.0) {
        note("the channels were sampled up to " + formatNumber(apart, 4) +
             " us apart, which this form cannot say: angles between channels are no longer corrected; write COMTRADE");
    }
    if (form == "wav") {
        note("WAV has no names and units; read it with --columns " + inQuotes(names));
    }
}

Conversion conversionOf(const ConvertOptions& options) {
    const MeasurementSettings& settings = options.measure.settings;
    if (settings.durationCycles > 0.0) {
        failUsage("convert takes a --duration in seconds");
    }
    Conversion conversion = options.conversion;
    conversion.segment = settings.segment;
    conversion.startSeconds = settings.startSeconds;
    conversion.durationSeconds = settings.durationSeconds;
    conversion.nominalHz = settings.nominalHz;
    return conversion;
}

}  // namespace

void convertRecording(const ConvertOptions& options) {
    const std::string form = formOf(options);
    const Recording recording = readShowingProgress(options.measure.file, options.measure.reading);
    warnAll(recording.warnings);
    std::optional<Activity> activity(std::in_place, "converting");
    const Recording result = converted(recording, conversionOf(options));
    activity.reset();
    if (isComtrade(form)) {
        requireFiniteSamples(result);
    }
    noteLosses(recording, result, options, form);
    if (form == "cfg") {
        return writePair(options, recording.files, result);
    }
    refuseInputAsOutput(options.file, recording.files);
    writeOutput(options.file, [&](std::ostream& out) { writeForm(form, options, result, out); });
}

}  // namespace rt305
