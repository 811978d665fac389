#ifndef RT305_HOST_MEASURING_MEASURED_RESULTS_H
#define RT305_HOST_MEASURING_MEASURED_RESULTS_H

#include <string>
#include <vector>

#include "measuring/library.h"
#include "measuring/measurement.h"
#include "measuring/result_texts.h"

namespace rt305 {

/// The library's texts as results of a measurement: the tool's names of channels and units, frequencies in real hertz,
/// and only the channels that are measured, not those that stand in for others. Spectra have amplitudes corrected for
/// the gain of the window, and the lines that the tool finds in them in place of the library's peaks (see findLines).

/// With one phase the totals are those of phase a.
Parameters measuredParameters(const std::string& text, const Measurement& measurement);

/// Whether the library's texts of time signals are needed, which hold every sample.
enum class SignalTexts { notWanted, wanted };

/// The statistics of the kinds that are measured. The tool computes them itself where no text is wanted, and the
/// samples are in V or A and none is rebuilt by the library.
std::vector<KindResults<SignalStatistics>> measuredSignals(const Measurement& measurement, const Library& library,
                                                           SignalTexts texts);

/// The spectra, by these settings, and harmonics of the kinds that are measured.
std::vector<KindResults<Spectrum>> measuredSpectra(ResultTexts texts, const Measurement& measurement,
                                                   const MeasurementSettings& settings);
std::vector<KindResults<Harmonics>> measuredHarmonics(ResultTexts texts, const Measurement& measurement);

}  // namespace rt305

#endif
