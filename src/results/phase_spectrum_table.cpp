#include "results/phase_spectrum_table.h"

#include <memory>

#include "results/rt305_4_spectrum_max_table.h"
#include "results/text_cell.h"

using enum MatlabCell::CellDataType;

const MatlabTable::Scheme PhaseSpectrumTable::tableScheme{
    {"name", text}, {"dataTnv", floatingVector}, {"dataTnvf", floatingVector}, {"paramData", table}};

const MatlabTable::Scheme PhaseSpectrumTable::schemeWithAxes{
    {"name", text},      {"dataTnv", floatingVector}, {"dataTnvf", floatingVector},
    {"LastNameX", text}, {"LastNameY", text},         {"paramData", table}};

void PhaseSpectrumTable::fill(const calc_modul_K9_web_ns::coder::f_table& record) {
    resize(columnCount(record.header.variables), record.spectra.size());
    for (std::size_t phase = 0; phase < record.spectra.size(); ++phase) {
        auto maxima = std::make_unique<RT305_4_SpectrumMaxTable>();
        maxima->init(record.maxima[phase]);
        setCell(0, phase, textCell(record.labels[phase]));
        setCell(1, phase, rowCell(record.spectra[phase]));
        setCell(2, phase, rowCell(record.frequencies[phase]));
        setCell(3, phase, textCell(record.horizontalAxis[phase]));
        setCell(4, phase, textCell(record.verticalAxis[phase]));
        setCell(5, phase, MatlabCell(std::move(maxima)));
    }
}
