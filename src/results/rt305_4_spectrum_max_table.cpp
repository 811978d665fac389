#include "results/rt305_4_spectrum_max_table.h"

#include "results/text_cell.h"
#include "toolkit/non_finite.h"

void RT305_4_SpectrumMaxTable::init(const calc_modul_K9_web_ns::coder::e_table& record) {
    const int lines = record.frequencies.numel();
    resize(columnCount(record.variables), static_cast<std::uint64_t>(lines));
    for (int i = 0; i < lines; ++i) {
        const auto row = static_cast<std::uint64_t>(i);
        setCell(0, row, MatlabCell(record.frequencies[i]));
        setCell(1, row, MatlabCell(i < record.magnitudes.numel() ? record.magnitudes[i] : rtNaN));
    }
}
