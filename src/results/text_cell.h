#ifndef RT305_4_RESULTS_TEXT_CELL_H
#define RT305_4_RESULTS_TEXT_CELL_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "table/mlab_cell.h"
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

#endif
