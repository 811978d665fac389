#ifndef RT305_4_RESULTS_RT305_4_U_SIGNAL_TABLE_H
#define RT305_4_RESULTS_RT305_4_U_SIGNAL_TABLE_H

#include "results/phase_signal_table.h"
#include "results/rt305_4_u_signal_result_table.h"

/// Time signals of the three voltages.
class RT305_4_USignalTable : public PhaseSignalTable {
public:
    std::string getName() const override { return "signalDataU"; }
    void init(const calc_modul_K9_web_ns::coder::b_table& record) { fill<RT305_4_USignalResultTable>(record); }
};

#endif
