#ifndef RT305_TESTS_HOST_TOOL_RUN_H
#define RT305_TESTS_HOST_TOOL_RUN_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

/// Runs the tool as a user runs it.

struct ToolRun {
    int exitCode;
    std::string output;  // stdout, or both with "2>&1" in the arguments
};

inline std::string withShell(const std::string& command, int* exitCode) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        ADD_FAILURE() << command;
        return output;
    }
    std::array<char, 65536> block;
    for (std::size_t got = 0; (got = fread(block.data(), 1, block.size(), pipe)) > 0;) {
        output.append(block.data(), got);
    }
    const int status = pclose(pipe);
    *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return output;
}

inline ToolRun run(const std::string& arguments, const std::string& environment = "") {
    ToolRun result{};
    result.output = withShell(environment + " " TOOL " " + arguments, &result.exitCode);
    return result;
}

inline std::string contentOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

#endif
