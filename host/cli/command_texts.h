#ifndef RT305_HOST_CLI_COMMAND_TEXTS_H
#define RT305_HOST_CLI_COMMAND_TEXTS_H

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

namespace rt305 {

/// One option or positional argument, as help, manual page and completions describe it.
struct OptionText {
    std::vector<std::string> names;  // "-o", "--output"; the plain name of a positional
    std::string value;               // "FILE"; empty for a switch
    std::vector<std::string> choices;
    std::string help;
    std::string group;
    bool isRepeated = false;
    bool isRequired = false;

    bool operator==(const OptionText& other) const { return names == other.names && help == other.help; }
    bool isPositional() const { return names[0][0] != '-'; }
};

/// A command line and what it does.
struct Example {
    const char* line;
    const char* meaning;
};

struct CommandText {
    std::string name;
    std::string help;
    std::vector<OptionText> options;  // by group
    std::vector<Example> examples;

    std::string synopsis() const;  // "rt305 check [OPTION...] [LIB]"
};

/// A command, or the program itself, without its hidden options.
CommandText textOf(const CLI::App& app);

/// The commands of the program.
std::vector<CommandText> commandsOf(const CLI::App& app);

/// The help of a command or of the program, with lines of at most `width` characters.
std::string helpText(const CLI::App& app, std::size_t width);

}  // namespace rt305

#endif
