#ifndef RT305_4_RESULTS_PHASE_PARAM_TABLE_H
#define RT305_4_RESULTS_PHASE_PARAM_TABLE_H

#include "table/mlab_table.h"

/// Named scalar parameters with their units.
class PhaseParamTable : public MatlabTable {
public:
    static const Scheme tableScheme;
    Scheme getScheme() const override { return tableScheme; }
    std::string getName() const override { return "paramData"; }
};

#endif
