#include "results/phase_signal_result_table.h"

#include "results/text_cell.h"

using enum MatlabCell::CellDataType;

const MatlabTable::Scheme PhaseSignalResultTable::tableScheme{
    {"LastName", text}, {"dataName", floating}, {"UomName", text}};

void PhaseSignalResultTable::fill(const calc_modul_K9_web_ns::coder::table& record) {
    fillNamedValues(*this, record);
}
