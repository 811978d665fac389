#ifndef RT305_HOST_MEASURING_FUNDAMENTALS_H
#define RT305_HOST_MEASURING_FUNDAMENTALS_H

#include <cmath>
#include <optional>

#include "measuring/measurement.h"
#include "signal/harmonic_fit.h"
#include "signal/phasors.h"
#include "signal/steadiness.h"

namespace rt305 {

/// The fundamentals of voltages and currents; 0 for a channel that is not measured, NaN for one with missing samples.
struct Fundamentals {
    double frequencyHz = 0.0;        // of all channels; 0: there is none
    PerPhase<double> frequencies{};  // Hz, of the voltages, or of the currents alone; 0 where it is not measured
    Phasors voltages{};              // at `frequencyHz`
    Phasors currents{};
    PerChannel<bool>
        hasSignal{};  // the channel varies, mostly with the fundamental, by 1 % of its kind's largest or more

    const Phasor& of(std::size_t channel) const {
        return isCurrent(channel) ? currents[channel - phaseTotal] : voltages[channel];
    }

    bool hasGaps(std::size_t channel) const { return std::isnan(of(channel).real()); }

    /// Whether one of three channels has a signal.
    bool anySignal(std::size_t firstChannel) const {
        return hasSignal[firstChannel] || hasSignal[firstChannel + 1] || hasSignal[firstChannel + 2];
    }
};

/// From the samples at their own rate. The frequency is measured near `nearHz`, or `nearHz` itself if that is not
/// wanted or no fit settles, as in less than two cycles. 0: there is none.
Fundamentals fundamentalsOf(const Measurement& recorded, double nearHz, bool measureFrequency);

/// The samples of some channels.
std::vector<std::span<const double>> spansOf(const Measurement& recorded, const std::vector<std::size_t>& channels);

/// The frequency of a recording and how steady its channels are. The frequency is that of the longest steady part in
/// which the voltages, or the currents alone, have a fifth of their largest fundamental or more.
struct GridState {
    double frequencyHz = 0.0;             // 0: there is none
    std::optional<SteadyPart> source{};   // where it is measured; else it is `nominalHz` or that of a line
    Steadiness steadiness{};              // of the channels below
    std::vector<std::size_t> channels{};  // those with a fundamental
};

/// Looks for the fundamental near `nominalHz`, unless that is 0, and near commonFundamental().
GridState gridStateOf(const Measurement& recorded, double nominalHz);

/// The frequency in a steady part of two cycles or more; 0 for none.
double frequencyIn(const SteadyPart& part, const GridState& state, const Measurement& recorded);

}  // namespace rt305

#endif
