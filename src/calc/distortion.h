#ifndef RT305_4_CALC_DISTORTION_H
#define RT305_4_CALC_DISTORTION_H

#include "calc/harmonics.h"

namespace calc_modul_K9_web_ns {

/// The record of measured harmonics: frequencies in Hz and levels in dB, NaN beyond the analysed band.
void assembleDistortion(SetHarmonics harmonics, const ChannelKind& kind, coder::c_table& out);

}  // namespace calc_modul_K9_web_ns

#endif
