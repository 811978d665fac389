#include "results/phase_signal_result_table.h"

#include "results/text_cell.h"

using enum MatlabCell::CellDataType;

const MatlabTable::Scheme PhaseSignalResultTable::tableScheme{
    {"LastName", text}, {"dataName", floating}, {"UomName", text}};

void PhaseSignalResultTable::fill(const calc_modul_K9_web_ns::coder::table& record) {
    resize(columnCount(record.header.variables), record.values.size());
    for (std::size_t row = 0; row < record.values.size(); ++row) {
        setCell(0, row, textCell(record.names[row]));
        setCell(1, row, MatlabCell(record.values[row]));
        setCell(2, row, textCell(record.units[row]));
    }
}
