#ifndef RT305_HOST_OUTPUT_RESULT_TABLE_H
#define RT305_HOST_OUTPUT_RESULT_TABLE_H

#include <optional>
#include <string>
#include <vector>

namespace rt305 {

/// One table of results, the same for every output form. The figures of a row share a unit, as an instrument shows
/// phases side by side, unless the columns have units of their own.
struct ResultTable {
    /// What a row or a column holds.
    struct Line {
        std::string key;    // in JSON and CSV, without blanks
        std::string label;  // for people
        std::string unit;
        int mostDecimals = 6;  // fewer where the library resolves less
    };
    /// Nothing where there is no such quantity, NaN where its value is missing.
    using Cell = std::optional<double>;

    std::string name;    // in JSON and CSV
    std::string title;   // above the table; may be empty
    std::string corner;  // above the row labels
    bool unitsByColumn = false;
    std::vector<Line> columns;
    std::vector<Line> rows;
    std::vector<std::vector<Cell>> cells;  // by row
    std::string footnote{};

    void addRow(Line line, std::vector<Cell> figures);
};

/// The texts of all cells by row, the heading first: a label, the figures of a row, and their unit where the columns
/// have none.
std::vector<std::vector<std::string>> cellTexts(const ResultTable& table);

/// The table with aligned columns; titles and headings in bold when styled.
std::string textOf(const ResultTable& table, bool styled = false);

}  // namespace rt305

#endif
