#include "results/rt305_4_param_table.h"

#include "results/text_cell.h"

void RT305_4_ParamTable::init(const calc_modul_K9_web_ns::coder::d_table& record) {
    resize(columnCount(record.header.variables), record.values.size());
    for (std::size_t row = 0; row < record.values.size(); ++row) {
        setCell(0, row, textCell(record.names[row]));
        setCell(1, row, MatlabCell(record.values[row]));
        setCell(2, row, textCell(record.units[row]));
    }
}
