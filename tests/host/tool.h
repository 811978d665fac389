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

/// Runs shell commands that know `rt305`, the short forms `generate` and `measure`, and the files $data and $sample.
inline ToolRun run(const std::string& command) {
    const std::string start =
        "cd " + workFolder() +
        "; PATH=" TOOL_FOLDER ":$PATH; export RT305_4_LIBRARY=" LIBRARY "; data=" DATA_FOLDER
        "; export sample=" SOURCE_FOLDER
        "/examples/recordings/sample.csv; "
        "generate() { rt305 generate \"$@\"; }; measure() { rt305 measure --json-lines \"$@\"; }; exec 2>&1; ";
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
/// count as one, and "power/P/two-wattmeter = 3450 ~ 2" is a figure of its JSON line within 2, or within 0.02 % (0.0002
/// below 1) without "~". A figure "= -" is missing.
struct Shown {
    const char* command;
    const char* items;
    int exitCode = 0;
};

inline bool isFigure(const std::string& output, const std::string& item, std::size_t equals) {
    const std::size_t line = output[0] == '{' ? 0 : output.find("\n{") + 1;
    const auto document = nlohmann::json::parse(output.substr(line, output.find('\n', line) - line), nullptr, false);
    const nlohmann::json::json_pointer place("/" + item.substr(0, equals));
    const bool isThere = document.contains(place) && document[place].is_number();
    if (item.substr(equals) == " = -" || !isThere) {
        return (item.substr(equals) == " = -") != isThere;
    }
    const double wanted = std::stod(item.substr(equals + 3));
    const std::size_t mark = item.find(" ~ ");
    const double tolerance =
        mark < item.size() ? std::stod(item.substr(mark + 3)) : 2e-4 * std::fmax(1.0, std::fabs(wanted));
    return std::fabs(document[place].get<double>() - wanted) <= tolerance;
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
            const bool isShown = equals < item.size() ? isFigure(result.output, item, equals)
                                 : item[0] == '!'     ? text.find(item.substr(1)) == std::string::npos
                                                      : text.find(item) != std::string::npos;
            EXPECT_TRUE(isShown) << row.command << "\ndoes not show: " << item << "\n" << result.output;
        }
    }
}

#endif
