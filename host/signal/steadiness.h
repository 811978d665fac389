#ifndef RT305_HOST_SIGNAL_STEADINESS_H
#define RT305_HOST_SIGNAL_STEADINESS_H

#include <cstddef>
#include <span>
#include <vector>

#include "signal/phasors.h"

namespace rt305 {

/// A run of cycles in which no channel's fundamental changes much.
struct SteadyPart {
    std::size_t first;  // samples
    std::size_t count;
    std::vector<double> levels{};  // RMS of the fundamental of each channel
};

/// The largest change of a channel's fundamental, over two cycles.
struct LargestChange {
    std::size_t channel = 0;  // of those that were given
    std::size_t sample = 0;   // where it is
    double percent = 0.0;     // of the magnitude, relative to the channel's largest
    double degrees = 0.0;     // of the angle; 0 when the channel has no signal before or behind
};

/// How steady a recording is.
struct Steadiness {
    std::vector<SteadyPart> parts;  // in order of time, each of two and a half cycles or more, with a signal
    LargestChange change;
    bool isSteady = true;  // one part reaches from the first cycle to the last
};

/// The share of a channel's magnitude by which its fundamental may differ from the mean of a steady part.
inline constexpr double steadyShare = 0.05;

/// Follows the fundamental of each channel in two-cycle Hann windows, half a cycle apart. `frequencyHz` is that of the
/// signals; an error of it turns the phasors by 3.6 degrees a cycle for each percent. Channels are of one length and
/// without NaN; those that are much smaller than the largest of their kind should not be given. Parts in which all
/// channels are below 1 % of their largest are left out. Less than four cycles are too few to judge: one part, steady.
Steadiness steadinessOf(const std::vector<std::span<const double>>& channels, double rateHz, double frequencyHz);

/// The parts of 1.25 cycles or more in which each channel stays within a tenth of their mean, as a short fault does:
/// by one-cycle windows, an eighth of a cycle apart. None in less than four cycles.
std::vector<SteadyPart> briefPartsOf(const std::vector<std::span<const double>>& channels, double rateHz,
                                     double frequencyHz);

/// The fundamental in each cycle, with RMS magnitudes and angles against one clock.
std::vector<Phasor> fundamentalTrace(std::span<const double> samples, double rateHz, double frequencyHz);

}  // namespace rt305

#endif
