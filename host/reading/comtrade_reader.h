#ifndef RT305_HOST_READING_COMTRADE_READER_H
#define RT305_HOST_READING_COMTRADE_READER_H

#include <optional>
#include <string>
#include <string_view>

#include "base/read_text.h"
#include "reading/comtrade_configuration.h"
#include "reading/read_options.h"
#include "recording/recording.h"

namespace rt305 {

/// The parts of a COMTRADE record, from separate files or from the sections of one.
struct ComtradeParts {
    std::string configurationName;
    std::string_view configuration{};
    std::string dataName{};
    std::string_view data{};
    std::optional<SampleForm> form{};  // of the data, when given in the heading of a section
    std::string_view header{};         // free text, may be empty
};

/// Reads a COMTRADE record.
///
/// A sample is multiplier * raw + offset, in the channel's unit. Missing samples are 99999 and empty fields in ASCII,
/// 0x8000 in BINARY, 0x80000000 in BINARY32, NaN and the most negative number in FLOAT32. Times follow from the rate
/// lines, or from the time stamps when there are none. A jump of the stamps or a change of the rate by more than 1 %
/// begins a new segment. The delay (skew) of a channel is kept with its column.
///
/// Fails, with file and line or byte, when no sample can be read or a field is not a number. A length that differs from
/// the announced one and an incomplete last record are warnings. So is a header with RMS values that equal the peaks of
/// the samples: some recorders store instantaneous values divided by sqrt(2).
///
/// The memory of the data is released as it is read, if it is that of a string that is given, too.
Recording readComtrade(const ComtradeParts& parts, const ReadOptions& options = {}, ReadText memory = ReadText());

}  // namespace rt305

#endif
