#ifndef RT305_HOST_OVERVIEW_H
#define RT305_HOST_OVERVIEW_H

#include "document.h"
#include "library.h"
#include "measurement.h"
#include "phasors.h"
#include "results.h"

namespace rt305 {

/// A recording made ready for everything at once: phase voltages and currents in V and A at the rate that the library
/// assumes, coefficients and frequency window settled.
struct Overview {
    Measurement measurement;
    Measurement asRecorded;  // the same samples at their own rate, for RMS values of voltages or currents alone
    bool fromLineVoltages;   // the phase voltages are formed of line voltages: there is no zero sequence in them
};
Overview makeOverview(const Recording& recording, const MeasurementSettings& settings);

/// A stretch of it, in seconds from its first sample on. Fails when it does not lie inside.
Overview windowOf(const Overview& overview, double startSeconds, double durationSeconds);

using Frequencies = std::array<double, phaseTotal>;

/// The fundamentals of both sets, those of a set that is not there 0.
struct Fundamentals {
    Frequencies frequencies{};  // Hz, of the first set that is there
    Phasors voltages{};
    Phasors currents{};
};

/// As the library's harmonics of all measured channels have them, else roughly from the samples.
Fundamentals fundamentalsOf(const Measurement& measurement, const std::vector<Harmonics>& harmonics);

/// Everything that the library measures, power by all methods side by side, each fed with the voltages that it takes;
/// and what the tool computes itself, told as its own: power factor, unbalance, angles, wiring.
ResultDocument measureAll(const Recording& recording, const Overview& overview, const Library& library);

}  // namespace rt305

#endif
