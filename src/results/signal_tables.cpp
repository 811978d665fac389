#include "results/signal_tables.h"

using enum MatlabCell::CellDataType;

const MatlabTable::Scheme PhaseSignalResultTable::tableScheme{
    {"LastName", text}, {"dataName", floating}, {"UomName", text}};

void PhaseSignalResultTable::fill(const calc_modul_K9_web_ns::coder::table& record) {
    fillNamedValues(*this, record);
}

const MatlabTable::Scheme PhaseSignalTable::tableScheme{
    {"LastName", text}, {"dataName", floatingVector}, {"LastNameX", text}, {"LastNameY", text}, {"paramData", table}};
