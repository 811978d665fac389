#ifndef RT305_4_RESULTS_RT305_4_U_SIGNAL_RESULT_TABLE_H
#define RT305_4_RESULTS_RT305_4_U_SIGNAL_RESULT_TABLE_H

#include "results/phase_signal_result_table.h"

/// Statistics of one voltage signal.
class RT305_4_USignalResultTable : public PhaseSignalResultTable {
public:
    RT305_4_USignalResultTable() = default;
    explicit RT305_4_USignalResultTable(const RT305_4_USignalResultTable* other) : PhaseSignalResultTable(other) {}

    MatlabTable* clone() const override { return new RT305_4_USignalResultTable(this); }
    void init(const calc_modul_K9_web_ns::coder::table& record) { fill(record); }
};

#endif
