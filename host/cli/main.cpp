/// rt305 - measures recordings with libRT305_4.so.1 as any host does: through its C interface, loaded at run time.

#include <CLI/CLI.hpp>
#include <iostream>
#include <type_traits>

#include "base/failure.h"
#include "base/terminal.h"
#include "base/text.h"
#include "base/version.h"
#include "cli/command_texts.h"
#include "cli/commands.h"
#include "cli/manual.h"
#include "cli/messages.h"
#include "cli/notices.h"
#include "cli/options.h"
#include "cli/process.h"
#include "cli/settings_file.h"
#include "cli/suggestion.h"

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

std::vector<std::string> commandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

/// The command of that name; null when there is none.
const CLI::App* findCommand(const CLI::App& app, const std::string& name) {
    const auto found = app.get_subcommands([&name](const CLI::App* command) { return command->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

[[noreturn]] void failUnknownCommand(const CLI::App& app, const std::string& name) {
    const std::string suggestion = suggestionFor(name, commandNames(app));
    failUsage("there is no command " + inQuotes(name) + (suggestion.empty() ? "; see rt305 help" : suggestion));
}

void showHelp(const CLI::App& app, const std::string& name) {
    const CLI::App* const command = name.empty() ? &app : findCommand(app, name);
    if (command == nullptr) {
        failUnknownCommand(app, name);
    }
    std::cout << helpText(*command, textWidth());
}

/// Says what is wrong with the arguments of a command.
[[noreturn]] void failParse(const CLI::App& app, const CLI::ParseError& error) {
    const auto parsed = app.get_subcommands();
    if (parsed.empty()) {
        failUsage(app.remaining_size() > 0 ? "there is no option " + inQuotes(app.remaining()[0]) + "; see rt305 help"
                                           : "no command is given; see rt305 help");
    }
    const CLI::App& command = *parsed.front();
    const std::string hint = "; see rt305 help " + command.get_name();
    const std::vector<std::string> surplus = command.remaining();
    if (surplus.empty()) {
        const std::string problem = error.what();
        const std::size_t isSwitch = problem.find(" was given a disallowed flag override");
        failUsage((isSwitch < problem.size() ? "--" + problem.substr(0, isSwitch) + " takes no value" : problem) +
                  hint);
    }
    const std::string word = surplus[0].substr(0, surplus[0].find('='));
    if (word[0] != '-') {
        failUsage(inQuotes(word) + " is one argument too many" + hint);
    }
    std::vector<std::string> names;
    for (const OptionText& option : textOf(command).options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    const std::string suggestion = suggestionFor(word, names);
    failUsage("there is no option " + word + (suggestion.empty() ? hint : suggestion));
}

/// What the arguments say.
struct CommandLine {
    int exitCode = static_cast<int>(ExitCode::success);
    MeasureOptions measure;
    BatchOptions batch;
    QualityOptions quality;
    ReportOptions report;
    CheckOptions check;
    ConvertOptions convert;
    GenerateOptions generate;
    std::string helped;
};

/// Of the commands that write JSON.
template <class Options>
void keepGiven(const GivenOptions& given, Options& options) {
    if constexpr (std::is_base_of_v<FileOptions, Options>) {
        options.each.given = given;
    } else if constexpr (std::is_same_v<Options, MeasureOptions>) {
        options.given = given;
    }
}

template <class Run, class Options>
CLI::App& addCommand(CLI::App& app, const char* name, const char* help, Run run, Options& options) {
    CLI::App* const added = app.add_subcommand(name, help);
    added->get_help_ptr()->group("Help");
    added->final_callback([run, added, &options] {
        applySettings(*added);
        keepGiven(givenOptions(*added), options);
        run(options);
    });
    return *added;
}

void addMeasuringCommands(CLI::App& app, CommandLine& line) {
    MeasureOptions& measure = line.measure;
    addInfoOptions(addCommand(app, "info", "show what a recording contains; needs no library", showRecording, measure),
                   measure);
    const auto runBatch = [&line](const BatchOptions& options) { line.exitCode = measureEverything(options); };
    addBatchOptions(
        addCommand(app, "measure", "measure all quantities, of many files and windows", runBatch, line.batch),
        line.batch);
    const auto runQuality = [&line](const QualityOptions& options) { line.exitCode = analyseQuality(options); };
    addQualityOptions(addCommand(app, "quality", "find events, and measure power quality over time, of many files",
                                 runQuality, line.quality),
                      line.quality);
    const auto runReport = [&line](const ReportOptions& options) { line.exitCode = writeReports(options); };
    addReportOptions(addCommand(app, "report", "write a report as an HTML page, of many files", runReport, line.report),
                     line.report);
    CLI::App& params = addCommand(app, "params", "measure the electrical parameters", showParameters, measure);
    addMeasureOptions(params, measure);
    addParameterOptions(params, measure.settings);
    addMeasureOptions(addCommand(app, "signals", "measure the statistics of each signal", showSignals, measure),
                      measure);
    CLI::App& spectrum = addCommand(app, "spectrum", "find the largest lines of each spectrum", showSpectra, measure);
    addMeasureOptions(spectrum, measure);
    addSpectrumOptions(spectrum, measure.settings);
    addMeasureOptions(addCommand(app, "distortion", "measure the harmonics of each signal", showHarmonics, measure),
                      measure);
}

void addOtherCommands(CLI::App& app, CommandLine& line) {
    addConvertOptions(
        addCommand(app, "convert", "write a recording as COMTRADE, CSV, WAV or NumPy", convertRecording, line.convert),
        line.convert);
    addGenerateOptions(
        addCommand(app, "generate", "write a recording with known content as CSV", generateRecording, line.generate),
        line.generate);
    addCommand(app, "check", "run the conformance checks on a library", checkLibrary, line.check)
        .add_option("LIB", line.check.library, "library file (default: the one that the other commands use)")
        ->type_name("");
    const auto runHelp = [&app](const std::string& name) { showHelp(app, name); };
    addCommand(app, "help", "show the help of a command", runHelp, line.helped)
        .add_option("COMMAND", line.helped, "command (default: a list of all)")
        ->type_name("");
    app.set_version_flag("--version", "rt305 " + std::string(toolVersion), "show the version");
    app.add_flag_callback(
        "--licenses",
        [] {
            std::cout << notices;
            throw CLI::Success();
        },
        "show the notices of the parts of others that rt305 and its reports contain");
    addManualOptions(app);
}

/// Lets switches take no value: --json=no would be a switch that is on.
void refuseValuesOfSwitches(CLI::App& app) {
    for (CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
        for (CLI::Option* const option : command->get_options()) {
            option->disable_flag_override(option->get_items_expected_max() == 0);
        }
    }
}

int runCommandLine(int argc, char** argv) {
    CLI::App app("measures sampled three-phase voltages and currents with libRT305_4.so.1", "rt305");
    app.formatter_fn(
        [](const CLI::App* shown, const std::string&, CLI::AppFormatMode) { return helpText(*shown, textWidth()); });
    app.set_help_flag("-h,--help", "show this help");
    app.require_subcommand(1);
    app.footer(exitCodeText);
    CommandLine line;
    addMeasuringCommands(app, line);
    addOtherCommands(app, line);
    refuseValuesOfSwitches(app);

    if (argc > 1 && argv[1][0] != '-' && findCommand(app, argv[1]) == nullptr) {
        failUnknownCommand(app, argv[1]);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
            failParse(app, error);
        }
        app.exit(error);
    }
    flushStdout();
    return line.exitCode;
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
