#include "cli/command_texts.h"

#include <algorithm>
#include <cstring>
#include <sstream>

#include "base/text.h"
#include "base/version.h"

namespace rt305 {

namespace {

struct ExamplesOfCommand {
    const char* command;
    std::vector<Example> examples;
};

const std::vector<ExamplesOfCommand>& allExamples() {
    static const std::vector<ExamplesOfCommand> all{
        {"rt305",
         {{"rt305 info fault.cfg", "what the file holds, and which column is which channel"},
          {"rt305 measure recording.csv", "all figures of it"},
          {"rt305 report recording.csv -o report.html", "the same as a page with plots"}}},
        {"info",
         {{"rt305 info fault.cfg", "columns, rate, segments and gaps"},
          {"rt305 info --map Ua=2,Ub=3,Uc=4 recording.csv", "which column is which channel with this choice"}}},
        {"measure",
         {{"rt305 measure recording.csv", "all figures of a recording"},
          {"rt305 measure --part longest-steady fault.cfg", "of the longest part without a change"},
          {"rt305 measure --window 0.2s --csv-wide recording.csv", "how they change with time, one row a window"},
          {"rt305 measure --json-lines --jobs 2 recording.csv fault.cfg", "of many files, one line each"},
          {"rt305 measure --output-folder results recording.csv fault.cfg",
           "a file of results for each, also of folders; continues after an interruption"}}},
        {"quality",
         {{"rt305 quality recording.csv", "dips, swells and other events, and statistics over the recording"},
          {"rt305 quality --declared 230 --json recording.csv", "the same as a document, in percent of 230 V"}}},
        {"report",
         {{"rt305 report recording.csv -o report.html", "one page that needs no network"},
          {"rt305 report --duration 10cycles recording.csv -o start.html", "of the first ten cycles"},
          {"rt305 report --site 'Bay 3' recording.csv fault.cfg -o pages", "a page each, and pages/index.html"}}},
        {"params",
         {{"rt305 params recording.csv", "voltages, currents, frequencies and THD"},
          {"rt305 params --power three-wattmeter-complex recording.csv", "with the powers by one method"}}},
        {"signals", {{"rt305 signals recording.csv", "mean, RMS, crest factor and peak to peak of each channel"}}},
        {"spectrum",
         {{"rt305 spectrum --peaks 3 recording.csv", "the three largest lines of each channel"},
          {"rt305 spectrum --db --criterion -40 recording.csv", "all lines above -40 dB of the largest"}}},
        {"distortion",
         {{"rt305 distortion recording.csv", "harmonics 1 to 40"},
          {"rt305 distortion --csv-wide recording.csv", "one row an order, for a spreadsheet"}}},
        {"convert",
         {{"rt305 convert fault.cfg -o fault.csv", "a table of all columns"},
          {"rt305 convert --start 0.1s --duration 0.2s --resample 4800 recording.csv -o part.cff",
           "a part of it as COMTRADE of 2013"},
          {"rt305 convert --only Ua,Ia --rename Ua=U,Ia=I recording.csv -o phase.npy", "two columns for NumPy"}}},
        {"generate",
         {{"rt305 generate --frequency 60 --angle 30 --harmonic-i 5:20 -o load.csv", "a load with a 5th harmonic"},
          {"rt305 generate --duration 0.2s --noise 1 | rt305 measure -", "how noise changes the figures"}}},
        {"check", {{"rt305 check", "the library that the other commands use"}}},
        {"help", {{"rt305 help measure", "the options of a command"}}},
    };
    return all;
}

/// CLI11 joins the name of a value and the description of its check: "TEXT:{three,four}".
OptionText textOf(const CLI::Option& option) {
    OptionText text;
    text.names = CLI::detail::split(option.get_name(option.get_positional(), true), ',');
    text.help = option.get_description();
    text.group = option.get_group();
    text.isRepeated = option.get_items_expected_max() > 1;
    text.isRequired = option.get_required();
    if (option.get_items_expected_max() > 0 && !option.get_positional()) {
        text.value = option.get_type_name();
    }
    if (const std::size_t brace = text.value.find(":{"); brace != std::string::npos) {
        text.choices = CLI::detail::split(text.value.substr(brace + 2, text.value.size() - brace - 3), ',');
        text.value = CLI::detail::join(text.choices, "|");
    }
    if (!option.get_default_str().empty()) {
        text.help += " (default " + option.get_default_str() + ")";
    }
    return text;
}

/// A heading, and a text in lines behind it that begin at `indent`.
std::string entry(const std::string& heading, const std::string& text, std::size_t indent, std::size_t width) {
    std::string lines = "  " + heading;
    std::istringstream rest(wrapped(text, width - indent));
    bool isNewLine = lines.size() + 2 > indent;
    if (isNewLine) {
        lines += '\n';
    } else {
        lines.resize(indent, ' ');
    }
    for (std::string line; std::getline(rest, line); isNewLine = true) {
        lines += (isNewLine ? std::string(indent, ' ') : "") + line + '\n';
    }
    return lines;
}

std::string optionLines(const CommandText& command, std::size_t width) {
    constexpr std::size_t indent = 24;
    std::string lines;
    const std::string* group = nullptr;
    for (const OptionText& option : command.options) {
        if (group == nullptr || *group != option.group) {
            lines += '\n' + option.group + ":\n";
            group = &option.group;
        }
        const std::string value = option.value.empty() ? "" : ' ' + option.value;
        lines += entry(CLI::detail::join(option.names, ", ") + value, option.help, indent, width);
    }
    return lines;
}

std::string exampleLines(const CommandText& command, std::size_t width) {
    std::string lines = command.examples.empty() ? "" : "\nExamples:\n";
    for (const auto& [line, meaning] : command.examples) {
        lines += "  " + std::string(line) + '\n' + entry("", meaning, 6, width);
    }
    return lines;
}

}  // namespace

std::string CommandText::synopsis() const {
    const bool hasOptions =
        !std::all_of(options.begin(), options.end(), [](const OptionText& option) { return option.isPositional(); });
    std::string line = "rt305 " + name + (hasOptions ? " [OPTION...]" : "");
    for (const OptionText& option : options) {
        if (option.isPositional()) {
            const std::string word = option.names[0] + (option.isRepeated ? "..." : "");
            line += option.isRequired || option.isRepeated ? " " + word : " [" + word + "]";
        }
    }
    return line;
}

CommandText textOf(const CLI::App& app) {
    CommandText text{app.get_name(), app.get_description(), {}, {}};
    std::vector<std::string> groups;
    for (const CLI::Option* const option : app.get_options()) {
        if (option->get_group().empty() || option == app.get_help_ptr()) {
            continue;
        }
        text.options.push_back(textOf(*option));
        if (std::find(groups.begin(), groups.end(), option->get_group()) == groups.end()) {
            groups.push_back(option->get_group());
        }
    }
    const auto placeOf = [&groups](const OptionText& option) {
        return std::find(groups.begin(), groups.end(), option.group);
    };
    std::stable_sort(text.options.begin(), text.options.end(),
                     [&](const OptionText& one, const OptionText& other) { return placeOf(one) < placeOf(other); });
    text.options.push_back(textOf(*app.get_help_ptr()));
    const auto known =
        std::find_if(allExamples().begin(), allExamples().end(),
                     [&text](const ExamplesOfCommand& examples) { return examples.command == text.name; });
    if (known != allExamples().end()) {
        text.examples = known->examples;
    }
    return text;
}

std::vector<CommandText> commandsOf(const CLI::App& app) {
    std::vector<CommandText> commands;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
        commands.push_back(textOf(*command));
    }
    return commands;
}

std::string helpText(const CLI::App& app, std::size_t width) {
    const CommandText command = textOf(app);
    if (app.get_parent() != nullptr) {
        return wrapped("rt305 " + command.name + ": " + command.help, width) + "\nUsage: " + command.synopsis() + '\n' +
               optionLines(command, width) + exampleLines(command, width);
    }
    std::string commands;
    for (const CommandText& each : commandsOf(app)) {
        commands += entry(each.name, each.help, 14, width);
    }
    return wrapped("rt305 " + std::string(toolVersion) + ": " + command.help, width) +
           "\nUsage: rt305 COMMAND [OPTION...] ...\n\nCommands:\n" + commands + optionLines(command, width) +
           exampleLines(command, width) + '\n' + wrapped(app.get_footer(), width);
}

}  // namespace rt305
