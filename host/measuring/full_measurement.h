#ifndef RT305_HOST_MEASURING_FULL_MEASUREMENT_H
#define RT305_HOST_MEASURING_FULL_MEASUREMENT_H

#include "measuring/library.h"
#include "measuring/measurement.h"
#include "measuring/result_texts.h"
#include "output/document.h"
#include "signal/phasors.h"

namespace rt305 {

/// A recording made ready for everything at once: phase voltages and currents in V and A at the rate that the library
/// assumes, coefficients and frequency window settled.
struct FullMeasurement {
    Measurement measurement;
    Measurement asRecorded;  // the same samples at their own rate, for RMS values of voltages or currents alone
    bool fromLineVoltages;   // the phase voltages are formed of line voltages: there is no zero sequence in them
};
FullMeasurement prepare(const Recording& recording, const MeasurementSettings& settings);

/// A stretch of it, in seconds from its first sample on. Fails when it does not lie inside.
FullMeasurement windowOf(const FullMeasurement& overview, double startSeconds, double durationSeconds);

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
ResultDocument measureAll(const Recording& recording, const FullMeasurement& overview, const Library& library);

}  // namespace rt305

#endif
