#ifndef RT305_4_RESULTS_SIGNAL_TABLES_H
#define RT305_4_RESULTS_SIGNAL_TABLES_H

#include <memory>

#include "calc/records.h"
#include "results/text_cell.h"
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

/// Statistics of one voltage signal.
class RT305_4_USignalResultTable : public PhaseSignalResultTable {
public:
    RT305_4_USignalResultTable() = default;
    explicit RT305_4_USignalResultTable(const RT305_4_USignalResultTable* other) : PhaseSignalResultTable(other) {}

    MatlabTable* clone() const override { return new RT305_4_USignalResultTable(this); }
    void init(const calc_modul_K9_web_ns::coder::table& record) { fill(record); }
};

/// Statistics of one current signal.
class RT305_4_ISignalResultTable : public PhaseSignalResultTable {
public:
    RT305_4_ISignalResultTable() = default;
    explicit RT305_4_ISignalResultTable(const RT305_4_ISignalResultTable* other) : PhaseSignalResultTable(other) {}

    MatlabTable* clone() const override { return new RT305_4_ISignalResultTable(this); }
    void init(const calc_modul_K9_web_ns::coder::table& record) { fill(record); }
};

/// Time signals, one row per phase, each with its nested table of statistics.
class PhaseSignalTable : public MatlabTable {
public:
    static const Scheme tableScheme;
    Scheme getScheme() const override { return tableScheme; }
    std::string getName() const override { return "signalData"; }

protected:
    template <class ResultTable>
    void fill(const calc_modul_K9_web_ns::coder::b_table& record) {
        const auto& variables = record.variables;
        resize(columnCount(record.header.variables), variables.signals.size());
        for (std::size_t phase = 0; phase < variables.signals.size(); ++phase) {
            auto statistics = std::make_unique<ResultTable>();
            statistics->init(variables.statistics[phase]);
            setCell(0, phase, textCell(variables.labels[phase]));
            setCell(1, phase, rowCell(variables.signals[phase]));
            setCell(2, phase, textCell(variables.horizontalAxis[phase]));
            setCell(3, phase, textCell(variables.verticalAxis[phase]));
            setCell(4, phase, MatlabCell(std::move(statistics)));
        }
    }
};

/// Time signals of the three voltages.
class RT305_4_USignalTable : public PhaseSignalTable {
public:
    std::string getName() const override { return "signalDataU"; }
    void init(const calc_modul_K9_web_ns::coder::b_table& record) { fill<RT305_4_USignalResultTable>(record); }
};

/// Time signals of the three currents.
class RT305_4_ISignalTable : public PhaseSignalTable {
public:
    std::string getName() const override { return "signalDataI"; }
    void init(const calc_modul_K9_web_ns::coder::b_table& record) { fill<RT305_4_ISignalResultTable>(record); }
};

#endif
