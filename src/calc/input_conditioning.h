#ifndef RT305_4_CALC_INPUT_CONDITIONING_H
#define RT305_4_CALC_INPUT_CONDITIONING_H

#include <array>
#include <string_view>

#include "calc/channel_kind.h"

namespace calc_modul_K9_web_ns {

/// One raw channel with the calibration that converts its samples to volts or amperes.
struct RawChannel {
    coder::samples samples;
    double gain = 1.0;
    double coefficient = 1.0;
    double inputResistance = 0.0;  // ohm
};

using RawChannelSet = std::array<RawChannel, coder::phases>;

/// Scale factor of the acquisition hardware for one channel. With A = 1 + (19.53125 gain + 35) / 1000: input resistance
/// 0 gives 0.0049417429956896556 / A; the shunts 24.9 and 127 ohm give (1/R) (3/4096) 6.74712643678161 / A; any other
/// resistance, and any source but "real", gives 1.
double hardwareScale(std::string_view source, double inputResistance, double gain);

/// Calibrated, offset-free signals of one channel set: y = (x - offset) * scale * coefficient. Exact zeros among the
/// first N samples are first replaced by sum(x) / (N - zeros); the offset is the mean after that. If N exceeds the
/// channel's length, all samples are examined, but the divisor stays N - zeros. An empty channel gives an empty row;
/// NaN spreads.
void data_305_4(const RawChannelSet& raw, double N, std::string_view source, ChannelSet& conditioned);

}  // namespace calc_modul_K9_web_ns

#endif
