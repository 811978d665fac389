#ifndef RT305_HOST_SIGNAL_PHASORS_H
#define RT305_HOST_SIGNAL_PHASORS_H

#include <array>
#include <complex>

#include "recording/channels.h"

namespace rt305 {

/// RMS magnitude and angle of a sine.
using Phasor = std::complex<double>;
using Phasors = std::array<Phasor, phaseTotal>;

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
