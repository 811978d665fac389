#ifndef RT305_HOST_MEASURING_MEASURE_ALL_H
#define RT305_HOST_MEASURING_MEASURE_ALL_H

#include <string>
#include <vector>

#include "measuring/derived_figures.h"
#include "measuring/full_measurement.h"
#include "measuring/fundamentals.h"
#include "measuring/library.h"
#include "measuring/measured_results.h"
#include "measuring/result_texts.h"

namespace rt305 {

/// The spectra of a full measurement: Hann window, dB below the largest line.
inline constexpr std::uint32_t fullSpectrumFlags = RT305_4_SPECTRUM_WINDOW_HANN | RT305_4_SPECTRUM_LEVEL_DB;

/// What of the results is shown; nothing else is computed.
enum class Shown {
    everything,
    figures,  // without remarks and harmonics by the tool
    texts     // of the library
};

/// Why the harmonics, THD and library's frequency of each channel are not to be trusted; empty where they are.
using DistortionDoubts = PerChannel<std::string>;

/// Removes the harmonics of channels that have hardly a fundamental or whose fundamental the library did not find, or
/// of all when there is a doubt on all.
DistortionDoubts removeDoubtful(std::vector<KindResults<Harmonics>>& kinds, const Fundamentals& fundamentals,
                                const std::string& onAll = {});

/// The parameters without THD and frequency of those channels. Frequencies are those of the voltages, or of currents
/// alone.
Parameters withoutDoubtful(Parameters parameters, const DistortionDoubts& doubts, bool hasVoltages);

/// Everything that the library and the tool find in one measurement.
struct FullResults {
    std::string libraryVersion;
    std::vector<std::string> parameterTexts{};             // as the library wrote them
    std::vector<Parameters> parameters{};                  // by power method, as in powerMethods, as far as it applies
    std::vector<KindResults<SignalStatistics>> signals{};  // at the recorded rate
    std::vector<KindResults<Harmonics>> harmonics{};
    std::vector<KindResults<Spectrum>> spectra{};
    double spectraStart = 0.0;  // of the samples in them, s after the segment's first one
    double spectraSeconds = 0.0;
    Fundamentals fundamentals{};
    DerivedFigures derived{};
    DistortionDoubts distortionDoubts{};
    PerChannel<std::vector<double>> plainHarmonics{};  // by the tool, in % of the fundamental; empty where in doubt
    std::vector<Remark> wiring{};                      // the verdict, in sentences
};

/// The figures of `rt305 measure`: the parameters, with voltages and currents by every power method and each with the
/// voltages that it requires; for one kind of channels also their statistics; and always the harmonics, the derived
/// figures and the wiring.
FullResults measureAll(const FullMeasurement& full, const Library& library, Shown shown = Shown::everything);

/// Adds what only a report shows: spectra of the first second, and statistics if there are none.
void addSpectraAndStatistics(FullResults& results, const FullMeasurement& full, const Library& library);

}  // namespace rt305

#endif
