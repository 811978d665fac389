#ifndef RT305_4_CALC_INPUT_CONDITIONING_H
#define RT305_4_CALC_INPUT_CONDITIONING_H

#include <array>
#include <string_view>

#include "calc/channel_kind.h"
#include "toolkit/reductions.h"

namespace calc_modul_K9_web_ns {

/// One raw channel and what turns its samples into volts or amperes.
struct RawChannel {
    coder::samples samples;
    double gain = 1.0;
    double coefficient = 1.0;
    double inputResistance = 0.0;  // ohm
};

using RawChannelSet = std::array<RawChannel, coder::phases>;

/// What conditioning found in one channel set: exact zeros among the first N samples, and dropouts (windows of 32 exact
/// zeros, overlapping ones counted separately, the window that starts with the very first sample left out).
struct ConditioningDiagnostics {
    std::array<double, coder::phases> zeroCount{};
    std::array<double, coder::phases> dropoutCount{};
};

/// Scale factor of the acquisition hardware for one channel. With A = 1 + (19.53125 gain + 35) / 1000: input resistance
/// 0 gives 0.0049417429956896556 / A; the shunts 24.9 and 127 ohm give (1/R) (3/4096) 6.74712643678161 / A; any other
/// resistance, and any source but "real", gives 1.
double hardwareScale(std::string_view source, double inputResistance, double gain);

/// Calibrated, offset-free signals of one channel set: y = (x - offset) * scale * coefficient, where exact zeros among
/// the first N samples were replaced by the mean of the others and the offset is the mean after that. An empty channel
/// gives an empty row; NaN spreads. N beyond a channel's length counts as its length (but divides as it stands).
void data_305_4(const RawChannelSet& raw, double N, std::string_view source, ChannelSet& conditioned,
                ConditioningDiagnostics* diagnostics = nullptr);

}  // namespace calc_modul_K9_web_ns

#endif
