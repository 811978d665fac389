#ifndef RT305_4_RESULTS_RT305_4_I_SIGNAL_TABLE_H
#define RT305_4_RESULTS_RT305_4_I_SIGNAL_TABLE_H

#include "results/phase_signal_table.h"
#include "results/rt305_4_i_signal_result_table.h"

/// Time signals of the three currents.
class RT305_4_ISignalTable : public PhaseSignalTable {
public:
    std::string getName() const override { return "signalDataI"; }
    void init(const calc_modul_K9_web_ns::coder::b_table& record) { fill<RT305_4_ISignalResultTable>(record); }
};

#endif
