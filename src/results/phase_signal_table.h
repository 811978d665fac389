#ifndef RT305_4_RESULTS_PHASE_SIGNAL_TABLE_H
#define RT305_4_RESULTS_PHASE_SIGNAL_TABLE_H

#include <memory>

#include "calc/records.h"
#include "results/text_cell.h"
#include "table/mlab_table.h"

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

#endif
