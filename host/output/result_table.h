#ifndef RT305_HOST_OUTPUT_RESULT_TABLE_H
#define RT305_HOST_OUTPUT_RESULT_TABLE_H

#include <optional>
#include <string>
#include <vector>

namespace rt305 {

/// One table of results, the same for every output form. The figures of a row share a unit, as phases side by side do,
/// unless each column has its own.
struct ResultTable {
    /// The heading of a row or a column.
    struct Line {
        std::string key;    // in JSON and CSV, without blanks
        std::string label;  // in text
        std::string unit;
        int mostDecimals = 6;  // fewer where the library resolves less
    };
    /// Empty where the quantity is not defined, NaN where its value is missing.
    using Cell = std::optional<double>;

    std::string name{};    // in JSON and CSV
    std::string title{};   // above the table; may be empty
    std::string corner{};  // above the row labels
    bool unitsByColumn = false;
    std::vector<Line> columns{};
    std::vector<Line> rows{};
    std::vector<std::vector<Cell>> cells{};  // by row
    std::string footnote{};

    void addRow(Line line, std::vector<Cell> figures);
};

/// The texts of all cells by row, heading first: the label, the figures, and the unit unless the columns have theirs.
std::vector<std::vector<std::string>> cellTexts(const ResultTable& table);

/// The table with aligned columns; title and heading in bold when styled.
std::string textOf(const ResultTable& table, bool styled = false);

}  // namespace rt305

#endif
