#ifndef RT305_HOST_CLI_MANUAL_H
#define RT305_HOST_CLI_MANUAL_H

#include <CLI/CLI.hpp>
#include <string>

namespace rt305 {

/// The tool's manual page in the man macros, from the table of its commands and options.
std::string manualPage(const CLI::App& app);

/// The same table as completion for "bash" or "zsh".
std::string completion(const CLI::App& app, const std::string& shell);

}  // namespace rt305

#endif
