#ifndef RT305_HOST_CLI_MANUAL_H
#define RT305_HOST_CLI_MANUAL_H

#include <CLI/CLI.hpp>
#include <string>

namespace rt305 {

/// The manual page of the tool in man macros, made from its commands and options.
std::string manualPage(const CLI::App& app);

/// The completion script for "bash" or "zsh".
std::string completion(const CLI::App& app, const std::string& shell);

}  // namespace rt305

#endif
