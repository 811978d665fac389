#include "results/phase_param_table.h"

using enum MatlabCell::CellDataType;

const MatlabTable::Scheme PhaseParamTable::tableScheme{{"LastName", text}, {"dataName", floating}, {"units", text}};
