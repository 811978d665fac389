#include "results/parameter_tables.h"

#include "results/text_cell.h"

using enum MatlabCell::CellDataType;

const MatlabTable::Scheme PhaseParamTable::tableScheme{{"LastName", text}, {"dataName", floating}, {"units", text}};

void RT305_4_ParamTable::init(const calc_modul_K9_web_ns::coder::d_table& record) {
    fillNamedValues(*this, record);
}
