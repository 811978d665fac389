#ifndef RT305_HOST_CSV_READER_H
#define RT305_HOST_CSV_READER_H

#include <optional>
#include <string>
#include <string_view>

#include "recording.h"

namespace rt305 {

/// Reads a recording from CSV text: comment lines ("#" or ";"), one line that names the columns, then one row a sample.
///
/// The separator is the first of semicolon, tab and comma that the naming line contains; unless it is the comma,
/// numbers may have a decimal comma. Names may carry a unit, "Ua(V)", "Ua [kV]" or "Ua_mV". A column with the word "t",
/// "time", "timestamp" or "datetime" in its name holds time: numbers in seconds, or in ms, us or ns when it says so, or
/// stamps "YYYY-MM-DD hh:mm:ss.fff" of the years 1900 to 2099 with up to nine decimals, with or without the date. The
/// rate is (rows - 1) / (last - first), so that jitter of single stamps does not matter; a given rate makes the time
/// column unread. A missing sample is written NaN.
///
/// Fails, with file and line, on rows of another length than the naming line, on unreadable times and on a file without
/// rows. A cell that is not a number is the fault of its column. Time steps beyond 1.5 times the median one, or that do
/// not advance, are one warning.
Recording readCsv(std::string_view text, const std::string& source, std::optional<double> rateHz = std::nullopt);

}  // namespace rt305

#endif
