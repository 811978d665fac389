#ifndef RT305_4_RESULTS_RT305_4_U_SPECTRUM_TABLE_H
#define RT305_4_RESULTS_RT305_4_U_SPECTRUM_TABLE_H

#include "results/phase_spectrum_table.h"

/// Spectra of the three voltages.
class RT305_4_USpectrumTable : public PhaseSpectrumTable {
public:
    static constexpr const Scheme& tableScheme = schemeWithAxes;
    Scheme getScheme() const override { return tableScheme; }
    std::string getName() const override { return "spectrumDataU"; }
    void init(const calc_modul_K9_web_ns::coder::f_table& record) { fill(record); }
};

#endif
