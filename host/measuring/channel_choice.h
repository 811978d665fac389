#ifndef RT305_HOST_MEASURING_CHANNEL_CHOICE_H
#define RT305_HOST_MEASURING_CHANNEL_CHOICE_H

#include "measuring/measurement.h"

namespace rt305 {

/// Decides which channels with samples are measured and empties the others.
///
/// Columns named as line voltages make three wires, unless the user gave the wiring; two of them give the third. Two
/// voltages that are 60 degrees apart are line voltages, whatever their names.
/// Voltages and currents are measured where all three phases are there. The current that --two-currents names is
/// rebuilt from the other two; so is a single missing one beside three voltages, with a warning. A recording of one
/// voltage, one current or one of each is measured as phase a. Sets the input type, and which channel stands in for
/// each one that is not measured. Fails when the channels are not enough, or not those of the input type that the
/// settings ask for.
void chooseChannels(Measurement& measurement, const Recording& recording);

}  // namespace rt305

#endif
