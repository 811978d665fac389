#ifndef RT305_4_CALC_HARMONICS_H
#define RT305_4_CALC_HARMONICS_H

#include <array>

#include "calc/channel_sums.h"
#include "toolkit/harmonic_distortion.h"

namespace calc_modul_K9_web_ns {

/// Harmonics of the three channels of a set.
using SetHarmonics = std::array<coder::HarmonicResult, coder::phases>;

/// Harmonics of each channel of a set. Channels of the first one's length share its preparation.
SetHarmonics measureHarmonics(const ConditionedSet& set, const coder::HarmonicSettings& settings);

/// Harmonics of both sets, sampled at 10 kHz: 40 harmonics.
struct HarmonicsOfBoth {
    SetHarmonics voltages;
    SetHarmonics currents;
};
HarmonicsOfBoth measureHarmonics(const ConditionedSet& voltages, const ConditionedSet& currents,
                                 const SumsOfBoth& sums);

}  // namespace calc_modul_K9_web_ns

#endif
