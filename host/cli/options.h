#ifndef RT305_HOST_CLI_OPTIONS_H
#define RT305_HOST_CLI_OPTIONS_H

#include <CLI/CLI.hpp>

#include "cli/commands.h"

namespace rt305 {

/// The options of the subcommands. Each function adds to a command the options that fill in the given settings.

/// The options of a command that decide on its figures, as given: not those for files, the library and output.
GivenOptions givenOptions(const CLI::App& command);

void addRecordingOptions(CLI::App& command, MeasureOptions& options);  // the file and how it is read
void addInfoOptions(CLI::App& command, MeasureOptions& options);
void addMeasureOptions(CLI::App& command, MeasureOptions& options);  // of all commands for a single operation
void addParameterOptions(CLI::App& command, MeasurementSettings& settings);
void addSpectrumOptions(CLI::App& command, MeasurementSettings& settings);
void addBatchOptions(CLI::App& command, BatchOptions& options);
void addQualityOptions(CLI::App& command, QualityOptions& options);
void addReportOptions(CLI::App& command, ReportOptions& options);
void addConvertOptions(CLI::App& command, ConvertOptions& options);
void addGenerateOptions(CLI::App& command, GenerateOptions& options);

}  // namespace rt305

#endif
