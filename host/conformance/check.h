#ifndef RT305_HOST_CONFORMANCE_CHECK_H
#define RT305_HOST_CONFORMANCE_CHECK_H

#include <functional>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

#include "measuring/library.h"
#include "measuring/result_texts.h"
#include "recording/generator.h"

namespace rt305 {

/// One promise of the interface. `run` throws when the library breaks it.
struct Check {
    std::string name;
    std::function<void(const Library&)> run;
};

/// Adds a check for each row of a table. A row has a name; `run` takes the library and the row.
template <class Table, class Run>
void addRows(std::vector<Check>& checks, const std::string& prefix, const Table& rows, Run run) {
    for (const auto& row : rows) {
        checks.push_back({prefix + row.name, [row, run](const Library& library) { run(library, row); }});
    }
}

/// The checks by theme. The first interface check must be the first call of the library.
std::vector<Check> interfaceChecks();
std::vector<Check> signalChecks();
std::vector<Check> parameterChecks();
std::vector<Check> spectrumChecks();
std::vector<Check> distortionChecks();

/// Runs all checks and writes a line for each and a summary. True when all pass.
bool checkConformance(const Library& library, std::ostream& out);

/// Each throws with a message of what was found if the condition is false. NaN stands for null in a text and is equal
/// to itself.
inline void expect(bool condition, const std::string& message) {
    if (!condition) {
        throw std::runtime_error(message);
    }
}
void expectText(const std::string& what, const std::string& found, const std::string& expected);
void expectNumber(const std::string& what, double found, double expected, double tolerance);
void expectCount(const std::string& what, std::size_t found, std::size_t expected);

inline constexpr std::uint32_t allChannels = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
inline constexpr std::uint32_t voltagesOnly = RT305_4_INPUT_VOLTAGES;
inline constexpr std::uint32_t currentsOnly = RT305_4_INPUT_CURRENTS;

/// Value `value` of the field that a mask such as RT305_4_POWER_MASK selects in a word of flags.
constexpr std::uint32_t flagValue(std::uint32_t mask, std::uint32_t value) {
    return value * (mask & (~mask + 1U));
}

/// A generated recording as a measurement of simulated samples in a four-wire system.
Measurement generated(const GeneratorSettings& generator, std::uint32_t inputType, std::uint32_t moreFlags = 0);

/// The parameter table that the library makes of a measurement.
std::vector<NamedValue> parametersOf(const Library& library, const Measurement& measurement);

/// Finds a parameter by its name. Throws when there is none.
double valueOf(const std::vector<NamedValue>& parameters, const std::string& name);

}  // namespace rt305

#endif
