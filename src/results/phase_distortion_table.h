#ifndef RT305_4_RESULTS_PHASE_DISTORTION_TABLE_H
#define RT305_4_RESULTS_PHASE_DISTORTION_TABLE_H

#include "calc/records.h"
#include "table/mlab_table.h"

/// Harmonics, one row per phase: frequencies and levels.
class PhaseDistortionTable : public MatlabTable {
public:
    static const Scheme tableScheme;
    Scheme getScheme() const override { return tableScheme; }
    std::string getName() const override { return "thdData"; }

protected:
    void fill(const calc_modul_K9_web_ns::coder::c_table& record);
};

#endif
