#ifndef RT305_HOST_OUTPUT_REMARKS_H
#define RT305_HOST_OUTPUT_REMARKS_H

#include <string>
#include <vector>

#include "measuring/measurement.h"
#include "measuring/result_texts.h"

namespace rt305 {

/// A sentence about a record that is too short for its harmonics to be measured, else nothing.
std::string remarkOnLength(const Measurement& measurement);

/// What a reader of the parameter table must know: one sentence for every group of values that is missing, with the
/// reason as far as the tool can see it, and one for every figure that the settings make doubtful.
std::vector<std::string> remarksOn(const std::vector<NamedValue>& parameters, const Measurement& measurement);

}  // namespace rt305

#endif
