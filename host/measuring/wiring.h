#ifndef RT305_HOST_MEASURING_WIRING_H
#define RT305_HOST_MEASURING_WIRING_H

#include <string>
#include <vector>

#include "measuring/derived_figures.h"
#include "measuring/full_measurement.h"
#include "measuring/fundamentals.h"

namespace rt305 {

/// Likely wiring faults, one sentence each: reversed phase order, a reversed voltage or current, two exchanged
/// currents. Takes phase-to-neutral voltages. A single fault is reported when undoing it makes the set symmetrical to
/// within about 25 degrees; loads can be more unsymmetrical than that, and then nothing is reported. A set with a
/// channel below 1 % of its largest is not judged.
std::vector<std::string> wiringFaults(Phasors voltages, const Phasors& currents);

/// The verdict on the wiring of a measurement, at least one sentence; none without voltages.
std::vector<Remark> judgeWiring(const FullMeasurement& full, const Fundamentals& fundamentals,
                                const DerivedFigures& derived);

}  // namespace rt305

#endif
