#ifndef RT305_HOST_CLI_BATCH_H
#define RT305_HOST_CLI_BATCH_H

#include <functional>
#include <optional>
#include <string>

namespace rt305 {

/// The names to work on, one after the other; nothing at the end.
using NextName = std::function<std::optional<std::string>()>;

/// What is done with each name: writes to std::cout, tells its failures itself and gives its exit code.
using Work = std::function<int(const std::string& name)>;

/// Works on every name, in `jobs` processes, and writes what they write in the order of the names. A failure, or
/// the crash of one of several processes, does not stop the others. One process writes each result before it takes the
/// next name; several take names ahead. `total` is the number of names, for the progress bar; 0 when it is not known.
/// Gives 0, the exit code of a single name, or the one for failures among several, which it lists.
int runBatch(const NextName& next, std::size_t total, std::size_t jobs, const Work& work);

}  // namespace rt305

#endif
