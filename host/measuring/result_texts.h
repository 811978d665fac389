#ifndef RT305_HOST_MEASURING_RESULT_TEXTS_H
#define RT305_HOST_MEASURING_RESULT_TEXTS_H

#include <string>
#include <utility>
#include <vector>

namespace rt305 {

/// One named value of a result text; NaN where the text has null.
struct NamedValue {
    std::string name;
    double value;
    std::string unit;
};

/// The statistics of one channel's signal.
struct SignalStatistics {
    std::string channel;
    std::vector<NamedValue> statistics;
};

/// One channel's amplitude spectrum.
struct Spectrum {
    std::string channel;
    std::string unit;                 // "V", "A" or "dB"
    std::vector<double> frequencies;  // of the lines, Hz
    std::vector<double> lines;
    std::vector<std::pair<double, double>> peaks;  // frequency and value
};

/// One channel's harmonics, the fundamental first; NaN for those that the library could not measure.
struct Harmonics {
    std::string channel;
    std::vector<double> frequencies;  // Hz
    std::vector<double> levels;       // dB; 0 dB is 1 V or 1 A RMS
};

/// Read the library's texts. Fail when a text is not of the documented shape.
std::vector<NamedValue> readParameters(const std::string& text);
std::vector<SignalStatistics> readSignals(const std::string& text);
std::vector<Spectrum> readSpectra(const std::string& text);
std::vector<Harmonics> readHarmonics(const std::string& text);

}  // namespace rt305

#endif
