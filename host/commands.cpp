#include "commands.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "conformance.h"
#include "csv_reader.h"
#include "failure.h"
#include "library.h"
#include "remarks.h"
#include "reports.h"
#include "results.h"
#include "text.h"

namespace rt305 {

namespace {

void warn(const std::string& message) {
    std::cerr << "rt305: warning: " << message << '\n';
}

std::string contentOf(std::istream& stream, const std::string& name) {
    std::string content;
    std::vector<char> block(std::size_t{1} << 16);
    do {  // read reports what an iterator would throw, such as a folder in place of a file
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        content.append(block.data(), static_cast<std::size_t>(stream.gcount()));
    } while (stream);
    if (stream.bad()) {
        failInput(name + ": " + std::strerror(errno));
    }
    return content;
}

Recording readRecording(const MeasureOptions& options) {
    const bool fromStdin = options.file == "-";
    std::ifstream file;
    if (!fromStdin) {
        file.open(options.file, std::ios::binary);
        if (!file) {
            failInput(options.file + ": " + std::strerror(errno));
        }
    }
    Recording recording = fromStdin ? readCsv(contentOf(std::cin, "stdin"), "stdin", options.rateHz)
                                    : readCsv(contentOf(file, options.file), options.file, options.rateHz);
    for (const std::string& warning : recording.warnings) {
        warn(warning);
    }
    return recording;
}

struct Measured {
    Measurement measurement;
    ResultTexts texts;
    std::string heading;
};

Measured measure(const MeasureOptions& options, std::uint32_t operation) {
    const Recording recording = readRecording(options);
    Measurement measurement = makeMeasurement(recording, options.settings);
    for (const std::string& warning : measurement.warnings) {
        warn(warning);
    }
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
         " times what they are" + consequence + "; resample the recording to " + formatNumber(assumed) + " Hz" +
         (measurement.isCombined() ? "" : ", or give all six channels at " + formatNumber(combinedRateHz) + " Hz"));
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
    std::cout << reportRecording(readRecording(options), options.settings.columns);
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
