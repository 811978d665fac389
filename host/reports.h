#ifndef RT305_HOST_REPORTS_H
#define RT305_HOST_REPORTS_H

#include <string>
#include <vector>

#include "measurement.h"
#include "recording.h"
#include "results.h"

namespace rt305 {

/// What a recording holds, and which column is taken for which channel.
std::string reportRecording(const Recording& recording, const PerChannel<std::string>& chosenColumns);

/// What was measured and how, in a few words.
std::string describe(const Measurement& measurement);

/// All parameters by quantity, as an instrument shows them.
std::string reportParameters(const std::vector<NamedValue>& parameters);

/// The statistics of one channel set.
std::string reportSignals(const std::vector<SignalStatistics>& signals);

}  // namespace rt305

#endif
