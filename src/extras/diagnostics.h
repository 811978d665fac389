#ifndef RT305_4_EXTRAS_DIAGNOSTICS_H
#define RT305_4_EXTRAS_DIAGNOSTICS_H

#include <array>

#include "calc/input_conditioning.h"

namespace calc_modul_K9_web_ns {

/// What data_305_4 repairs in the channels of a set: exact zeros among the first N samples, and dropouts, windows of 32
/// exact zeros. Overlapping windows count separately; the window that starts with the very first sample does not count.
struct ConditioningDiagnostics {
    std::array<double, coder::phases> zeroCount{};
    std::array<double, coder::phases> dropoutCount{};
};

ConditioningDiagnostics diagnose(const RawChannelSet& raw, double N);

}  // namespace calc_modul_K9_web_ns

#endif
