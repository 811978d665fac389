#ifndef RT305_HOST_READING_READ_OPTIONS_H
#define RT305_HOST_READING_READ_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "recording/recording.h"

namespace rt305 {

/// What the user says of a file beside its name.
struct ReadOptions {
    std::optional<double> rateHz{};                       // instead of the file's own
    std::vector<std::string> columns{};                   // names of the columns, instead of the file's own
    std::vector<std::pair<std::string, double>> gains{};  // column by name or number, factor
    Transformer::Side side = Transformer::Side::unknown;  // of the transformers to give values of; unknown: as written
    bool storedAsRms = false;                             // samples are instantaneous values / sqrt(2)
    std::string encoding{};                               // of texts that are not UTF-8
};

}  // namespace rt305

#endif
