#ifndef RT305_HOST_CLI_SETTINGS_FILE_H
#define RT305_HOST_CLI_SETTINGS_FILE_H

#include <CLI/CLI.hpp>

namespace rt305 {

/// Gives the options of a command that the command line does not have the values of the file that --settings names, in
/// TOML: `nominal = 60`, `sqrt2 = true`, or a table such as [map] with `Ua = "VA"`. A key is the name of an option that
/// says what a recording is or how it is measured; those for files, the library and output are refused, since "auto"
/// takes a file that may have come with the recording. A note names what was taken. Fails on a file that cannot be
/// read, and on unknown keys.
void applySettings(CLI::App& command);

}  // namespace rt305

#endif
