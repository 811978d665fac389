#ifndef RT305_HOST_MEASURING_MEASURED_RESULTS_H
#define RT305_HOST_MEASURING_MEASURED_RESULTS_H

#include <string>
#include <vector>

#include "measuring/measurement.h"
#include "measuring/result_texts.h"

namespace rt305 {

/// The library's texts as results of a measurement: the tool's names of channels and units, frequencies in real hertz,
/// and only the channels that are measured, not those that stand in for others. Spectra have amplitudes corrected for
/// the gain of the window, and the lines that the tool finds in them in place of the library's peaks (see findLines).

/// With one phase the totals are those of phase a.
Parameters measuredParameters(const std::string& text, const Measurement& measurement);

/// The statistics, spectra and harmonics of the kinds that are measured.
std::vector<KindResults<SignalStatistics>> measuredSignals(ResultTexts texts, const Measurement& measurement);
std::vector<KindResults<Spectrum>> measuredSpectra(ResultTexts texts, const Measurement& measurement);
std::vector<KindResults<Harmonics>> measuredHarmonics(ResultTexts texts, const Measurement& measurement);

}  // namespace rt305

#endif
