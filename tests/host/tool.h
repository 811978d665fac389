#ifndef RT305_TESTS_HOST_TOOL_H
#define RT305_TESTS_HOST_TOOL_H

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

/// Runs the tool as a user runs it.

/// An empty folder in which all commands run; it is removed at the end.
inline const std::string& workFolder() {
    static const struct Folder {
        Folder() { std::filesystem::create_directories(path); }
        ~Folder() { std::filesystem::remove_all(path); }
        std::string path = testing::TempDir() + "rt305_" + std::to_string(getpid());
    } folder;
    return folder.path;
}

struct ToolRun {
    int exitCode = -1;
    std::string output;  // stdout and stderr
};

/// Runs shell commands that know `rt305`, the short forms `generate`, and `measure`, `params` and `signals` with JSON,
/// and the files $data and $sample.
inline ToolRun run(const std::string& command) {
    const std::string start = "cd " + workFolder() +
                              "; PATH=" TOOL_FOLDER ":$PATH; export RT305_4_LIBRARY=" LIBRARY "; data=" DATA_FOLDER
                              "; export sample=" SOURCE_FOLDER
                              "/examples/recordings/sample.csv; "
                              "generate() { rt305 generate \"$@\"; }; for name in measure params signals; do "
                              "eval \"$name() { rt305 $name --json-lines \\\"\\$@\\\"; }\"; done; exec 2>&1; ";
    ToolRun result;
    FILE* const pipe = popen((start + command).c_str(), "r");
    std::array<char, 65536> block;
    for (std::size_t got = 0; (got = fread(block.data(), 1, block.size(), pipe)) > 0;) {
        result.output.append(block.data(), got);
    }
    const int status = pclose(pipe);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

inline std::string contentOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// What a command shows, as items with "; " between them: "text" is in its output, "!text" is not, blanks in a row
/// count as one, and "power/P = 3450 3450 - ~ 2" are the figures of a row or one figure of its JSON line, "-" a missing
/// one, within 2, or within 0.02 % (0.0002 below 1) without "~".
struct Shown {
    std::string command;
    std::string items;
    int exitCode = 0;
};

inline bool areFigures(const std::string& output, const std::string& item, std::size_t equals) {
    const std::size_t line = output[0] == '{' ? 0 : output.find("\n{") + 1;
    const auto all = nlohmann::ordered_json::parse(output.substr(line, output.find('\n', line) - line), nullptr, false);
    const nlohmann::ordered_json::json_pointer place("/" + item.substr(0, equals));
    auto row = all.contains(place) ? all[place] : nlohmann::ordered_json();
    row = row.is_structured() ? row : nlohmann::ordered_json{row};
    std::istringstream wanted(item.substr(equals + 3, item.find(" ~ ") - equals - 3));
    const double tolerance = item.find(" ~ ") < item.size() ? std::stod(item.substr(item.find(" ~ ") + 3)) : 0.0;
    for (const auto& figure : row) {
        if (std::string text; !figure.is_string() && wanted >> text) {
            const double value = text == "-" ? 0.0 : std::stod(text);
            const double most = tolerance > 0.0 ? tolerance : 2e-4 * std::fmax(1.0, std::fabs(value));
            if (figure.is_null() != (text == "-") ||
                (figure.is_number() && std::fabs(figure.get<double>() - value) > most)) {
                return false;
            }
        }
    }
    return (wanted >> std::ws).eof();
}

inline void expectShown(const std::vector<Shown>& rows) {
    for (const Shown& row : rows) {
        const ToolRun result = run(row.command);
        EXPECT_EQ(result.exitCode, row.exitCode) << row.command << "\n" << result.output;
        std::string text;
        std::unique_copy(result.output.begin(), result.output.end(), std::back_inserter(text),
                         [](char a, char b) { return a == ' ' && b == ' '; });
        const std::string items = std::string(row.items) + "; ";
        for (std::size_t at = 0, end = 0; (end = items.find("; ", at)) != std::string::npos; at = end + 2) {
            const std::string item = items.substr(at, end - at);
            const std::size_t equals = item.find(" = ");
            const bool isShown = equals < item.size() ? areFigures(result.output, item, equals)
                                 : item[0] == '!'     ? text.find(item.substr(1)) == std::string::npos
                                                      : text.find(item) != std::string::npos;
            EXPECT_TRUE(isShown) << row.command << "\ndoes not show: " << item << "\n" << result.output;
        }
    }
}

#endif
