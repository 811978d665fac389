#include "cli/options.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <span>
#include <type_traits>

#include "base/failure.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/text_encoding.h"
#include "cli/option_values.h"
#include "measuring/power_methods.h"

namespace rt305 {

namespace {

/// An option whose words select a value under a mask of the measurement or spectrum flags.
struct FlagOption {
    const char* name;
    std::string help;
    std::uint32_t mask;
    std::map<std::string, std::uint32_t> words;
};

void addFlagOption(CLI::App& command, std::uint32_t& flags, const FlagOption& option) {
    command
        .add_option_function<std::string>(
            option.name,
            [&flags, option](const std::string& word) { flags = (flags & ~option.mask) | option.words.at(word); },
            option.help)
        ->check(CLI::IsMember(option.words));
}

/// A switch that sets a flag.
void addFlagSwitch(CLI::App& command, std::uint32_t& flags, const char* name, std::uint32_t flag, const char* help) {
    command.add_flag_function(
        name, [&flags, flag](std::int64_t) { flags |= flag; }, help);
}

void addTwoCurrentsOption(CLI::App& command, std::uint32_t& flags) {
    addFlagOption(command, flags,
                  {"--two-currents",
                   "rebuild the current of this phase from the other two; it need not be recorded",
                   RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_MASK,
                   {{"a", RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_A},
                    {"b", RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_B},
                    {"c", RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_C}}});
}

void addWiringOption(CLI::App& command, MeasurementSettings& settings) {
    static const std::map<std::string, std::uint32_t> words{{"three", 0}, {"four", RT305_4_FOUR_WIRE}};
    command
        .add_option_function<std::string>(
            "--wiring",
            [&settings](const std::string& word) {
                settings.flags = (settings.flags & ~RT305_4_FOUR_WIRE) | words.at(word);
                settings.wiringIsGiven = true;
            },
            "four: Ua, Ub, Uc are phase voltages; three: they are line voltages ab, bc, ca (default: by the names of "
            "the "
            "columns, else four)")
        ->check(CLI::IsMember(words));
}

std::map<std::string, std::uint32_t> powerWords() {
    std::map<std::string, std::uint32_t> words{{"none", RT305_4_POWER_NONE}};
    for (const PowerMethod& method : powerMethods) {
        words.emplace(method.name, method.flag);
    }
    return words;
}

void addPerChannelOption(CLI::App& command, const std::string& name, const std::string& help,
                         PerChannel<double>& values) {
    command
        .add_option_function<std::string>(
            name, [name, &values](const std::string& text) { values = parsePerChannel(name, text, values[0]); },
            help + ": six numbers or Ua=..,Ib=..")
        ->type_name("LIST");
}

/// An option whose value is a number from `lowest` to `highest`; a whole one if that is the type of `value`.
template <class Number>
CLI::Option* addNumberOption(CLI::App& command, const char* name, Number& value, const std::string& help, double lowest,
                             double highest, const char* form) {
    return command
        .add_option_function<std::string>(
            name,
            [=, &value](const std::string& text) {
                value = static_cast<Number>(parseNumberIn({name, lowest, highest, std::is_integral_v<Number>}, text));
            },
            help)
        ->default_str(formatNumber(static_cast<double>(value)))
        ->type_name(form);
}

CLI::Option* addFrequencyOption(CLI::App& command, const char* name, const std::string& help, double lowest,
                                double highest, const std::function<void(double)>& take) {
    return command
        .add_option_function<std::string>(
            name,
            [=](const std::string& text) {
                take(parseFrequency({name, lowest, highest, false}, text));
            },
            help)
        ->type_name("HZ");
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

void addReadOptions(CLI::App& command, ReadOptions& reading) {
    command.option_defaults()->group("Reading the file");
    addFrequencyOption(command, "--rate", "sample rate, such as 4800 or 10kHz, instead of the file's own times",
                       lowestRateHz, highestRateHz, [&reading](double rate) { reading.rateHz = rate; });
    command
        .add_option_function<std::string>(
            "--columns",
            [&reading](const std::string& text) {
                for (const std::string_view name : split(text, ',')) {
                    reading.columns.emplace_back(name);
                }
            },
            "names of the columns, such as time,Ua(V),Ub(V)")
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
    command
        .add_option_function<std::string>(
            "--encoding",
            [&reading](const std::string& name) {
                requireEncoding(name);
                reading.encoding = name;
            },
            "encoding of texts that are not UTF-8, such as windows-1251 or GB18030")
        ->type_name("NAME");
    command.add_option("--dat", reading.dataFile, "data file of a COMTRADE record that is not beside its .cfg file")
        ->type_name("FILE");
}

void addTimeOption(CLI::App& command, const std::string& name, double& seconds, const std::string& help,
                   decltype(parseTime)& parse = parseTime) {
    command
        .add_option_function<std::string>(
            name, [name, &seconds, &parse](const std::string& text) { seconds = parse(name, text); }, help)
        ->type_name("TIME");
}

/// Which part of the recording to measure, or what the command does else: `use`.
void addPartOptions(CLI::App& command, MeasurementSettings& settings, const std::string& use = "measure") {
    command.option_defaults()->group("Part of the recording");
    command
        .add_option_function<std::string>(
            "--segment",
            [&settings](const std::string& text) {
                settings.segment = static_cast<std::size_t>(parseNumberIn({"--segment", 1.0, 1e9, true}, text));
            },
            "segment to " + use + " (default: the longest at the highest rate)")
        ->type_name("N");
    addTimeOption(command, "--start", settings.startSeconds,
                  "start of the part to " + use + ", after the segment's start");
    command
        .add_option_function<std::string>(
            "--duration",
            [&settings](const std::string& text) {
                const auto cycles = parseCycles(text);
                settings.durationCycles = cycles.value_or(0.0);
                settings.durationSeconds = cycles ? 0.0 : parseLength("--duration", text);
            },
            "length of the part to " + use + ", such as 0.2s" + (use == "measure" ? " or 10cycles" : "") +
                " (default: to the segment's end)")
        ->type_name("TIME");
}

/// Which part a full measurement takes of the chosen one.
void addSteadyPartOptions(CLI::App& command, MeasurementSettings& settings) {
    command.option_defaults()->group("Part of the recording");
    static const std::map<std::string, Part> parts{{"all", Part::all},
                                                   {"pre-fault", Part::preFault},
                                                   {"fault", Part::fault},
                                                   {"longest-steady", Part::longestSteady}};
    command
        .add_option_function<std::string>(
            "--part", [&settings](const std::string& word) { settings.part = parts.at(word); },
            "steady part to measure: pre-fault, before the first change; fault, that with the largest currents and "
            "smallest voltages; longest-steady, the longest (default: all)")
        ->check(CLI::IsMember(parts));
    command.add_flag("--all-samples", settings.allSamples, "measure all samples, not only whole cycles");
}

constexpr const char* fileHelp =
    "recording: CSV, COMTRADE (.cfg, .dat or .cff), WAV or FLAC, or one of them with .gz; - reads stdin";

void addColumnOptions(CLI::App& command, MeasureOptions& options) {
    command.option_defaults()->group("Reading the file");
    command
        .add_option("--settings", options.settingsFile,
                    "file with such settings (docs/settings.md); auto: .rt305.toml beside the recording, else in the "
                    "working folder")
        ->type_name("FILE");
    command
        .add_option_function<std::string>(
            "--map", [&options](const std::string& text) { options.settings.columns = parseColumnMap("--map", text); },
            "columns of the channels, by name or number from 1: Ua=COLUMN,Ub=COLUMN,...")
        ->type_name("LIST");
    addReadOptions(command, options.reading);
}

struct FormSwitch {
    const char* name;
    OutputForm form;
    const char* help;
};
constexpr FormSwitch measureForms[] = {
    {"--json", OutputForm::json, "one JSON document with all figures"},
    {"--json-lines", OutputForm::jsonLines, "one JSON document a line, for each file and window"},
    {"--csv", OutputForm::csv, "one figure a line: file,start,table,quantity,column,value,unit"},
    {"--csv-wide", OutputForm::csvWide, "one row of figures for each file and window, or for each harmonic or line"},
    {"--plain", OutputForm::plain, "like --csv, but with tabs between the fields and no heading"},
    {"--raw", OutputForm::raw, "the library's own texts, byte for byte"},
};
constexpr FormSwitch qualityForms[] = {
    {"--json", OutputForm::json, "one JSON document with events, statistics, 10-minute values and verdict"},
    {"--json-lines", OutputForm::jsonLines, "one JSON document a line, for each interval and event"},
    {"--csv", OutputForm::csv, "one interval a line, with a column for each quantity"},
};

void addFormOptions(CLI::App& command, OutputForm& form, std::span<const FormSwitch> switches = measureForms) {
    command.option_defaults()->group("Output");
    std::vector<std::string> names;
    std::transform(switches.begin(), switches.end(), std::back_inserter(names),
                   [](const FormSwitch& one) { return std::string(one.name); });
    for (const FormSwitch& one : switches) {
        command.add_flag_function(
            one.name,
            [&form, names, to = one.form](std::int64_t) {
                if (form != OutputForm::text) {
                    failUsage("give one of " + joined(names));
                }
                form = to;
            },
            one.help);
    }
}

void addNominalOption(CLI::App& command, MeasurementSettings& settings) {
    command
        .add_option_function<std::string>(
            "--nominal", [&settings](const std::string& text) { settings.nominalHz = parseNominal(text); },
            "nominal frequency of the grid; auto (default): as the file says, else by the fundamental")
        ->type_name("HZ");
}

enum class UsesLibrary { no, yes };

void addCommonOptions(CLI::App& command, MeasureOptions& options, UsesLibrary usesLibrary = UsesLibrary::yes) {
    addPartOptions(command, options.settings);
    command.option_defaults()->group("Measurement");
    static const std::map<std::string, std::uint32_t> types{{"voltages", RT305_4_INPUT_VOLTAGES},
                                                            {"currents", RT305_4_INPUT_CURRENTS},
                                                            {"all", RT305_4_INPUT_VOLTAGES_AND_CURRENTS}};
    command
        .add_option_function<std::string>(
            "--type", [&options](const std::string& word) { options.settings.inputType = types.at(word); },
            "what to measure (default: by the channels in the recording)")
        ->check(CLI::IsMember(types));
    addNominalOption(command, options.settings);
    command.add_flag_function(
        "--no-deskew", [&options](std::int64_t) { options.settings.deskew = false; },
        "leave the channels at the times at which a scanning recorder sampled them");
    addPerChannelOption(command, "--coefficients", "factors on the samples, default 1", options.settings.coefficients);
    if (usesLibrary == UsesLibrary::yes) {
        command.add_option("--library", options.library, "library file to use")->type_name("FILE");
    }
}

void addFileOptions(CLI::App& command, FileOptions& options) {
    command.option_defaults()->group("Input");
    command.add_option("FILE", options.files, std::string(fileHelp) + "; a folder or a quoted pattern: all in it")
        ->type_name("");
    command
        .add_option("--files-from", options.filesFrom,
                    "also measure the files listed in this one, one a line; - reads the list from stdin")
        ->type_name("FILE");
    addNumberOption(command, "--jobs", options.jobs, "number of processes that measure files at the same time", 1.0,
                    1024.0, "N");
}

/// Results in a folder.
void addFolderOptions(CLI::App& command, DocumentOptions& options) {
    command.option_defaults()->group("Output");
    command
        .add_option(
            "--output-folder", options.outputFolder,
            "write JSON lines into a file of this folder for each recording, unless it is there, and a manifest")
        ->type_name("DIR");
    command.add_flag("--force", options.force, "measure recordings again whose results are in the output folder");
    command.add_flag("--retry-failed", options.retriesFailed,
                     "measure the files that failed according to the manifest in the output folder");
}

/// The declared voltage, the thresholds of events and the lamp.
void addDeclaredOptions(CLI::App& command, QualityChoice& choice) {
    QualitySettings& settings = choice.settings;
    command.option_defaults()->group("Events and limits");
    command
        .add_option_function<std::string>(
            "--declared", [&settings](const std::string& text) { settings.declaredVolts = parseDeclared(text); },
            "declared voltage, phase to neutral; auto (default): that of the first steady part")
        ->type_name("V");
    command.add_flag("--sliding", settings.isSlidingReference,
                     "thresholds of events in percent of the voltage of the last minute, not of the declared one");
    for (const auto& [name, help, percent] :
         {std::tuple{"--dip", "a dip begins below this", &settings.dipPercent},
          std::tuple{"--swell", "a swell begins above this", &settings.swellPercent},
          std::tuple{"--interruption", "an interruption begins below this, in all phases",
                     &settings.interruptionPercent},
          std::tuple{"--hysteresis", "these events end this much inside", &settings.hysteresisPercent},
          std::tuple{"--change", "a rapid voltage change differs by this from the mean of a second",
                     &settings.changePercent},
          std::tuple{"--transient", "a transient differs by this share of the crest from the cycles before",
                     &settings.transientPercent}}) {
        addNumberOption(command, name, *percent, help, std::numeric_limits<double>::min(), 1e300, "PERCENT");
    }
    static const std::map<std::string, std::optional<Lamp>> lamps{
        {"auto", std::nullopt}, {"230", Lamp::of230V}, {"120", Lamp::of120V}};
    command
        .add_option_function<std::string>(
            "--lamp", [&choice](const std::string& word) { choice.lamp = lamps.at(word); },
            "lamp of the flicker values; auto (default): 230 V below 55 Hz, else 120 V")
        ->check(CLI::IsMember(lamps));
}

void addLimitsOption(CLI::App& command, std::string& file, const std::string& help) {
    command.add_option("--limits", file, help)->type_name("FILE");
}

}  // namespace

GivenOptions givenOptions(const CLI::App& command) {
    static const std::set<std::string> files{"--settings", "--library", "--dat"};
    static const std::set<std::string> groups{"Input", "Output", "Help", ""};
    GivenOptions given;
    for (const CLI::Option* const option : command.get_options()) {
        const std::string name = option->get_name();
        if (option->count() > 0 && files.count(name) == 0 && groups.count(option->get_group()) == 0) {
            const bool isSwitch = option->get_items_expected_max() == 0;
            given.emplace_back(name.substr(2), isSwitch ? "" : CLI::detail::join(option->results(), ","));
        }
    }
    std::sort(given.begin(), given.end());
    return given;
}

void addRecordingOptions(CLI::App& command, MeasureOptions& options) {
    command.option_defaults()->group("Input");
    command.add_option("FILE", options.file, fileHelp)->required()->type_name("");
    addColumnOptions(command, options);
}

void addInfoOptions(CLI::App& command, MeasureOptions& options) {
    addRecordingOptions(command, options);
    command.option_defaults()->group("Output");
    command.add_flag_function(
        "--json", [&options](std::int64_t) { options.form = OutputForm::json; }, "one JSON document");
}

void addMeasureOptions(CLI::App& command, MeasureOptions& options) {
    addRecordingOptions(command, options);
    addCommonOptions(command, options);
    addFormOptions(command, options.form);
    command.option_defaults()->group("Measurement");
    command.add_flag_function(
        "--no-resample", [&options](std::int64_t) { options.settings.resample = false; },
        "measure the samples at their own rate, not at 200 a nominal cycle");
    addTwoCurrentsOption(command, options.settings.flags);
    addFlagOption(command, options.settings.flags,
                  {"--source",
                   "simulated (default): samples are in V and A; real: they are counts, scaled by gain and resistance",
                   RT305_4_SIMULATED_SOURCE_MASK,
                   {{"real", 0}, {"simulated", RT305_4_SIMULATED_SOURCE_MASK}}});
    addPerChannelOption(command, "--gains", "gain settings for --source real, default 1", options.settings.gains);
    addPerChannelOption(command, "--resistances", "input resistances in ohm for --source real, default 0",
                        options.settings.resistances);
}

void addBatchOptions(CLI::App& command, BatchOptions& options) {
    addFileOptions(command, options);
    addColumnOptions(command, options.each);
    command.option_defaults()->group("Part of the recording");
    addTimeOption(command, "--window", options.windowSeconds, "measure windows of this length, such as 0.2s or 200ms",
                  parseLength);
    addTimeOption(command, "--step", options.stepSeconds,
                  "time from the start of one window to the next (default: its length)", parseLength);
    addCommonOptions(command, options.each);
    addSteadyPartOptions(command, options.each.settings);
    addFormOptions(command, options.each.form);
    addFolderOptions(command, options);
    command.option_defaults()->group("Measurement");
    addWiringOption(command, options.each.settings);
    addTwoCurrentsOption(command, options.each.settings.flags);
}

void addQualityOptions(CLI::App& command, QualityOptions& options) {
    addFileOptions(command, options);
    addDeclaredOptions(command, options.choice);
    static const std::map<std::string, QualityRows> rows{{"half-cycle", QualityRows::halfCycles},
                                                         {"cycles", QualityRows::cycles},
                                                         {"3s", QualityRows::threeSeconds},
                                                         {"10min", QualityRows::tenMinutes}};
    command
        .add_option_function<std::string>(
            "--interval", [&options](const std::string& word) { options.rows = rows.at(word); },
            "lines of --csv and --json-lines: of each half cycle, of 10 or 12 cycles (default), 3 s or 10 minutes")
        ->check(CLI::IsMember(rows));
    addLimitsOption(command, options.limitsFile, "judge the recording by the limits in this file");
    addColumnOptions(command, options.each);
    addCommonOptions(command, options.each, UsesLibrary::no);
    addFormOptions(command, options.each.form, qualityForms);
    addFolderOptions(command, options);
    command.option_defaults()->group("Measurement");
    addWiringOption(command, options.each.settings);
    addTwoCurrentsOption(command, options.each.settings.flags);
}

void addReportOptions(CLI::App& command, ReportOptions& options) {
    addFileOptions(command, options);
    addColumnOptions(command, options.each);
    command.option_defaults()->group("Output");
    command
        .add_option("-o,--output", options.output,
                    "write to this file instead of stdout; of several recordings a page each and index.html into this "
                    "folder")
        ->type_name("FILE");
    command.add_option("--title", options.texts.title, "title of the page (default: names the file)")
        ->type_name("TEXT");
    command.add_option("--site", options.texts.site, "where it was measured, below the title")->type_name("TEXT");
    command.add_option("--note", options.texts.note, "a note below that; it may have several lines")->type_name("TEXT");
    addLimitsOption(command, options.limitsFile, "draw the limits in this file, a table as for rt305 quality");
    addCommonOptions(command, options.each);
    addSteadyPartOptions(command, options.each.settings);
    command.option_defaults()->group("Measurement");
    addWiringOption(command, options.each.settings);
    addTwoCurrentsOption(command, options.each.settings.flags);
}

void addParameterOptions(CLI::App& command, MeasurementSettings& settings) {
    command.option_defaults()->group("Measurement");
    addWiringOption(command, settings);
    static const std::map<std::string, std::uint32_t> windows{
        {"auto", 0}, {"fixed", 0}, {"control", RT305_4_FREQUENCY_CONTROL}};
    command
        .add_option_function<std::string>(
            "--frequency",
            [&settings](const std::string& word) {
                settings.flags = (settings.flags & ~RT305_4_FREQUENCY_CONTROL) | windows.at(word);
                settings.chooseWindow = word == "auto";
            },
            "where the fundamental must lie, here for 50 Hz: fixed inside " + fixedWindow.text() + ", control inside " +
                controlWindow.text() + "; auto (default): fixed if it does, else control")
        ->check(CLI::IsMember(windows));
    addFlagOption(command, settings.flags,
                  {"--power", "how power is measured (default none)", RT305_4_POWER_MASK, powerWords()});
    addFlagSwitch(command, settings.flags, "--keep-rebuilt-rms", RT305_4_KEEP_REBUILT_RMS,
                  "RMS of the rebuilt current from its samples, not the mean of the other two");
    addFlagSwitch(command, settings.flags, "--invert-p", RT305_4_NEGATE_ACTIVE_POWER, "invert the total active power");
    addFlagSwitch(command, settings.flags, "--invert-q", RT305_4_NEGATE_REACTIVE_POWER,
                  "invert the total reactive power");
}

void addSpectrumOptions(CLI::App& command, MeasurementSettings& settings) {
    command.option_defaults()->group("Spectrum");
    addFlagOption(command, settings.spectrumFlags,
                  {"--window",
                   "window function on the samples (default hann)",
                   RT305_4_SPECTRUM_WINDOW_MASK,
                   {{"rect", RT305_4_SPECTRUM_WINDOW_RECT},
                    {"hann", RT305_4_SPECTRUM_WINDOW_HANN},
                    {"hamming", RT305_4_SPECTRUM_WINDOW_HAMMING},
                    {"kaiser", RT305_4_SPECTRUM_WINDOW_KAISER}}});
    addFlagOption(command, settings.spectrumFlags,
                  {"--mode",
                   "1 (default): fine lines up to 20 times the nominal frequency; 2: coarser lines up to 100 times",
                   RT305_4_SPECTRUM_MODE_MASK,
                   {{"1", RT305_4_SPECTRUM_MODE_1}, {"2", RT305_4_SPECTRUM_MODE_2}}});
    addFlagSwitch(command, settings.spectrumFlags, "--db", RT305_4_SPECTRUM_LEVEL_DB,
                  "levels in dB below the largest line instead of V and A");
    addNumberOption(command, "--peaks", settings.peaks, "number of largest lines to show", 0.0, 1000.0, "N");
    command
        .add_option_function<std::string>(
            "--criterion",
            [&settings](const std::string& text) {
                settings.spectrumFlags |= RT305_4_SPECTRUM_CRITERION;
                settings.peakCriterion = parseNumberIn({"--criterion", -1e300, 1e300, false}, text);
            },
            "show only lines above this height in V, A or dB, by frequency")
        ->type_name("X");
}

void addConvertOptions(CLI::App& command, ConvertOptions& options) {
    command.option_defaults()->group("Input");
    command.add_option("FILE", options.measure.file, fileHelp)->required()->type_name("");
    command.option_defaults()->group("Output");
    command
        .add_option("-o,--output", options.file,
                    "write to this file: .cfg with .dat, .cff, .csv, .wav or .npy (default: stdout)")
        ->type_name("FILE");
    command.add_option("--to", options.form, "what to write (default: by the extension)")
        ->check(CLI::IsMember({"cff", "cfg", "csv", "npy", "wav"}));
    static const std::map<std::string, SampleForm> forms{
        {"ascii", SampleForm::ascii}, {"binary32", SampleForm::binary32}, {"float32", SampleForm::float32}};
    command
        .add_option_function<std::string>(
            "--samples", [&options](const std::string& word) { options.samples = forms.at(word); },
            "samples of a COMTRADE record (default binary32)")
        ->check(CLI::IsMember(forms));
    addFrequencyOption(command, "--resample", "sample rate to write, such as 4800 or 10kHz (default: as recorded)",
                       lowestRateHz, highestRateHz, [&options](double rate) { options.conversion.rateHz = rate; });
    command
        .add_option_function<std::string>(
            "--only",
            [&options](const std::string& text) {
                for (const std::string_view name : split(text, ',')) {
                    options.conversion.only.emplace_back(name);
                }
            },
            "columns to write, by name or number (default: all)")
        ->type_name("LIST");
    command
        .add_option_function<std::string>(
            "--rename", [&options](const std::string& text) { options.conversion.names = parseNames(text); },
            "new names of columns: COLUMN=NAME,...")
        ->type_name("LIST");
    addNominalOption(command, options.measure.settings);
    addPartOptions(command, options.measure.settings, "write");
    addReadOptions(command, options.measure.reading);
}

void addGenerateOptions(CLI::App& command, GenerateOptions& options) {
    GeneratorSettings& settings = options.settings;
    command.option_defaults()->group("Output");
    command.add_option("-o,--output", options.file, "write to this file instead of stdout")->type_name("FILE");
    addNumberOption(command, "--digits", options.digits, "significant digits of each column's largest sample", 1.0,
                    15.0, "N");
    command.option_defaults()->group("Signal");
    addFrequencyOption(command, "--frequency", "fundamental", 0.0, highestRateHz, [&settings](double frequency) {
        settings.frequencyHz = frequency;
    })->default_str(formatNumber(settings.frequencyHz));
    addFrequencyOption(command, "--rate", "sample rate", lowestRateHz, highestRateHz, [&settings](double rate) {
        settings.rateHz = rate;
    })->default_str(formatNumber(settings.rateHz));
    addTimeOption(command, "--duration", settings.durationSeconds, "length of the recording (default 1 s)");
    addNumberOption(command, "--voltage", settings.voltage, "RMS of the fundamental", -1e300, 1e300, "V");
    addNumberOption(command, "--current", settings.current, "RMS of the fundamental", -1e300, 1e300, "A");
    addNumberOption(command, "--angle", settings.angleDegrees, "angle by which currents lag their voltages", -1e300,
                    1e300, "DEGREES");
    for (const auto& [name, help, harmonics] :
         {std::tuple{"--harmonic-u", "add a harmonic of the voltages", &settings.voltageHarmonics},
          std::tuple{"--harmonic-i", "add a harmonic of the currents", &settings.currentHarmonics}}) {
        addRepeatedOption(command, name, "ORDER:PERCENT[:DEGREES]", help, *harmonics, &parseHarmonic);
    }
    addPerChannelOption(command, "--factors", "factors on the amplitudes, default 1", settings.factors);
    addPerChannelOption(command, "--offsets", "constants to add, in V and A, default 0", settings.offsets);
    addNumberOption(command, "--noise", settings.noisePercent, "RMS of white noise in percent of the fundamental", 0.0,
                    1e300, "PERCENT");
    addNumberOption(command, "--seed", settings.seed, "seed of the noise", 0.0, 9007199254740991.0, "NUMBER");
    addRepeatedOption(command, "--dropout", "CHANNEL:START:COUNT", "set samples to zero", settings.dropouts,
                      &parseDropout);
}

}  // namespace rt305
