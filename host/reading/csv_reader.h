#ifndef RT305_HOST_READING_CSV_READER_H
#define RT305_HOST_READING_CSV_READER_H

#include <string>
#include <string_view>

#include "base/read_text.h"
#include "reading/read_options.h"
#include "recording/recording.h"

namespace rt305 {

/// Reads a recording from CSV text in one of the layouts of csv_layout.h. Columns without names are numbered from 1.
///
/// A name may include a unit: "Ua(V)", "Ua [kV]", "Ua/V" or "Ua_mV". A column whose name begins with "t", "time",
/// "Zeit" or the like, else a first column with a unit of time, holds time: numbers in s or in the unit of its heading,
/// or time stamps. Numbers without a unit under which no column has a fundamental of 15 to 500 Hz are in ms, us or ns,
/// where one has it; a warning says so. A first column without a name holds time if it increases in even steps other
/// than 1. An empty cell, "NaN", "NA" and "-" are missing samples.
///
/// The rate of a segment is that of the straight line through its times, so neither jitter nor rounding of time stamps
/// matters. A jump in time begins a new segment. With a given rate the time column is not read. The rate in the lines
/// above the rows is used when there is no time column.
///
/// Fails, with file and line, on rows of unequal length, on unreadable times and on a text without rows. A last row
/// that is too short is ignored with a warning. A cell that is not a number makes its column faulty.
///
/// The memory of `text` is released as it is read, if it is that of a string that is given, too.
Recording readCsv(std::string_view text, const std::string& source, const ReadOptions& options = {},
                  ReadText memory = ReadText());

}  // namespace rt305

#endif
