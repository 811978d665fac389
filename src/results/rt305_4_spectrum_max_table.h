#ifndef RT305_4_RESULTS_RT305_4_SPECTRUM_MAX_TABLE_H
#define RT305_4_RESULTS_RT305_4_SPECTRUM_MAX_TABLE_H

#include "calc/records.h"
#include "results/phase_spectrum_max_table.h"

/// The largest lines of one phase: frequencies in Hz, and magnitudes; NaN where a magnitude is missing.
class RT305_4_SpectrumMaxTable : public PhaseSpectrumMaxTable {
public:
    RT305_4_SpectrumMaxTable() = default;
    explicit RT305_4_SpectrumMaxTable(const RT305_4_SpectrumMaxTable* other) : PhaseSpectrumMaxTable(other) {}

    MatlabTable* clone() const override { return new RT305_4_SpectrumMaxTable(this); }
    void init(const calc_modul_K9_web_ns::coder::e_table& record);
};

#endif
