/// rt305 - measures recordings with libRT305_4.so.1 as any host does: through its C interface, loaded at run time.

#include <CLI/CLI.hpp>
#include <iostream>

#include "base/failure.h"
#include "cli/commands.h"
#include "cli/manual.h"
#include "cli/messages.h"
#include "cli/notices.h"
#include "cli/options.h"
#include "cli/process.h"

namespace {

using namespace rt305;

/// Hidden options with which the build makes the manual page and the completions.
void addManualOptions(CLI::App& app) {
    app.add_flag_callback("--man",
                          [&app] {
                              std::cout << manualPage(app);
                              throw CLI::Success();
                          })
        ->group("");
    app.add_option_function<std::string>("--completion",
                                         [&app](const std::string& shell) {
                                             std::cout << completion(app, shell);
                                             throw CLI::Success();
                                         })
        ->check(CLI::IsMember({"bash", "zsh"}))
        ->group("");
}

int runCommandLine(int argc, char** argv) {
    CLI::App app("Measures sampled three-phase voltages and currents with libRT305_4.so.1.");
    app.require_subcommand(1);
    app.footer(exitCodeText);

    int exitCode = static_cast<int>(ExitCode::success);
    MeasureOptions measure;
    BatchOptions batch;
    QualityOptions quality;
    ReportOptions report;
    CheckOptions check;
    GenerateOptions generate;
    const auto command = [&app](const char* name, const char* help, auto run, auto& options) {
        CLI::App* const added = app.add_subcommand(name, help);
        added->final_callback([run, &options] { run(options); });
        return added;
    };
    addInfoOptions(*command("info", "show what a recording contains; needs no library", showRecording, measure),
                   measure);
    const auto runBatch = [&exitCode](const BatchOptions& options) { exitCode = measureEverything(options); };
    addBatchOptions(*command("measure", "measure all quantities, of many files and windows", runBatch, batch), batch);
    const auto runQuality = [&exitCode](const QualityOptions& options) { exitCode = analyseQuality(options); };
    addQualityOptions(
        *command("quality", "find events, and measure power quality over time, of many files", runQuality, quality),
        quality);
    addReportOptions(*command("report", "write a report as one HTML page", writeReport, report), report);
    CLI::App* const params = command("params", "measure the electrical parameters", showParameters, measure);
    addMeasureOptions(*params, measure);
    addParameterOptions(*params, measure.settings);
    addMeasureOptions(*command("signals", "measure the statistics of each signal", showSignals, measure), measure);
    CLI::App* const spectrum = command("spectrum", "find the largest lines of each spectrum", showSpectra, measure);
    addMeasureOptions(*spectrum, measure);
    addSpectrumOptions(*spectrum, measure.settings);
    addMeasureOptions(*command("distortion", "measure the harmonics of each signal", showHarmonics, measure), measure);
    command("check", "run the conformance checks on a library", checkLibrary, check)
        ->add_option("LIB", check.library, "library file (default: the one that the other commands use)")
        ->type_name("");
    addGenerateOptions(*command("generate", "write a recording with known content as CSV", generateRecording, generate),
                       generate);
    app.add_flag_callback(
        "--licenses",
        [] {
            std::cout << notices;
            throw CLI::Success();
        },
        "show the notices of the parts of others that rt305 and its reports contain");
    addManualOptions(app);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        exitCode = static_cast<int>(app.exit(error) == 0 ? ExitCode::success : ExitCode::usage);
    }
    flushStdout();
    return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    prepareProcess();
    try {
        return ending(runCommandLine(argc, argv));
    } catch (const std::exception& error) {
        const Ending end = endingOf(error);
        printMessage(end.message);
        return ending(static_cast<int>(end.code));
    }
}
