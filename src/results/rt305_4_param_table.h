#ifndef RT305_4_RESULTS_RT305_4_PARAM_TABLE_H
#define RT305_4_RESULTS_RT305_4_PARAM_TABLE_H

#include "calc/records.h"
#include "results/phase_param_table.h"

/// The 35 electrical parameters of one measurement.
class RT305_4_ParamTable : public PhaseParamTable {
public:
    void init(const calc_modul_K9_web_ns::coder::d_table& record);
};

#endif
