#ifndef RT305_HOST_REPORTS_H
#define RT305_HOST_REPORTS_H

#include <string>
#include <vector>

#include "measurement.h"
#include "results.h"

namespace rt305 {

/// What was measured, and how its parameters were, in a few words.
std::string describe(const Measurement& measurement);
std::string describeMethods(const Measurement& measurement);

/// All parameters by quantity, as an instrument shows them.
std::string reportParameters(const std::vector<NamedValue>& parameters);

/// The statistics, the largest spectral lines and the harmonics of one channel set, channels side by side.
std::string reportSignals(const std::vector<SignalStatistics>& signals);
std::string reportSpectra(const std::vector<Spectrum>& spectra);
std::string reportHarmonics(const std::vector<Harmonics>& harmonics);

}  // namespace rt305

#endif
