#ifndef RT305_4_RESULTS_TEXT_CELL_H
#define RT305_4_RESULTS_TEXT_CELL_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "table/mlab_table.h"
#include "toolkit/array.h"

// From the values of a computation record to the cells of a result table.

inline MatlabCell textCell(std::string_view text) {
    return MatlabCell(std::string(text));
}

inline MatlabCell rowCell(const coder::row& values) {
    return MatlabCell(std::vector<double>(values.begin(), values.end()));
}

/// Column counts of the records are small doubles; they are truncated toward zero, NaN and negative ones count as none.
inline std::uint64_t columnCount(double variables) {
    return variables > 0.0 ? static_cast<std::uint64_t>(variables) : 0;
}

/// Fills a table from a record of named values with units: one row each.
template <class Record>
void fillNamedValues(MatlabTable& table, const Record& record) {
    table.resize(columnCount(record.header.variables), record.values.size());
    for (std::size_t row = 0; row < record.values.size(); ++row) {
        table.setCell(0, row, textCell(record.names[row]));
        table.setCell(1, row, MatlabCell(record.values[row]));
        table.setCell(2, row, textCell(record.units[row]));
    }
}

#endif
