#include "results/phase_signal_table.h"

using enum MatlabCell::CellDataType;

const MatlabTable::Scheme PhaseSignalTable::tableScheme{
    {"LastName", text}, {"dataName", floatingVector}, {"LastNameX", text}, {"LastNameY", text}, {"paramData", table}};
