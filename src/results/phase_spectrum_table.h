#ifndef RT305_4_RESULTS_PHASE_SPECTRUM_TABLE_H
#define RT305_4_RESULTS_PHASE_SPECTRUM_TABLE_H

#include "calc/records.h"
#include "table/mlab_table.h"

/// Spectra, one row per phase, each with its nested table of largest lines.
class PhaseSpectrumTable : public MatlabTable {
public:
    static const Scheme tableScheme;
    Scheme getScheme() const override { return tableScheme; }
    std::string getName() const override { return "spectrumData"; }

protected:
    /// The columns of the module's own spectrum tables, which name their axes.
    static const Scheme schemeWithAxes;
    void fill(const calc_modul_K9_web_ns::coder::f_table& record);
};

#endif
