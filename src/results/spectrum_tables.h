#ifndef RT305_4_RESULTS_SPECTRUM_TABLES_H
#define RT305_4_RESULTS_SPECTRUM_TABLES_H

#include "calc/records.h"
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

/// The largest lines of one phase: frequencies in Hz, and magnitudes; NaN where a magnitude is missing.
class RT305_4_SpectrumMaxTable : public PhaseSpectrumMaxTable {
public:
    RT305_4_SpectrumMaxTable() = default;
    explicit RT305_4_SpectrumMaxTable(const RT305_4_SpectrumMaxTable* other) : PhaseSpectrumMaxTable(other) {}

    MatlabTable* clone() const override { return new RT305_4_SpectrumMaxTable(this); }
    void init(const calc_modul_K9_web_ns::coder::e_table& record);
};

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

/// Spectra of the three voltages.
class RT305_4_USpectrumTable : public PhaseSpectrumTable {
public:
    static constexpr const Scheme& tableScheme = schemeWithAxes;
    Scheme getScheme() const override { return tableScheme; }
    std::string getName() const override { return "spectrumDataU"; }
    void init(const calc_modul_K9_web_ns::coder::f_table& record) { fill(record); }
};

/// Spectra of the three currents.
class RT305_4_ISpectrumTable : public PhaseSpectrumTable {
public:
    static constexpr const Scheme& tableScheme = schemeWithAxes;
    Scheme getScheme() const override { return tableScheme; }
    std::string getName() const override { return "spectrumDataI"; }
    void init(const calc_modul_K9_web_ns::coder::f_table& record) { fill(record); }
};

#endif
