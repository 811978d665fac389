#ifndef RT305_4_RESULTS_RT305_4_I_DISTORTION_TABLE_H
#define RT305_4_RESULTS_RT305_4_I_DISTORTION_TABLE_H

#include "results/phase_distortion_table.h"

/// Harmonics of the three currents.
class RT305_4_IDistortionTable : public PhaseDistortionTable {
public:
    std::string getName() const override { return "thdDataI"; }
    void init(const calc_modul_K9_web_ns::coder::c_table& record) { fill(record); }
};

#endif
