#ifndef RT305_HOST_MEASURING_FUNDAMENTALS_H
#define RT305_HOST_MEASURING_FUNDAMENTALS_H

#include <array>

#include "measuring/measurement.h"
#include "signal/harmonic_fit.h"
#include "signal/phasors.h"
#include "signal/steadiness.h"

namespace rt305 {

template <class T>
using PerPhase = std::array<T, phaseTotal>;

/// The fundamentals of voltages and currents; 0 for a channel that is not measured.
struct Fundamentals {
    double frequencyHz = 0.0;        // of all channels; 0: there is none
    PerPhase<double> frequencies{};  // Hz, of the voltages, or of the currents alone; 0 for a channel without signal
    Phasors voltages{};              // at `frequencyHz`
    Phasors currents{};
    PerChannel<bool>
        hasSignal{};  // the channel varies, mostly with the fundamental, by 1 % of its kind's largest or more

    /// Whether one of three channels has a signal.
    bool anySignal(std::size_t firstChannel) const {
        return hasSignal[firstChannel] || hasSignal[firstChannel + 1] || hasSignal[firstChannel + 2];
    }
};

/// From the samples at their own rate. `nearHz` is the frequency of the recording around them, 0 when unknown. A record
/// of less than two cycles, or without a fit, gets `nearHz` itself.
Fundamentals fundamentalsOf(const Measurement& recorded, double nearHz);

/// The frequency of a recording and how steady its channels are. The frequency is that of the longest steady part.
struct GridState {
    double frequencyHz = 0.0;  // 0: there is none
    Steadiness steadiness;     // of the channels below
    std::vector<std::size_t> channels;
};

/// Looks for the fundamental near `nominalHz`, unless that is 0, and near the strongest line between 10 Hz and a third
/// of the sample rate, at most 450 Hz.
GridState gridStateOf(const Measurement& recorded, double nominalHz);

}  // namespace rt305

#endif
