#include "commands.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "conformance.h"
#include "failure.h"
#include "library.h"
#include "recording_reader.h"
#include "recording_report.h"
#include "remarks.h"
#include "reports.h"
#include "results.h"
#include "text.h"

namespace rt305 {

namespace {

void warn(const std::string& message) {
    std::cerr << "rt305: warning: " << message << '\n';
}

void note(const std::string& message) {
    std::cerr << "rt305: note: " << message << '\n';
}

Recording read(const MeasureOptions& options) {
    Recording recording = readRecording(options.file, options.reading);
    std::for_each(recording.warnings.begin(), recording.warnings.end(), warn);
    return recording;
}

struct Measured {
    Measurement measurement;
    ResultTexts texts;
    std::string heading;
};

Measured measure(const MeasureOptions& options, std::uint32_t operation) {
    const Recording recording = read(options);
    Measurement measurement = makeMeasurement(
        recording, options.settings, operation == RT305_4_OPERATION_SIGNALS ? RateMatters::no : RateMatters::yes);
    std::for_each(measurement.notes.begin(), measurement.notes.end(), note);
    std::for_each(measurement.warnings.begin(), measurement.warnings.end(), warn);
    const Library library(options.library);
    ResultTexts texts = library.measure(measurement, operation);
    std::string heading = recording.source + "\n" + describe(measurement) + ", library " + library.version() + "\n";
    return {std::move(measurement), std::move(texts), std::move(heading)};
}

/// The library has its own idea of the rate when it measures frequencies: fixed by what is measured.
void warnOfRate(const Measurement& measurement, const char* consequence) {
    if (measurement.isAtAssumedRate()) {
        return;
    }
    const double assumed = measurement.assumedRateHz();
    warn("the library takes the samples as " + formatNumber(assumed) + " a second, but they were taken at " +
         formatNumber(measurement.rateHz) + " Hz: frequencies read " + formatNumber(assumed / measurement.rateHz, 4) +
         " times what they are" + consequence);
}

/// Shows the two texts of an operation, as they stand or as tables.
template <class Read, class Report>
void showBothKinds(const MeasureOptions& options, const Measured& result, Read read, Report report) {
    std::cout << (options.json ? "" : result.heading);
    for (const std::string& text : {result.texts.voltages, result.texts.currents}) {
        if (!text.empty()) {
            std::cout << (options.json ? text + '\n' : '\n' + report(read(text)));
        }
    }
}

}  // namespace

void showRecording(const MeasureOptions& options) {
    std::cout << reportRecording(read(options), options.settings.columns);
}

void showParameters(const MeasureOptions& options) {
    const Measured result = measure(options, RT305_4_OPERATION_PARAMETERS);
    if (result.measurement.isCombined()) {
        warnOfRate(result.measurement, ", THD and power may be wrong or missing, voltages and currents are right");
    }
    if (options.json) {
        std::cout << result.texts.parameters << '\n';
        return;
    }
    const auto parameters = readParameters(result.texts.parameters);
    std::cout << result.heading << describeMethods(result.measurement) << "\n\n"
              << reportParameters(parameters) << '\n';
    for (const std::string& remark : remarksOn(parameters, result.measurement)) {
        std::cout << wrapped(remark, 100);
    }
}

void showSignals(const MeasureOptions& options) {
    showBothKinds(options, measure(options, RT305_4_OPERATION_SIGNALS), readSignals, reportSignals);
    if (!options.json) {
        std::cout << "\nThe library removes each channel's offset first, so the means are close to zero.\n";
    }
}

void showSpectra(const MeasureOptions& options) {
    const Measured result = measure(options, RT305_4_OPERATION_SPECTRUM);
    warnOfRate(result.measurement, "");
    showBothKinds(options, result, readSpectra, reportSpectra);
}

void showHarmonics(const MeasureOptions& options) {
    const Measured result = measure(options, RT305_4_OPERATION_DISTORTION);
    warnOfRate(result.measurement, "");
    if (const std::string remark = remarkOnLength(result.measurement); !remark.empty()) {
        warn(remark);
    }
    showBothKinds(options, result, readHarmonics, reportHarmonics);
    if (!options.json) {
        std::cout << "\n0 dB is 1 V or 1 A RMS; % is of the fundamental.\n";
    }
}

void checkLibrary(const CheckOptions& options) {
    if (!checkConformance(Library(options.library), std::cout)) {
        throw Failure(ExitCode::refused, "the library breaks promises of its interface");
    }
}

void generateRecording(const GenerateOptions& options) {
    const Recording recording = generate(options.settings);
    if (options.file.empty()) {
        writeCsv(recording, options.digits, std::cout);
        return;
    }
    std::ofstream file(options.file, std::ios::binary);
    writeCsv(recording, options.digits, file);
    file.close();
    if (!file) {
        failInput(options.file + ": " + std::strerror(errno));
    }
}

}  // namespace rt305
