#include "results/phase_spectrum_max_table.h"

using enum MatlabCell::CellDataType;

const MatlabTable::Scheme PhaseSpectrumMaxTable::tableScheme{{"fi", floating}, {"mag", floating}};
