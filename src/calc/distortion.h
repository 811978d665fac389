#ifndef RT305_4_CALC_DISTORTION_H
#define RT305_4_CALC_DISTORTION_H

#include "calc/channel_kind.h"
#include "calc/electrical_parameters.h"

namespace calc_modul_K9_web_ns {

/// Frequencies in Hz and levels in dB of the fundamental and four harmonics of each channel, sampled at 500 Hz; NaN
/// where the band holds none.
void paramData_thd_mo_305_4(const ChannelSet& set, coder::c_table& out);
void paramData_thd_mo_305_4I(const ChannelSet& set, coder::c_table& out);

/// A record of harmonics that are measured already.
void assembleDistortion(const SetHarmonics& harmonics, const ChannelKind& kind, coder::c_table& out);

}  // namespace calc_modul_K9_web_ns

#endif
