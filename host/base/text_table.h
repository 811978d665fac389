#ifndef RT305_HOST_BASE_TEXT_TABLE_H
#define RT305_HOST_BASE_TEXT_TABLE_H

#include <string>
#include <vector>

namespace rt305 {

/// A table of texts with aligned columns. One letter a column says how: "l" left, "r" right.
class TextTable {
public:
    explicit TextTable(std::string alignment) : alignment_(std::move(alignment)) {}

    void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

    /// Cells whose numbers share as many decimals as show six significant digits of the largest of them, like an
    /// instrument's display, but no more than that many. NaN is shown as "-".
    static std::vector<std::string> numbers(const std::vector<double>& values, int mostDecimals = 6);

    /// The lines, each ended; a cell is two blanks away from the longest one to its left.
    std::string text() const;

private:
    std::string alignment_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace rt305

#endif
