#include "results/rt305_4_param_table.h"

#include "results/text_cell.h"

void RT305_4_ParamTable::init(const calc_modul_K9_web_ns::coder::d_table& record) {
    fillNamedValues(*this, record);
}
