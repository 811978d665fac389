#ifndef RT305_4_CALC_CHANNEL_SUMS_H
#define RT305_4_CALC_CHANNEL_SUMS_H

#include <array>

#include "calc/input_conditioning.h"

namespace calc_modul_K9_web_ns {

using PerPhase = std::array<double, coder::phases>;

/// Blocked sums over the samples of one set that harmonics and parameters need, from one pass over the samples.
/// Channels of other lengths are combined with singleton expansion.
struct ChannelSums {
    PerPhase samples;
    PerPhase squares;
    PerPhase squaresOfDifferences{};  // of a - b, b - c, c - a; of voltages only
    double squaresOfSum = 0.0;        // of a + b + c; of voltages only
};

struct SumsOfBoth {
    SumsOfBoth(const ConditionedSet& u, const ConditionedSet& i);

    ChannelSums voltages;
    ChannelSums currents;
};

/// The sums of the samples alone.
PerPhase sumsOfSamples(const ConditionedSet& set);

}  // namespace calc_modul_K9_web_ns

#endif
