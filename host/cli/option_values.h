#ifndef RT305_HOST_CLI_OPTION_VALUES_H
#define RT305_HOST_CLI_OPTION_VALUES_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recording/generator.h"

namespace rt305 {

/// Read the values of options. Fail on text of another form.

/// "3:8:-70" -> order, percent, degrees (0 when not given).
Harmonic parseHarmonic(const std::string& text);

/// "Ia:1000:64" -> channel, first sample, number of samples.
Dropout parseDropout(const std::string& text);

/// "Ua=325,2=10" -> names or numbers of columns with factors.
std::vector<std::pair<std::string, double>> parseGains(const std::string& text);

/// The numbers that an option takes.
struct NumberRange {
    const char* option;
    double lowest;
    double highest;
    bool isWhole;
};
double parseNumberIn(const NumberRange& range, const std::string& text);

/// "4800", "10k", "10kHz" or "1.2 MHz" in Hz.
double parseFrequency(const NumberRange& range, const std::string& text);

/// "Ua=Voltage A,2=Ub" -> names or numbers of columns with their new names.
std::vector<std::pair<std::string, std::string>> parseNames(const std::string& text);

/// "60", "60Hz", or 0 for "auto".
double parseNominal(const std::string& text);

/// "230", "230V", "20kV" in V, or 0 for "auto".
double parseDeclared(const std::string& text);

/// "10cycles" or "1 cycle" -> a number above 0; nothing when the text has another unit.
std::optional<double> parseCycles(std::string_view text);

/// "0.2", "0.2s" or "200ms" in seconds.
double parseTime(const std::string& option, const std::string& text);

/// The same above 0.
double parseLength(const std::string& option, const std::string& text);

}  // namespace rt305

#endif
