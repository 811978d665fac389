#ifndef RT305_HOST_MEASURING_FULL_MEASUREMENT_H
#define RT305_HOST_MEASURING_FULL_MEASUREMENT_H

#include "measuring/measurement.h"

namespace rt305 {

/// A recording prepared to be measured in full: phase voltages and currents in V and A at the rate that the library
/// assumes, with coefficients applied and the frequency window chosen.
struct FullMeasurement {
    Measurement measurement;
    Measurement asRecorded;  // the same samples at their own rate, for statistics and waveforms
    bool fromLineVoltages;   // the phase voltages are computed from line voltages: no zero sequence is known
};
FullMeasurement prepare(const Recording& recording, const MeasurementSettings& settings);

/// A part of it, from `startSeconds` after its first sample. Fails when it exceeds the samples.
FullMeasurement windowOf(const FullMeasurement& full, double startSeconds, double durationSeconds);

/// With the line voltages ab, bc and ca in place of the phase voltages.
Measurement withLineVoltages(Measurement measurement);

}  // namespace rt305

#endif
