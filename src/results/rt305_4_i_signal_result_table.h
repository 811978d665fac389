#ifndef RT305_4_RESULTS_RT305_4_I_SIGNAL_RESULT_TABLE_H
#define RT305_4_RESULTS_RT305_4_I_SIGNAL_RESULT_TABLE_H

#include "results/phase_signal_result_table.h"

/// Statistics of one current signal.
class RT305_4_ISignalResultTable : public PhaseSignalResultTable {
public:
    RT305_4_ISignalResultTable() = default;
    explicit RT305_4_ISignalResultTable(const RT305_4_ISignalResultTable* other) : PhaseSignalResultTable(other) {}

    MatlabTable* clone() const override { return new RT305_4_ISignalResultTable(this); }
    void init(const calc_modul_K9_web_ns::coder::table& record) { fill(record); }
};

#endif
