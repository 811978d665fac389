#ifndef RT305_HOST_MEASURING_RESULT_TEXTS_H
#define RT305_HOST_MEASURING_RESULT_TEXTS_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace rt305 {

/// The texts of one call that the tool shows; empty where the call made none.
struct ResultTexts {
    std::string parameters{};
    std::string voltages{};  // the operation's result for the voltages
    std::string currents{};
};

/// One named value of a result text; NaN where the text has null.
struct NamedValue {
    std::string name;
    double value;
    std::string unit;
};
using Parameters = std::vector<NamedValue>;

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

/// One channel's harmonics, the fundamental first; NaN where the library could not measure one.
struct Harmonics {
    std::string channel;
    std::vector<double> frequencies;  // Hz
    std::vector<double> levels;       // dB; 0 dB is 1 V or 1 A RMS
};

/// Read the library's texts. Fail when a text is not of the documented shape.
Parameters readParameters(const std::string& text);
std::vector<SignalStatistics> readSignals(const std::string& text);
std::vector<Spectrum> readSpectra(const std::string& text);
std::vector<Harmonics> readHarmonics(const std::string& text);

/// What an operation gave for the voltages or for the currents.
template <class Channel>
struct KindResults {
    bool areCurrents;
    std::string text;  // as the library wrote it
    std::vector<Channel> channels;
};

/// Makes the harmonics from an order on missing, `first` being that less one.
void removeFrom(Harmonics& harmonics, std::size_t first);

/// The parameter of that name; NaN without a unit when there is none.
NamedValue parameterNamed(const Parameters& parameters, std::string_view name);

/// The levels of the harmonics in percent of the fundamental.
std::vector<double> percentsOf(const Harmonics& harmonics);

/// The orders of the largest harmonics, at most `most`, in falling size. Leaves out the fundamental and those below
/// 0.01 % of it.
std::vector<std::size_t> largestHarmonics(const Harmonics& harmonics, std::size_t most);

}  // namespace rt305

#endif
