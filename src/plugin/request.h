#ifndef RT305_4_PLUGIN_REQUEST_H
#define RT305_4_PLUGIN_REQUEST_H

#include <array>
#include <cstdint>

#include "calc/calc_modul_K9_web.h"
#include "rt305_4/rt305_4.h"

// Checks the request of a host and converts it to a measurement that is safe to compute with.

/// The accepted input types, ended by 0.
extern const std::array<std::int32_t, 4> supportedSub1Types;

/// The message of the first check that fails, or null. The checks run in a fixed order: outputs, input
/// type, sample rate and number, operation, number of descriptors, samples of the required channels.
const char* firstError(const DataProcessRequest& request, const calc_modul_K9_web_ns::Measurement& measurement);

/// True when all eight output pointers are given.
bool hasAllOutputs(const DataProcessRequest& request);

/// The measurement that a request describes. The samples are not copied. Descriptors with an unknown kind or phase are
/// skipped; a later descriptor for the same channel replaces an earlier one. A descriptor without samples, or with more
/// than a row can hold, makes its channel empty.
calc_modul_K9_web_ns::Measurement measurementOf(const DataProcessRequest& request);

/// Fills empty channels from the other quantity in the same phase: the current of phase c and every voltage, and for
/// types 0 and 4 the other two currents.
void fillMissingChannels(calc_modul_K9_web_ns::Measurement& measurement, std::uint32_t inputType);

#endif
