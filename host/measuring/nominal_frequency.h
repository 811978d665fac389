#ifndef RT305_HOST_MEASURING_NOMINAL_FREQUENCY_H
#define RT305_HOST_MEASURING_NOMINAL_FREQUENCY_H

#include <algorithm>
#include <span>
#include <vector>

#include "recording/channels.h"

namespace rt305 {

/// Samples of one length; empty for a channel that is not there.
using ChannelSpans = PerChannel<std::span<const double>>;
inline ChannelSpans spansOf(const PerChannel<std::vector<double>>& samples) {
    ChannelSpans spans;
    std::copy(samples.begin(), samples.end(), spans.begin());
    return spans;
}

/// The fundamental of one channel in Hz, by findFundamental() from 10 Hz to a third of the rate, at most 1100 Hz; 0 for
/// none, as in records of less than two cycles.
double fundamentalOf(std::span<const double> samples, double rateHz);
PerChannel<double> fundamentalsOf(const ChannelSpans& samples, double rateHz);

/// The middle one of the fundamentals of the voltages, or of the currents where no voltage has one, in Hz. Where no
/// channel has one, of the strongest lines of two cycles or more; 0 for none. Empty channels are left out.
double commonFundamental(const ChannelSpans& samples, double rateHz);

/// The nominal frequency of a grid with this fundamental in Hz: the nearest of 16.7 (50/3), 25, 50, 60 and 400 Hz if it
/// is within 10 %, otherwise the fundamental itself; 50 Hz for no fundamental (0).
double nominalFrequencyFor(double fundamentalHz);

}  // namespace rt305

#endif
