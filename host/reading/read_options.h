#ifndef RT305_HOST_READING_READ_OPTIONS_H
#define RT305_HOST_READING_READ_OPTIONS_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "recording/recording.h"

namespace rt305 {

/// What the user specifies about a file.
struct ReadOptions {
    std::optional<double> rateHz{};                       // instead of the file's own
    std::vector<std::string> columns{};                   // column names, instead of the file's own
    std::vector<std::pair<std::string, double>> gains{};  // column (name or number) and factor
    Transformer::Side side = Transformer::Side::unknown;  // transformer side to convert to; unknown: as in the file
    bool storedAsRms = false;                             // samples are instantaneous values / sqrt(2)
    bool withChecksums = false;                           // Recording::files gets them
    std::string encoding{};                               // of text that is not UTF-8
    std::string dataFile{};                               // of a COMTRADE record; empty: found beside its configuration

    /// Called with all files of the recording before their content is looked at; may throw.
    std::function<void(const std::vector<SourceFile>&)> whenRead{};

    /// Fails when the user named columns, but not as many as the file has.
    void requireColumnTotal(std::size_t total, const std::string& source) const {
        if (!columns.empty() && columns.size() != total) {
            failInput(source + ": --columns names " + counted(columns.size(), "column") + ", but the file has " +
                      std::to_string(total));
        }
    }
};

}  // namespace rt305

#endif
