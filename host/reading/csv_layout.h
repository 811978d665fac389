#ifndef RT305_HOST_READING_CSV_LAYOUT_H
#define RT305_HOST_READING_CSV_LAYOUT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace rt305 {

/// How a CSV text is laid out.
struct CsvLayout {
    char separator = ',';
    std::size_t width = 0;           // cells per row
    std::size_t firstLine = 0;       // line number of the first row; 0: no rows
    std::vector<std::string> names;  // of the columns; empty: none in the text
    std::vector<std::string> units;  // from a line of units; empty: none
    std::vector<bool> isNote;        // columns with settings or remarks instead of samples
    std::optional<double> rateHz;    // from the lines above the samples

    bool hasDecimalComma() const { return separator != ','; }
};

/// The cells of a line, without quotes. Several blanks in a row are one separator.
std::vector<std::string_view> cellsOf(std::string_view line, char separator);

/// The cells of a row, without an empty one that follows the `width`th after a separator at the end of the line.
std::vector<std::string_view> cellsOfRow(std::string_view line, char separator, std::size_t width);

/// Whether a line is a comment: it begins with "#", "%" or "//", or with ";" when that is not the separator.
bool isComment(std::string_view line, char separator);

/// Finds the layout from the first 1000 lines.
///
/// The rows are the longest run of lines with equal numbers of cells and with a number or time in each. The separator
/// is the one of semicolon, tab, comma and blank that gives the longest run. Unless it is the comma, numbers may have a
/// decimal comma.
///
/// The column names are in the last line above the rows, commented out or not, that has as many cells and is not a line
/// of units; a line of units may follow it. Without names, columns that are empty in the last row are notes: some
/// instruments print their settings beside the samples.
///
/// A rate is a number after words such as "sample rate" or "sampling interval", above the rows or in the notes.
CsvLayout layoutOf(std::string_view text);

}  // namespace rt305

#endif
