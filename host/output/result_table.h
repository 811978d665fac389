#ifndef RT305_HOST_OUTPUT_RESULT_TABLE_H
#define RT305_HOST_OUTPUT_RESULT_TABLE_H

#include <optional>
#include <string>
#include <vector>

namespace rt305 {

/// One table of results, the same for every output form. The figures of a row share a unit, as phases side by side do,
/// unless each column has its own. The table is a list if its columns belong to channels: in JSON an array with an
/// object for each channel and row, without those that are not defined.
struct ResultTable {
    /// The heading of a row or a column.
    struct Line {
        std::string key;    // in JSON and CSV, without blanks
        std::string label;  // in text
        std::string unit;
        int mostDecimals = 6;   // fewer where the library resolves less; 0: whole numbers
        std::string channel{};  // of a column in a list

        /// The key in CSV: "total", or "Ua_order" in a list.
        std::string csvKey() const { return channel.empty() ? key : channel + "_" + key; }
    };
    /// Empty where the quantity is not defined, NaN where its value is missing.
    using Cell = std::optional<double>;

    std::string name{};    // in JSON and CSV
    std::string title{};   // above the table; may be empty
    std::string corner{};  // above the row labels
    std::string rowKey{};  // of a list: the key of its row numbers in JSON; empty: they are ranks
    bool unitsByColumn = false;
    std::vector<Line> columns{};
    std::vector<Line> rows{};
    std::vector<std::vector<Cell>> cells{};  // by row
    std::string footnote{};

    bool isList() const { return !columns.empty() && !columns[0].channel.empty(); }
    void addRow(Line line, std::vector<Cell> figures);
};

/// The texts of all cells by row, heading first: the label, the figures, and the unit unless the columns have theirs.
std::vector<std::vector<std::string>> cellTexts(const ResultTable& table);

/// The table with aligned columns; title and heading in bold when styled.
std::string textOf(const ResultTable& table, bool styled = false);

}  // namespace rt305

#endif
