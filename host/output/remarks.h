#ifndef RT305_HOST_OUTPUT_REMARKS_H
#define RT305_HOST_OUTPUT_REMARKS_H

#include <string>
#include <vector>

#include "measuring/measure_all.h"
#include "measuring/measurement.h"
#include "measuring/result_texts.h"

namespace rt305 {

/// A sentence when `cycles` of the fundamental are too few to measure its harmonics, else nothing.
std::string remarkOnLength(const Measurement& measurement, double cycles);

/// In what the library's own texts differ from the results of the tool: one sentence without a full stop, or nothing.
std::string remarkOnTexts(const Measurement& measurement, bool areSpectra);

/// One sentence for each reason why harmonics are not shown.
std::vector<Remark> remarksOnDoubts(const DistortionDoubts& doubts, const Measurement& measurement);

/// Why THD is missing for other reasons than these: one sentence for each set of channels.
std::vector<Remark> remarksOnDistortion(const Parameters& parameters, const Measurement& measurement,
                                        const DistortionDoubts& doubts);

/// What a reader of the parameter table must know: one sentence for every group of missing values, with the reason as
/// far as the tool can find it, and one for every figure that the settings make doubtful. There are `cycles` of the
/// fundamental. The power was measured by the method of `powerFlag`. Reasons in `doubts`, of channels whose harmonics
/// are not shown, are taken as said.
std::vector<Remark> remarksOn(const Parameters& parameters, const Measurement& measurement, double cycles,
                              std::uint32_t powerFlag, const DistortionDoubts& doubts = {});

}  // namespace rt305

#endif
