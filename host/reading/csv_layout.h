#ifndef RT305_HOST_READING_CSV_LAYOUT_H
#define RT305_HOST_READING_CSV_LAYOUT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"

namespace rt305 {

/// How a CSV text is laid out.
struct CsvLayout {
    char separator = ',';
    std::size_t width = 0;             // cells per row
    std::size_t firstLine = 0;         // line number of the first row; 0: no rows
    std::vector<std::string> names{};  // of the columns; empty: none in the text
    std::vector<std::string> units{};  // from a line of units; empty: none
    std::vector<bool> isNote{};        // columns with settings or remarks instead of samples
    std::optional<double> rateHz{};    // from the lines above the samples
    Comma comma = Comma::none;         // in numbers
    std::string doubtfulNumber{};      // one that has another value with the other kind of comma; empty: none
};

/// The cells of a line, trimmed and without quotes. A cell that begins with a quote ends with the next single one, so
/// it may hold separators (RFC 4180, section 2). Several blanks in a row are one separator.
std::vector<std::string_view> cellsOf(std::string_view line, char separator);

/// The cells of a row, without an empty one that follows the `width`th after a separator at the end of the line.
std::vector<std::string_view> cellsOfRow(std::string_view line, char separator, std::size_t width);

/// Whether a line is a comment: it begins with "#", "%" or "//", or with ";" when that is not the separator.
bool isComment(std::string_view line, char separator);

/// Finds the layout from the first 1000 lines.
///
/// The rows are the longest run of lines with equal numbers of cells and with a number or time in each. The separator
/// is the one of semicolon, tab, comma and blank that gives the longest run. A comma in a number is a decimal sign,
/// unless another number shows that commas separate groups of three digits. In a file with the comma as separator,
/// numbers with commas stand in quotes.
///
/// The column names are in the last line above the rows, commented out or not, that has as many cells and is not a line
/// of units; a line of units may follow it. Above it, a line that begins with "Label" names columns too, and one that
/// begins with "Vertical Units" has their units. Without names, columns that are empty in the last row are notes: some
/// instruments print their settings beside the samples.
///
/// A rate is a number after words such as "sample rate" or "sampling interval", above the rows or in the notes, or the
/// inverse of the number below the heading "Increment" in the line of units.
///
/// Rows of more than `mostColumns` cells have no names, units or notes.
CsvLayout layoutOf(std::string_view text);

}  // namespace rt305

#endif
