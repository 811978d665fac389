#ifndef RT305_HOST_READING_CSV_READER_H
#define RT305_HOST_READING_CSV_READER_H

#include <string>
#include <string_view>

#include "reading/read_options.h"
#include "recording/recording.h"

namespace rt305 {

/// Reads a recording from CSV text, laid out as csv_layout.h says. Columns without a name are numbered from 1.
///
/// Names may carry a unit, "Ua(V)", "Ua [kV]" or "Ua_mV". A column with the word "t", "time", "timestamp" or "datetime"
/// in its name holds time: numbers in seconds, or in ms, us or ns when it says so, or time stamps. So does the first of
/// columns without names when it advances evenly, but not by one. The rate is (rows - 1) / (last - first) of a segment,
/// so that jitter of single stamps does not matter; a given rate makes the time column unread, and the rate that the
/// lines above the rows tell is taken when there is no time column. A jump in time begins a new segment. An empty cell,
/// "NaN", "NA" and "-" are missing samples.
///
/// Fails, with file and line, on rows of another length than the first and on unreadable times, and on a text without
/// rows. A last row that is too short is left out with a warning. A cell that is not a number is the fault of its
/// column.
Recording readCsv(std::string_view text, const std::string& source, const ReadOptions& options = {});

}  // namespace rt305

#endif
