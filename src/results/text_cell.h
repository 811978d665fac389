#ifndef RT305_4_RESULTS_TEXT_CELL_H
#define RT305_4_RESULTS_TEXT_CELL_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "table/mlab_table.h"

// Converts the values of a computation record to the cells of a result table.

inline MatlabCell textCell(std::string_view text) {
    return MatlabCell(text);
}

/// A cell that shares its row with others; an empty row for null.
inline MatlabCell rowCell(const MatlabCell::SharedRow& values) {
    return values != nullptr ? MatlabCell(values) : MatlabCell(std::vector<double>());
}

/// Column counts of the records are small doubles: truncated toward zero; NaN and negative counts give 0.
inline std::uint64_t columnCount(double variables) {
    return variables > 0.0 ? static_cast<std::uint64_t>(variables) : 0;
}

/// Fills a table from a record of named values with units: one row each.
template <class Record>
void fillNamedValues(MatlabTable& table, const Record& record) {
    constexpr std::size_t columns = 3;
    std::vector<MatlabCell> cells;
    cells.reserve(columns * record.values.size());
    for (std::size_t row = 0; row < record.values.size(); ++row) {
        cells.emplace_back(record.names[row]);
        cells.emplace_back(record.values[row]);
        cells.emplace_back(record.units[row]);
    }
    table.setCells(columns, std::move(cells));
}

#endif
