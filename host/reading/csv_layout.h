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
    std::size_t width = 0;           // cells of a row
    std::size_t firstLine = 0;       // the number of the first row's line; 0: there is none
    std::vector<std::string> names;  // of the columns; empty: the text names none
    std::vector<std::string> units;  // of a row of units; empty: there is none
    std::vector<bool> isNote;        // columns that hold remarks beside the samples
    std::optional<double> rateHz;    // as the lines above the samples say

    bool hasDecimalComma() const { return separator != ','; }
};

/// The cells of a line, without quotes. Blanks as separators count once however many there are.
std::vector<std::string_view> cellsOf(std::string_view line, char separator);

/// Whether a line of a CSV text is a comment: it begins with "#", "%" or "//", or with ";" where that does not
/// separate.
bool isComment(std::string_view line, char separator);

/// Finds the layout from the first 1000 lines.
///
/// The rows are the longest run of lines of the same width that hold numbers or times, by the separator (semicolon,
/// tab, comma or blank) that gives the longest run. Unless it is the comma, numbers may have a decimal comma. Of the
/// lines above, commented out or not, the last with as many cells and not units only names the columns; one between it
/// and the rows may hold units. Without such a line, columns that are empty at the end of the run are notes: some
/// instruments print their settings beside the samples. A rate is a number behind words such as "sample rate" or
/// "sampling interval", above the rows or in the notes.
CsvLayout layoutOf(std::string_view text);

}  // namespace rt305

#endif
