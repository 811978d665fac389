#include "results/distortion_tables.h"

#include "results/text_cell.h"

using enum MatlabCell::CellDataType;

const MatlabTable::Scheme PhaseDistortionTable::tableScheme{
    {"name", text}, {"dataX", floatingVector}, {"dataY", floatingVector}, {"LastNameX", text}, {"LastNameY", text}};

void PhaseDistortionTable::fill(const calc_modul_K9_web_ns::coder::c_table& record) {
    resize(columnCount(record.header.variables), record.levels.size());
    for (std::size_t phase = 0; phase < record.levels.size(); ++phase) {
        setCell(0, phase, textCell(record.labels[phase]));
        setCell(1, phase, MatlabCell(record.frequencies[phase]));
        setCell(2, phase, MatlabCell(record.levels[phase]));
        setCell(3, phase, textCell(record.horizontalAxis[phase]));
        setCell(4, phase, textCell(record.verticalAxis[phase]));
    }
}
