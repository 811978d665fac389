#ifndef RT305_HOST_CLI_BATCH_H
#define RT305_HOST_CLI_BATCH_H

#include <functional>
#include <optional>
#include <string>

namespace rt305 {

/// The next name to work on; nothing after the last.
using NextName = std::function<std::optional<std::string>()>;

/// Processes one name: writes to std::cout, reports its own failures and returns an exit code.
using Work = std::function<int(const std::string& name)>;

/// Runs `work` for each name in up to `jobs` processes, and writes the output in input order. A failure, or the crash
/// of one of several processes, does not stop the others. One process writes each result before it takes the next name;
/// several take names ahead. `total` is the number of names for the progress bar, 0 if unknown. Returns 0, the exit
/// code of a single name, or the one for failures among several names, which it lists.
int runBatch(const NextName& next, std::size_t total, std::size_t jobs, const Work& work);

}  // namespace rt305

#endif
