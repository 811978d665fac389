#ifndef RT305_HOST_COMMANDS_H
#define RT305_HOST_COMMANDS_H

#include <string>

#include "generator.h"
#include "measurement.h"
#include "read_options.h"

namespace rt305 {

/// The tool's subcommands. Data go to stdout, warnings to stderr; what ends a command is thrown as Failure.

struct MeasureOptions {
    std::string file;  // "-": stdin
    ReadOptions reading;
    MeasurementSettings settings;
    std::string library;  // empty: searched for
    bool json = false;
};

struct GenerateOptions {
    GeneratorSettings settings;
    int digits = 6;
    std::string file;  // empty: stdout
};

struct CheckOptions {
    std::string library;  // empty: searched for
};

void showRecording(const MeasureOptions& options);
void showParameters(const MeasureOptions& options);
void showSignals(const MeasureOptions& options);
void showSpectra(const MeasureOptions& options);
void showHarmonics(const MeasureOptions& options);
void checkLibrary(const CheckOptions& options);
void generateRecording(const GenerateOptions& options);

}  // namespace rt305

#endif
