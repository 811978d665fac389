#include "commands.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

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
    std::string heading = recording.source + "\n" + describe(measurement) + ", library " + library.version() + "\n\n";
    return {std::move(measurement), std::move(texts), std::move(heading)};
}

void warnOfRate(const Measurement& measurement) {
    if (measurement.inputType == RT305_4_INPUT_VOLTAGES_AND_CURRENTS && !measurement.isAtParameterRate()) {
        warn("the library takes the samples as 10000 a second, but they were taken at " +
             formatNumber(measurement.rateHz) +
             " Hz: frequencies read wrong, THD and power may be wrong or missing; voltages and currents are right");
    }
}

}  // namespace

void showRecording(const MeasureOptions& options) {
    std::cout << reportRecording(readRecording(options), options.settings.columns);
}

void showParameters(const MeasureOptions& options) {
    const Measured result = measure(options, RT305_4_OPERATION_PARAMETERS);
    warnOfRate(result.measurement);
    if (options.json) {
        std::cout << result.texts.parameters << '\n';
        return;
    }
    const auto parameters = readParameters(result.texts.parameters);
    std::cout << result.heading << reportParameters(parameters) << '\n';
    for (const std::string& remark : remarksOn(parameters, result.measurement)) {
        std::cout << wrapped(remark, 100);
    }
}

void showSignals(const MeasureOptions& options) {
    const Measured result = measure(options, RT305_4_OPERATION_SIGNALS);
    std::cout << (options.json ? "" : result.heading);
    const char* gap = "";
    for (const std::string& text : {result.texts.voltageSignals, result.texts.currentSignals}) {
        if (text.empty()) {
            continue;
        }
        std::cout << (options.json ? text + '\n' : gap + reportSignals(readSignals(text)));
        gap = "\n";
    }
    if (!options.json) {
        std::cout << "\nThe library removes each channel's offset first, so the means are close to zero.\n";
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
