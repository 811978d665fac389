#ifndef RT305_HOST_READING_COMTRADE_READER_H
#define RT305_HOST_READING_COMTRADE_READER_H

#include <optional>
#include <string>
#include <string_view>

#include "reading/comtrade_configuration.h"
#include "reading/read_options.h"
#include "recording/recording.h"

namespace rt305 {

/// The parts of a COMTRADE record, as separate files or as sections of a single one.
struct ComtradeParts {
    std::string configurationName;
    std::string_view configuration{};
    std::string dataName{};
    std::string_view data{};
    std::optional<SampleForm> form{};  // of the data, when a section's heading gives it
    std::string_view header{};         // free text, may be empty
};

/// Reads a COMTRADE record.
///
/// A sample is multiplier * raw + offset in the channel's unit. Missing are 99999 and empty fields in ASCII, 0x8000 in
/// BINARY, 0x80000000 in BINARY32, NaN and the most negative number in FLOAT32. Time advances by the rates of the rate
/// lines where there are some, else by the time stamps; a jump of the stamps or a change of the rate by more than 1 %
/// begins a new segment. Channels that were sampled later than others keep that delay.
///
/// Fails, with file and line or byte, when not one sample can be read or a field is no number. A length other than the
/// announced one, an incomplete last record and stamps without use are warnings. So is a header that quotes as RMS
/// values what the samples have as peaks: some recorders store instantaneous values divided by sqrt(2).
Recording readComtrade(const ComtradeParts& parts, const ReadOptions& options = {});

}  // namespace rt305

#endif
