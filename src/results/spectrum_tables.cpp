#include "results/spectrum_tables.h"

#include <memory>

#include "results/text_cell.h"
#include "toolkit/non_finite.h"

using enum MatlabCell::CellDataType;

const MatlabTable::Scheme PhaseSpectrumMaxTable::tableScheme{{"fi", floating}, {"mag", floating}};

void RT305_4_SpectrumMaxTable::init(const calc_modul_K9_web_ns::coder::e_table& record) {
    const int lines = record.frequencies.numel();
    resize(columnCount(record.variables), static_cast<std::uint64_t>(lines));
    for (int i = 0; i < lines; ++i) {
        const auto row = static_cast<std::uint64_t>(i);
        setCell(0, row, MatlabCell(record.frequencies[i]));
        setCell(1, row, MatlabCell(i < record.magnitudes.numel() ? record.magnitudes[i] : rtNaN));
    }
}

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
        setCell(2, phase, rowCell(record.frequencies));
        setCell(3, phase, textCell(record.horizontalAxis[phase]));
        setCell(4, phase, textCell(record.verticalAxis[phase]));
        setCell(5, phase, MatlabCell(std::move(maxima)));
    }
}
