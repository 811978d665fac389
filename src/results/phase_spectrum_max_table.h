#ifndef RT305_4_RESULTS_PHASE_SPECTRUM_MAX_TABLE_H
#define RT305_4_RESULTS_PHASE_SPECTRUM_MAX_TABLE_H

#include "table/mlab_table.h"

/// The largest lines of one spectrum. Nested in a spectrum table, so copies keep the derived class.
class PhaseSpectrumMaxTable : public MatlabTable {
public:
    static const Scheme tableScheme;

    PhaseSpectrumMaxTable() = default;
    explicit PhaseSpectrumMaxTable(const PhaseSpectrumMaxTable* other) : MatlabTable(other) {}

    Scheme getScheme() const override { return tableScheme; }
    MatlabTable* clone() const override { return new PhaseSpectrumMaxTable(this); }
    std::string getName() const override { return "paramDataT"; }
};

#endif
