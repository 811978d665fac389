#ifndef RT305_4_RESULTS_RT305_4_U_DISTORTION_TABLE_H
#define RT305_4_RESULTS_RT305_4_U_DISTORTION_TABLE_H

#include "results/phase_distortion_table.h"

/// Harmonics of the three voltages.
class RT305_4_UDistortionTable : public PhaseDistortionTable {
public:
    std::string getName() const override { return "thdDataU"; }
    void init(const calc_modul_K9_web_ns::coder::c_table& record) { fill(record); }
};

#endif
