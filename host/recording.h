#ifndef RT305_HOST_RECORDING_H
#define RT305_HOST_RECORDING_H

#include <optional>
#include <string>
#include <vector>

#include "channels.h"

namespace rt305 {

/// One column of a recording as its file holds it.
struct Column {
    std::string name;
    std::string unit;             // as written in the file; empty when the file does not say
    std::vector<double> samples;  // in `unit`; NaN where the file says so
    std::string fault;            // why the column holds no samples; empty when it does
};

/// What every file reader makes, and all that the rest of the tool knows of a file.
struct Recording {
    std::string source;  // the file's name, for messages
    std::vector<Column> columns;
    std::size_t length = 0;             // samples in every column without a fault
    double rateHz = 0.0;                // 0: unknown
    std::string rateOrigin;             // "from column ..." and the like
    std::vector<std::string> warnings;  // what a reader found odd but could read
};

/// The column that holds each channel: the user's choice (a column's name in any case, or its number from 1), else the
/// one column with a word such as "Ua", "V1" or "ib" in its name. Fails when a choice does not exist, when two columns
/// name one channel, and when a chosen column has a fault.
PerChannel<std::optional<std::size_t>> assignColumns(const Recording& recording,
                                                     const PerChannel<std::string>& chosen = {});

/// The samples of a column in V or A, whatever the prefix of its unit. Units that are not known count as V or A.
std::vector<double> samplesInBaseUnit(const Column& column);

}  // namespace rt305

#endif
