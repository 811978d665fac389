#ifndef RT305_HOST_CLI_BATCH_H
#define RT305_HOST_CLI_BATCH_H

#include <functional>
#include <iostream>
#include <optional>
#include <string>

#include "base/failure.h"

namespace rt305 {

/// The next name to work on; nothing after the last.
using NextName = std::function<std::optional<std::string>()>;

/// Added to the exit code of a name after which the batch ends at once.
inline constexpr int stopsBatch = 32;

/// What a batch does with its names.
struct Work {
    std::function<int(const std::string& name)> run;  // writes to std::cout and reports its failures; the exit code
    std::function<int(const std::string& name, const std::string& message, ExitCode code)> fail;  // reports a failure
    std::string separator;          // written between the outputs of two names
    std::ostream& out = std::cout;  // receives the outputs of several names
};

/// Runs the work for each name and writes the outputs in input order. A single name (`total` 1) runs in this process,
/// each of several in a process of its own, up to `jobs` at the same time. With one job each output is written before
/// the next name is taken; several take names ahead, but at most eight times their number, as outputs that wait for an
/// earlier one are kept in memory. If a process ends early, by a signal or without memory, the whole lines that it
/// wrote are followed by its failure, and the other names by their outputs. `total` is the number of names for the
/// progress bar, 0 if unknown. Returns 0, the exit code of a single name, or the one for failures among several names,
/// which it lists. Fails at once, and ends all processes, when output cannot be written or a name stops the batch. The
/// processes end with this one, however it ends.
int runBatch(const NextName& next, std::size_t total, std::size_t jobs, const Work& work);

}  // namespace rt305

#endif
