#ifndef RT305_HOST_CLI_FILE_BATCH_H
#define RT305_HOST_CLI_FILE_BATCH_H

#include <functional>
#include <string>

#include "cli/commands.h"

namespace rt305 {

/// Runs the work, which may throw, for each file in the command line and in the list of names: see runBatch(). Reports
/// failures, for --json-lines as a line of their own, and returns the exit code. Fails on options that contradict each
/// other. `hasManyDocuments`: each file or the only one gives more than one document.
int runFiles(const FileOptions& options, bool hasManyDocuments, const std::function<void(const std::string&)>& work);

}  // namespace rt305

#endif
