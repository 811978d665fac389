#include "cli/manual.h"

#include <algorithm>
#include <sstream>

#include "base/text.h"
#include "base/version.h"
#include "cli/command_texts.h"

namespace rt305 {

namespace {

std::string spaced(const std::vector<std::string>& words, const char* between = " ") {
    return CLI::detail::join(words, between);
}

/// Text escaped for the man macros.
std::string roffEscaped(const std::string& text) {
    std::string roff;
    for (const char c : text) {
        roff += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return roff.substr(0, 1) == "." || roff.substr(0, 1) == "'" ? "\\&" + roff : roff;
}

std::string entry(const std::string& heading, const std::string& value, const std::string& help) {
    return ".TP\n\\fB" + roffEscaped(heading) + "\\fR" + (value.empty() ? "" : " \\fI" + roffEscaped(value) + "\\fR") +
           "\n" + roffEscaped(help) + "\n";
}

/// The names of the commands that have this option with the same help.
std::vector<std::string> takersOf(const OptionText& option, const std::vector<CommandText>& commands) {
    std::vector<std::string> names;
    for (const CommandText& command : commands) {
        if (std::find(command.options.begin(), command.options.end(), option) != command.options.end()) {
            names.push_back(command.name);
        }
    }
    return names;
}

/// Each option once, grouped with the other options of the same commands.
std::string optionSections(const std::vector<CommandText>& commands) {
    std::vector<std::pair<std::vector<std::string>, std::string>> groups;
    for (const CommandText& command : commands) {
        for (const OptionText& option : command.options) {
            const auto takers = takersOf(option, commands);
            if (takers.front() != command.name) {
                continue;  // listed already
            }
            auto group = std::find_if(groups.begin(), groups.end(), [&](const auto& g) { return g.first == takers; });
            if (group == groups.end()) {
                group = groups.insert(group, {takers, ""});
            }
            group->second += entry(spaced(option.names, ", "), option.value, option.help);
        }
    }
    std::string sections;
    for (const auto& [takers, entries] : groups) {
        sections += ".SS Of " + joined(takers) + "\n" + entries;
    }
    return sections;
}

/// The command lines of all examples, each with what it does.
std::string exampleEntries(const CLI::App& app, const std::vector<CommandText>& commands) {
    std::string entries;
    const auto add = [&entries](const CommandText& command) {
        for (const auto& [line, meaning] : command.examples) {
            entries += entry(line, "", meaning);
        }
    };
    add(textOf(app));
    std::for_each(commands.begin(), commands.end(), add);
    return entries;
}

constexpr const char* bashHead = R"(# Completion of rt305 for bash.
_rt305() {
    local word=${COMP_WORDS[COMP_CWORD]} words=
    if [ "$COMP_CWORD" -eq 1 ]; then
        words=')";
constexpr const char* bashValues = R"('
    else
        case "${COMP_WORDS[1]} ${COMP_WORDS[COMP_CWORD - 1]}" in
)";
constexpr const char* bashOptions = R"(        *)
            case "${COMP_WORDS[1]} $word" in
)";
constexpr const char* bashTail = R"(            esac
            ;;
        esac
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -o default -F _rt305 rt305
)";

/// Completes commands, options and choices; bash completes the rest as files.
std::string bashCompletion(const std::vector<CommandText>& commands) {
    std::vector<std::string> names;
    std::string values;
    std::string options;
    for (const CommandText& command : commands) {
        names.push_back(command.name);
        std::vector<std::string> words;
        for (const OptionText& option : command.options) {
            if (option.isPositional()) {
                continue;
            }
            words.push_back(option.names.back());
            if (!option.choices.empty()) {
                values += "        '" + command.name + " " + option.names.back() + "') words='" +
                          spaced(option.choices) + "' ;;\n";
            }
        }
        options += "            '" + command.name + " -'*) words='" + spaced(words) + "' ;;\n";
    }
    return bashHead + spaced(names) + bashValues + values + bashOptions + options + bashTail;
}

/// Text escaped for the quoted brackets of a zsh option description.
std::string zshQuoted(const std::string& text) {
    std::string quoted;
    for (const char c : text) {
        quoted += c == '\''                                         ? "'\\''"
                  : (c == ':' || c == '[' || c == ']' || c == '\\') ? std::string{'\\', c}
                                                                    : std::string(1, c);
    }
    return quoted;
}

std::string zshArgument(const OptionText& option) {
    if (option.isPositional()) {
        return " ':" + zshQuoted(option.names[0]) + ":_files'";
    }
    const std::string action = option.choices.empty() ? "_files" : "(" + spaced(option.choices) + ")";
    std::string arguments;
    for (const std::string& name : option.names) {
        arguments += " \\\n        '" + name + "[" + zshQuoted(option.help) + "]" +
                     (option.value.empty() ? "" : ":" + zshQuoted(option.value) + ":" + action) + "'";
    }
    return arguments;
}

std::string zshCompletion(const std::vector<CommandText>& commands) {
    std::string names;
    std::string cases;
    for (const CommandText& command : commands) {
        names += " \\\n        '" + command.name + ":" + zshQuoted(command.help) + "'";
        cases += "    " + command.name + ")\n        _arguments";
        for (const OptionText& option : command.options) {
            cases += zshArgument(option);
        }
        cases += " ;;\n";
    }
    return "#compdef rt305\n_rt305() {\n    local -a commands\n    commands=(" + names +
           ")\n    if (( CURRENT == 2 )); then\n        _describe command commands\n        return\n    fi\n"
           "    shift words\n    (( CURRENT-- ))\n    case $words[1] in\n" +
           cases + "    esac\n}\n_rt305 \"$@\"\n";
}

}  // namespace

std::string manualPage(const CLI::App& app) {
    const auto commands = commandsOf(app);
    std::ostringstream page;
    page << ".TH RT305 1 \"\" \"rt305 " << toolVersion << "\" \"User Commands\"\n.nh\n.ad l\n.SH NAME\nrt305 \\- "
         << "measure sampled three\\-phase voltages and currents\n.SH SYNOPSIS\n";
    for (const CommandText& command : commands) {
        page << (&command == commands.data() ? "" : ".br\n") << roffEscaped(command.synopsis()) << '\n';
    }
    page << ".SH DESCRIPTION\n" << roffEscaped(app.get_description()) << "\n.SH COMMANDS\n";
    for (const CommandText& command : commands) {
        page << entry(command.name, "", command.help);
    }
    page << ".SH OPTIONS\n.SS Without a command\n";
    for (const OptionText& option : textOf(app).options) {
        page << entry(spaced(option.names, ", "), option.value, option.help);
    }
    page << optionSections(commands) << ".SH EXAMPLES\n" << exampleEntries(app, commands);
    page << ".SH NOTES\n"
         << roffEscaped(app.get_footer()) << "\n.SH ENVIRONMENT\n"
         << entry("RT305_4_LIBRARY", "", "the library file to use when --library names none");
    page << ".SH SEE ALSO\n.BR rt305_4 (3)\n";
    return page.str();
}

std::string completion(const CLI::App& app, const std::string& shell) {
    const auto commands = commandsOf(app);
    return shell == "zsh" ? zshCompletion(commands) : bashCompletion(commands);
}

}  // namespace rt305
