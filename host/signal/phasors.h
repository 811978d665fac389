#ifndef RT305_HOST_SIGNAL_PHASORS_H
#define RT305_HOST_SIGNAL_PHASORS_H

#include <array>
#include <complex>
#include <span>

#include "recording/channels.h"

namespace rt305 {

using Phasor = std::complex<double>;
using Phasors = std::array<Phasor, phaseTotal>;

/// The fundamental of a signal: its RMS, and the phase of its sine at the first sample. Correlates under a Hann window,
/// so the record need not hold whole cycles; over five cycles or more the error is below 0.1 %. NaN samples give NaN.
Phasor phasorOf(std::span<const double> samples, double frequencyHz, double rateHz);

/// Symmetrical components of three phasors (C. L. Fortescue, AIEE Trans. 37 (1918), p. 1027): the one with phase order
/// a-b-c, the one with phase order a-c-b, and the zero-sequence component.
struct SequenceComponents {
    Phasor forward;
    Phasor backward;
    Phasor zero;
};
SequenceComponents sequenceComponentsOf(const Phasors& phasors);

/// Negative- and zero-sequence component in percent of the positive-sequence component. The larger of `forward` and
/// `backward` counts as positive sequence, so exchanging two phases changes nothing.
struct Unbalance {
    double negativePercent;
    double zeroPercent;
};
Unbalance unbalanceOf(const Phasors& phasors);

/// Degrees by which b lags a, from -180 to 180.
double lagDegrees(const Phasor& a, const Phasor& b);

}  // namespace rt305

#endif
