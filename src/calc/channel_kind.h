#ifndef RT305_4_CALC_CHANNEL_KIND_H
#define RT305_4_CALC_CHANNEL_KIND_H

#include <array>
#include <string_view>

#include "calc/records.h"
#include "rt305_4/rt305_4.h"

namespace calc_modul_K9_web_ns {

/// All differences between voltages and currents.
struct ChannelKind {
    std::array<std::string_view, coder::phases> labels;
    std::string_view axisLabel;
    std::string_view spectrumAxisLabel;
    std::string_view unit;
    int longPadding;  // zero-padding factor of spectra that are cut at a frequency limit
    int inputType;    // the type of requests with this kind alone
};

inline constexpr ChannelKind voltage{{"Va", "Vb", "Vc"}, "Voltage, V", "U, V", "V", 4, RT305_4_INPUT_VOLTAGES};
inline constexpr ChannelKind current{{"Ia", "Ib", "Ic"}, "Current, A", "I, A", "A", 16, RT305_4_INPUT_CURRENTS};

/// One channel set: the conditioned signals of phases a, b, c in volts or amperes.
using ChannelSet = std::array<coder::row, coder::phases>;

}  // namespace calc_modul_K9_web_ns

#endif
