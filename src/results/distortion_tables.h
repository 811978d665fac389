#ifndef RT305_4_RESULTS_DISTORTION_TABLES_H
#define RT305_4_RESULTS_DISTORTION_TABLES_H

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

/// Harmonics of the three voltages.
class RT305_4_UDistortionTable : public PhaseDistortionTable {
public:
    std::string getName() const override { return "thdDataU"; }
    void init(const calc_modul_K9_web_ns::coder::c_table& record) { fill(record); }
};

/// Harmonics of the three currents.
class RT305_4_IDistortionTable : public PhaseDistortionTable {
public:
    std::string getName() const override { return "thdDataI"; }
    void init(const calc_modul_K9_web_ns::coder::c_table& record) { fill(record); }
};

#endif
