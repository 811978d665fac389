#ifndef RT305_HOST_BASE_TEXT_TABLE_H
#define RT305_HOST_BASE_TEXT_TABLE_H

#include <string>
#include <vector>

namespace rt305 {

/// A plain-text table with aligned columns: one letter per column, "l" for left or "r" for right.
class TextTable {
public:
    explicit TextTable(std::string alignment) : alignment_(std::move(alignment)) {}

    /// Adds a row. Cells are shown without control characters, and cut after 400 bytes.
    void add(const std::vector<std::string>& cells);

    /// Formats numbers with the same number of decimals, so that the largest shows six significant digits; at most
    /// `mostDecimals`. NaN is "-".
    static std::vector<std::string> numbers(const std::vector<double>& values, int mostDecimals = 6);

    /// The table as lines. Two blanks separate the columns.
    std::string text() const;

private:
    std::string alignment_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace rt305

#endif
