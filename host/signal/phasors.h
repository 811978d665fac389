#ifndef RT305_HOST_SIGNAL_PHASORS_H
#define RT305_HOST_SIGNAL_PHASORS_H

#include <array>
#include <complex>
#include <string>
#include <vector>

#include "recording/channels.h"

namespace rt305 {

/// What the tool itself makes of the fundamentals, beside what the library measures: unbalance and the wiring.

using Phasor = std::complex<double>;
using Phasors = std::array<Phasor, phaseTotal>;

/// The fundamental of a signal: RMS and angle of the sine at the first sample, by correlation under a Hann window, so
/// that neither whole cycles nor the mirror line matter; with five cycles errors are below 0.1 %. Samples that are NaN
/// spread.
Phasor phasorOf(const std::vector<double>& samples, double frequencyHz, double rateHz);

/// Negative- and zero-sequence component in percent of the positive-sequence one (C. L. Fortescue, AIEE Trans. 37
/// (1918), p. 1027). "Positive" is the direction in which the phasors turn, so that an exchange of two phases changes
/// nothing.
struct Unbalance {
    double negativePercent;
    double zeroPercent;
};
Unbalance unbalanceOf(const Phasors& phasors);

/// Degrees by which b lags a, from -180 to 180.
double lagDegrees(const Phasor& a, const Phasor& b);

/// What is odd in the way voltages and currents are wired, a sentence each: the phase order, a voltage or a current
/// whose direction is turned, two currents that are exchanged. Phase voltages against neutral are wanted. One fault of
/// a set is found where the corrected set is symmetrical to within about 25 degrees; loads may differ more than that,
/// and then nothing is claimed. A set with a channel below 1 % of its largest is not judged.
std::vector<std::string> wiringFaults(Phasors voltages, const Phasors& currents);

}  // namespace rt305

#endif
