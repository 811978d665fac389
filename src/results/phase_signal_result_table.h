#ifndef RT305_4_RESULTS_PHASE_SIGNAL_RESULT_TABLE_H
#define RT305_4_RESULTS_PHASE_SIGNAL_RESULT_TABLE_H

#include "calc/records.h"
#include "table/mlab_table.h"

/// Statistics of one signal. Nested in a signal table, so copies keep the derived class.
class PhaseSignalResultTable : public MatlabTable {
public:
    static const Scheme tableScheme;

    PhaseSignalResultTable() = default;
    explicit PhaseSignalResultTable(const PhaseSignalResultTable* other) : MatlabTable(other) {}

    Scheme getScheme() const override { return tableScheme; }
    MatlabTable* clone() const override { return new PhaseSignalResultTable(this); }
    std::string getName() const override { return "paramData"; }

protected:
    void fill(const calc_modul_K9_web_ns::coder::table& record);
};

#endif
