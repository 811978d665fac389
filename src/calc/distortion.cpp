#include "calc/distortion.h"

#include <cmath>

namespace calc_modul_K9_web_ns {

void assembleDistortion(SetHarmonics harmonics, const ChannelKind& kind, coder::c_table& out) {
    out.prefill(kind);
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        out.frequencies[phase] = std::move(harmonics[phase].harmFreq);
        out.levels[phase] = std::move(harmonics[phase].harmPow);
        for (double& level : out.levels[phase]) {
            level = 10.0 * std::log10(level);
        }
    }
}

}  // namespace calc_modul_K9_web_ns
