/// rt305 - measures recordings with libRT305_4.so.1 as any host does: through its C interface, loaded at run time.

#include <CLI/CLI.hpp>
#include <iostream>
#include <map>
#include <new>

#include "base/failure.h"
#include "base/text.h"
#include "base/units.h"
#include "cli/commands.h"
#include "cli/manual.h"
#include "cli/messages.h"
#include "measuring/power_methods.h"

namespace {

using namespace rt305;

/// An option whose words stand for a value under a mask of the measurement or spectrum flags.
struct FlagOption {
    const char* name;
    const char* help;
    std::uint32_t mask;
    std::map<std::string, std::uint32_t> words;
};

/// What every measurement does with the samples first.
const std::vector<FlagOption>& sampleOptions() {
    static const std::vector<FlagOption> options{
        {"--two-currents",
         "rebuild the current of this phase from the other two; it need not be recorded",
         RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_MASK,
         {{"a", RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_A},
          {"b", RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_B},
          {"c", RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_C}}},
        {"--source",
         "simulated (default): samples are V and A; real: they are counts that gain and resistance scale",
         RT305_4_SIMULATED_SOURCE_MASK,
         {{"real", 0}, {"simulated", RT305_4_SIMULATED_SOURCE_MASK}}},
    };
    return options;
}

/// What everything at once leaves to choose.
const std::vector<FlagOption>& batchOptions() {
    static const std::vector<FlagOption> options{
        {"--wiring",
         "four (default): Ua, Ub, Uc are phase voltages; three: they are line voltages ab, bc, ca",
         RT305_4_FOUR_WIRE,
         {{"three", 0}, {"four", RT305_4_FOUR_WIRE}}},
        sampleOptions()[0]};
    return options;
}

std::map<std::string, std::uint32_t> powerWords() {
    std::map<std::string, std::uint32_t> words{{"none", RT305_4_POWER_NONE}};
    for (const PowerMethod& method : powerMethods) {
        words.emplace(method.name, method.flag);
    }
    return words;
}

const std::vector<FlagOption>& parameterOptions() {
    static const std::vector<FlagOption> options{
        batchOptions()[0],
        {"--frequency",
         "where the fundamental must lie: fixed (default) inside 49.6-50.4 Hz, control inside 10-60 Hz",
         RT305_4_FREQUENCY_CONTROL,
         {{"fixed", 0}, {"control", RT305_4_FREQUENCY_CONTROL}}},
        {"--power", "how power is measured (default none)", RT305_4_POWER_MASK, powerWords()},
    };
    return options;
}

const std::vector<FlagOption>& spectrumOptions() {
    static const std::vector<FlagOption> options{
        {"--window",
         "the weighting of the samples (default rect)",
         RT305_4_SPECTRUM_WINDOW_MASK,
         {{"rect", RT305_4_SPECTRUM_WINDOW_RECT},
          {"hann", RT305_4_SPECTRUM_WINDOW_HANN},
          {"hamming", RT305_4_SPECTRUM_WINDOW_HAMMING},
          {"kaiser", RT305_4_SPECTRUM_WINDOW_KAISER}}},
        {"--mode",
         "1 (default): fine lines up to 1000 Hz (250 Hz for voltages or currents alone); 2: coarser lines up to half "
         "the rate",
         RT305_4_SPECTRUM_MODE_MASK,
         {{"1", RT305_4_SPECTRUM_MODE_1}, {"2", RT305_4_SPECTRUM_MODE_2}}},
    };
    return options;
}

struct FlagSwitch {
    const char* name;
    const char* help;
    std::uint32_t flag;
};

constexpr FlagSwitch parameterSwitches[] = {
    {"--keep-rebuilt-rms", "RMS of the rebuilt current from its samples, not the mean of the other two",
     RT305_4_KEEP_REBUILT_RMS},
    {"--invert-p", "turn the sign of the total active power", RT305_4_NEGATE_ACTIVE_POWER},
    {"--invert-q", "turn the sign of the total reactive power", RT305_4_NEGATE_REACTIVE_POWER},
};

/// "3:8:-70" -> order, percent, degrees (0 when not given).
Harmonic parseHarmonic(const std::string& text) {
    const auto fields = split(text, ':');
    const auto order = parseCount(fields[0]);
    const auto percent = fields.size() > 1 ? parseNumber(fields[1]) : std::nullopt;
    const auto degrees = fields.size() > 2 ? parseNumber(fields[2]) : 0.0;
    if (!order || *order < 1 || *order > 10000 || !percent || !degrees || fields.size() > 3) {
        failUsage("the harmonic " + inQuotes(text) + " is not of the form ORDER:PERCENT[:DEGREES]");
    }
    return {static_cast<int>(*order), *percent, *degrees};
}

/// "Ia:1000:64" -> channel, first sample, number of samples.
Dropout parseDropout(const std::string& text) {
    const auto fields = split(text, ':');
    const auto channel = findChannel(fields[0]);
    const auto start = fields.size() == 3 ? parseCount(fields[1]) : std::nullopt;
    const auto count = fields.size() == 3 ? parseCount(fields[2]) : std::nullopt;
    if (!channel || !start || !count) {
        failUsage("the dropout " + inQuotes(text) + " is not of the form CHANNEL:START:COUNT");
    }
    return {*channel, *start, *count};
}

void addPerChannelOption(CLI::App& command, const std::string& name, const std::string& help,
                         PerChannel<double>& values) {
    command
        .add_option_function<std::string>(
            name, [name, &values](const std::string& text) { values = parsePerChannel(name, text, values[0]); },
            help + ": six numbers or Ua=..,Ib=..")
        ->type_name("LIST");
}

template <class Item>
void addRepeatedOption(CLI::App& command, const char* name, const char* form, const char* help,
                       std::vector<Item>& items, Item (*parse)(const std::string&)) {
    command
        .add_option_function<std::vector<std::string>>(
            name,
            [&items, parse](const std::vector<std::string>& texts) {
                std::transform(texts.begin(), texts.end(), std::back_inserter(items), parse);
            },
            help)
        ->type_name(form)
        ->allow_extra_args(false);
}

/// "Ua=325,2=10" -> names or numbers of columns with factors.
std::vector<std::pair<std::string, double>> parseGains(const std::string& text) {
    std::vector<std::pair<std::string, double>> gains;
    for (const std::string_view item : split(text, ',')) {
        const std::size_t equals = std::min(item.rfind('='), item.size());
        const auto factor = parseNumber(trimmed(item.substr(std::min(equals + 1, item.size()))));
        if (!factor || equals == 0) {
            failUsage("--gain: " + inQuotes(item) + " is not of the form COLUMN=FACTOR");
        }
        gains.emplace_back(trimmed(item.substr(0, equals)), *factor);
    }
    return gains;
}

/// How the file is to be read.
void addReadOptions(CLI::App& command, ReadOptions& reading) {
    command.add_option("--rate", reading.rateHz, "sample rate in Hz, whatever the file says of time")
        ->check(CLI::PositiveNumber)
        ->type_name("HZ");
    command
        .add_option_function<std::string>(
            "--columns",
            [&reading](const std::string& text) {
                for (const std::string_view name : split(text, ',')) {
                    reading.columns.emplace_back(name);
                }
            },
            "names for the columns of a file, such as time,Ua(V),Ub(V)")
        ->type_name("LIST");
    command
        .add_option_function<std::string>(
            "--gain", [&reading](const std::string& text) { reading.gains = parseGains(text); },
            "factors on the samples of columns by name or number: COLUMN=FACTOR,...; for sound files V or A at full "
            "scale")
        ->type_name("LIST");
    auto* const primary = command.add_flag_function(
        "--primary", [&reading](std::int64_t) { reading.side = Transformer::Side::primary; },
        "values on the primary side of the instrument transformers (default: as written)");
    command
        .add_flag_function(
            "--secondary", [&reading](std::int64_t) { reading.side = Transformer::Side::secondary; },
            "values on the secondary side")
        ->excludes(primary);
    command.add_flag("--sqrt2", reading.storedAsRms,
                     "multiply by sqrt(2): the recorder stored instantaneous values divided by it");
    command.add_option("--encoding", reading.encoding, "of texts that are not UTF-8, such as windows-1251 or GB18030")
        ->type_name("NAME");
}

/// "0.2", "0.2s" or "200ms" in seconds.
double parseTime(const std::string& option, const std::string& text) {
    const std::size_t end = std::min(text.find_last_of("0123456789.") + 1, text.size());
    const std::string_view unit = trimmed(std::string_view(text).substr(end));
    const auto value = parseNumber(std::string_view(text).substr(0, end));
    const Unit known = unitOf(unit);
    if (!value || *value < 0.0 || !(unit.empty() || known.quantity == Quantity::time)) {
        failUsage(option + ": " + inQuotes(text) + " is not a time such as 0.2s or 200ms");
    }
    return *value * known.factor;
}

void addTimeOption(CLI::App& command, const std::string& name, double& seconds, const std::string& help) {
    command
        .add_option_function<std::string>(
            name, [name, &seconds](const std::string& text) { seconds = parseTime(name, text); }, help)
        ->type_name("TIME");
}

/// What of the file is to be measured.
void addPartOptions(CLI::App& command, MeasurementSettings& settings) {
    command
        .add_option("--segment", settings.segment,
                    "which segment to measure (default: the longest at the highest rate)")
        ->type_name("N");
    addTimeOption(command, "--start", settings.startSeconds, "where in the segment to start");
    addTimeOption(command, "--duration", settings.durationSeconds,
                  "how much to measure (default: to the segment's end)");
}

constexpr const char* fileHelp = "recording: CSV, COMTRADE (.cfg, .dat or .cff), WAV or FLAC; - reads stdin";

void addColumnOptions(CLI::App& command, MeasureOptions& options) {
    command
        .add_option_function<std::string>(
            "--map", [&options](const std::string& text) { options.settings.columns = parseColumnMap("--map", text); },
            "which column holds which channel, by name or number from 1: Ua=COLUMN,Ub=COLUMN,...")
        ->type_name("LIST");
    addReadOptions(command, options.reading);
}

void addRecordingOptions(CLI::App& command, MeasureOptions& options) {
    command.add_option("FILE", options.file, fileHelp)->required()->type_name("");
    addColumnOptions(command, options);
}

void addFlagOptions(CLI::App& command, const std::vector<FlagOption>& options, std::uint32_t& flags) {
    for (const FlagOption& option : options) {
        command
            .add_option_function<std::string>(
                option.name,
                [&flags, &option](const std::string& word) { flags = (flags & ~option.mask) | option.words.at(word); },
                option.help)
            ->check(CLI::IsMember(option.words));
    }
}

void addFormOptions(CLI::App& command, OutputForm& form) {
    struct FormSwitch {
        const char* name;
        OutputForm form;
        const char* help;
    };
    constexpr FormSwitch switches[] = {
        {"--json", OutputForm::json, "one JSON document of everything that the tables show"},
        {"--json-lines", OutputForm::jsonLines, "the same on one line for each file and window"},
        {"--csv", OutputForm::csv, "one figure a line: file,start,table,quantity,column,value,unit"},
        {"--plain", OutputForm::plain, "the same with tabs between the fields and no heading"},
        {"--raw", OutputForm::raw, "the library's own texts, byte for byte"},
    };
    for (const FormSwitch& one : switches) {
        command.add_flag_function(
            one.name,
            [&form, to = one.form](std::int64_t) {
                if (form != OutputForm::text) {
                    failUsage("give one of --json, --json-lines, --csv, --plain and --raw");
                }
                form = to;
            },
            one.help);
    }
}

void addCommonOptions(CLI::App& command, MeasureOptions& options) {
    addPartOptions(command, options.settings);
    static const std::map<std::string, std::uint32_t> types{{"voltages", RT305_4_INPUT_VOLTAGES},
                                                            {"currents", RT305_4_INPUT_CURRENTS},
                                                            {"all", RT305_4_INPUT_VOLTAGES_AND_CURRENTS}};
    command
        .add_option_function<std::string>(
            "--type", [&options](const std::string& word) { options.settings.inputType = types.at(word); },
            "what to measure (default: by the channels that are there)")
        ->check(CLI::IsMember(types));
    addPerChannelOption(command, "--coefficients", "factors on the samples, default 1", options.settings.coefficients);
    command.add_option("--library", options.library, "the library file to use")->type_name("FILE");
}

void addMeasureOptions(CLI::App& command, MeasureOptions& options) {
    addRecordingOptions(command, options);
    addCommonOptions(command, options);
    addFormOptions(command, options.form);
    command.add_flag_function(
        "--no-resample", [&options](std::int64_t) { options.settings.resample = false; },
        "hand the samples over at their own rate, though the library assumes another");
    addFlagOptions(command, sampleOptions(), options.settings.flags);
    addPerChannelOption(command, "--gains", "gain settings for --source real, default 1", options.settings.gains);
    addPerChannelOption(command, "--resistances", "input resistances in ohm for --source real, default 0",
                        options.settings.resistances);
}

/// Everything at once: what a single measurement leaves to choose is settled by the tool.
void addBatchOptions(CLI::App& command, BatchOptions& options) {
    command.add_option("FILE", options.files, fileHelp)->type_name("");
    command
        .add_option("--files-from", options.filesFrom,
                    "measure the files that this one names as well, one a line; - reads the names from stdin")
        ->type_name("FILE");
    addTimeOption(command, "--window", options.windowSeconds, "measure windows of this length, such as 0.2s or 200ms");
    addTimeOption(command, "--step", options.stepSeconds,
                  "from the start of one window to the next (default: its length)");
    command.add_option("--jobs", options.jobs, "how many processes measure files at the same time")
        ->check(CLI::Range(1, 1024))
        ->capture_default_str()
        ->type_name("N");
    addColumnOptions(command, options.each);
    addCommonOptions(command, options.each);
    addFormOptions(command, options.each.form);
    addFlagOptions(command, batchOptions(), options.each.settings.flags);
}

/// The same of one file, as a page.
void addReportOptions(CLI::App& command, ReportOptions& options) {
    addRecordingOptions(command, options.measure);
    command.add_option("-o,--output", options.file, "write to this file, not to stdout")->type_name("FILE");
    addCommonOptions(command, options.measure);
    addFlagOptions(command, batchOptions(), options.measure.settings.flags);
}

void addParameterOptions(CLI::App& command, MeasurementSettings& settings) {
    addFlagOptions(command, parameterOptions(), settings.flags);
    for (const FlagSwitch& flag : parameterSwitches) {
        command.add_flag_function(
            flag.name, [&settings, &flag](std::int64_t) { settings.flags |= flag.flag; }, flag.help);
    }
}

void addSpectrumOptions(CLI::App& command, MeasurementSettings& settings) {
    addFlagOptions(command, spectrumOptions(), settings.spectrumFlags);
    command.add_flag_function(
        "--db", [&settings](std::int64_t) { settings.spectrumFlags |= RT305_4_SPECTRUM_LEVEL_DB; },
        "levels in dB below the largest line instead of V and A");
    command
        .add_option("--peaks", settings.peaks, "how many of the largest lines to show, at most 20 without --criterion")
        ->check(CLI::Range(0, 32767))
        ->capture_default_str()
        ->type_name("N");
    command
        .add_option_function<double>(
            "--criterion",
            [&settings](double criterion) {
                settings.spectrumFlags |= RT305_4_SPECTRUM_CRITERION;
                settings.peakCriterion = criterion;
            },
            "show lines above this height in V, A or dB only, by frequency")
        ->type_name("X");
}

void addGenerateOptions(CLI::App& command, GenerateOptions& options) {
    GeneratorSettings& settings = options.settings;
    command.add_option("-o,--output", options.file, "write to this file, not to stdout")->type_name("FILE");
    command.add_option("--frequency", settings.frequencyHz, "fundamental")->capture_default_str()->type_name("HZ");
    command.add_option("--rate", settings.rateHz, "sample rate")
        ->check(CLI::PositiveNumber)
        ->capture_default_str()
        ->type_name("HZ");
    command.add_option("--duration", settings.durationSeconds, "length of the recording")
        ->check(CLI::PositiveNumber)
        ->capture_default_str()
        ->type_name("S");
    command.add_option("--voltage", settings.voltage, "RMS of the fundamental")->capture_default_str()->type_name("V");
    command.add_option("--current", settings.current, "RMS of the fundamental")->capture_default_str()->type_name("A");
    command.add_option("--angle", settings.angleDegrees, "by which currents lag their voltages")
        ->capture_default_str()
        ->type_name("DEGREES");
    for (const auto& [name, help, harmonics] :
         {std::tuple{"--harmonic-u", "add a harmonic of the voltages", &settings.voltageHarmonics},
          std::tuple{"--harmonic-i", "add a harmonic of the currents", &settings.currentHarmonics}}) {
        addRepeatedOption(command, name, "ORDER:PERCENT[:DEGREES]", help, *harmonics, &parseHarmonic);
    }
    addPerChannelOption(command, "--factors", "unbalance, factors on the amplitudes, default 1", settings.factors);
    addPerChannelOption(command, "--offsets", "constants to add in V and A, default 0", settings.offsets);
    command.add_option("--noise", settings.noisePercent, "RMS of white noise in percent of the fundamental's")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str()
        ->type_name("PERCENT");
    command.add_option("--seed", settings.seed, "the noise to take")->capture_default_str()->type_name("NUMBER");
    addRepeatedOption(command, "--dropout", "CHANNEL:START:COUNT", "set samples to zero", settings.dropouts,
                      &parseDropout);
    command.add_option("--digits", options.digits, "significant digits of each column's largest sample")
        ->check(CLI::Range(1, 15))
        ->capture_default_str()
        ->type_name("N");
}

/// For the build, which makes the manual page and the completion of what the tool says of itself; not in the help.
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

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Measures sampled three-phase voltages and currents with libRT305_4.so.1.");
    app.require_subcommand(1);
    app.footer(exitCodeText);

