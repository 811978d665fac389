#include "calc/distortion.h"

namespace calc_modul_K9_web_ns {

void assembleDistortion(const SetHarmonics& harmonics, const ChannelKind& kind, coder::c_table& out) {
    out.prefill(kind);
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        out.frequencies[phase] = coder::row(harmonics[phase].harmFreq);
        out.levels[phase] = coder::row(harmonics[phase].harmPow);
    }
}

void paramData_thd_mo_305_4(const ChannelSet& set, coder::c_table& out) {
    assembleDistortion(measureHarmonics(set, coder::thdSettings), voltage, out);
}

void paramData_thd_mo_305_4I(const ChannelSet& set, coder::c_table& out) {
    assembleDistortion(measureHarmonics(set, coder::thdSettings), current, out);
}

}  // namespace calc_modul_K9_web_ns
