#ifndef RT305_4_RESULTS_PARAMETER_TABLES_H
#define RT305_4_RESULTS_PARAMETER_TABLES_H

#include "calc/records.h"
#include "table/mlab_table.h"

/// Named scalar parameters with their units.
class PhaseParamTable : public MatlabTable {
public:
    static const Scheme tableScheme;
    Scheme getScheme() const override { return tableScheme; }
    std::string getName() const override { return "paramData"; }
};

/// The 35 electrical parameters of one measurement.
class RT305_4_ParamTable : public PhaseParamTable {
public:
    void init(const calc_modul_K9_web_ns::coder::d_table& record);
};

#endif