    int exitCode = static_cast<int>(ExitCode::success);
    MeasureOptions measure;
    BatchOptions batch;
    ReportOptions report;
    CheckOptions check;
    GenerateOptions generate;
    const auto command = [&app](const char* name, const char* help, auto run, auto& options) {
        CLI::App* const added = app.add_subcommand(name, help);
        added->final_callback([run, &options] { run(options); });
        return added;
    };
    addRecordingOptions(*command("info", "show what a recording holds; needs no library", showRecording, measure),
                        measure);
    const auto runBatch = [&exitCode](const BatchOptions& options) { exitCode = measureEverything(options); };
    addBatchOptions(*command("measure", "measure everything at once, of many files and windows", runBatch, batch),
                    batch);
    addReportOptions(*command("report", "write a report with everything as one HTML page", writeReport, report),
                     report);
    CLI::App* const params = command("params", "measure the electrical parameters", showParameters, measure);
    addMeasureOptions(*params, measure);
    addParameterOptions(*params, measure.settings);
    addMeasureOptions(*command("signals", "measure the statistics of each signal", showSignals, measure), measure);
    CLI::App* const spectrum = command("spectrum", "find the largest lines of each spectrum", showSpectra, measure);
    addMeasureOptions(*spectrum, measure);
    addSpectrumOptions(*spectrum, measure.settings);
    addMeasureOptions(*command("distortion", "measure the harmonics of each signal", showHarmonics, measure), measure);
    command("check", "hold a library against the promises of its interface", checkLibrary, check)
        ->add_option("LIB", check.library, "the library file (default: the one that would measure)")
        ->type_name("");
    addGenerateOptions(*command("generate", "write a recording of known content as CSV", generateRecording, generate),
                       generate);
    addManualOptions(app);

    try {
        app.parse(argc, argv);
        std::cout.flush();
        if (!std::cout) {
            failEnvironment("cannot write to stdout");
        }
        return exitCode;
    } catch (const CLI::ParseError& error) {
        return static_cast<int>(app.exit(error) == 0 ? ExitCode::success : ExitCode::usage);
    } catch (const Failure& failure) {
        tell(failure.what());
        return static_cast<int>(failure.code());
    } catch (const std::bad_alloc&) {
        tell("out of memory");
        return static_cast<int>(ExitCode::environment);
    }
}
