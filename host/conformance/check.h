#ifndef RT305_HOST_CONFORMANCE_CHECK_H
#define RT305_HOST_CONFORMANCE_CHECK_H

#include <functional>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

#include "measuring/library.h"
#include "recording/generator.h"

namespace rt305 {

/// One promise of the interface, held against a library. A library that breaks it makes `hold` throw.
struct Check {
    std::string name;
    std::function<void(const Library&)> hold;
};

/// The promises by theme. The first of the first list must see a library that has not been called yet.
std::vector<Check> interfaceChecks();
std::vector<Check> signalChecks();
std::vector<Check> parameterChecks();
std::vector<Check> spectrumChecks();
std::vector<Check> distortionChecks();

/// Runs all checks and writes a line for each and a summary. True when all pass.
bool checkConformance(const Library& library, std::ostream& out);

/// For checks: each throws, with what was found, when it does not hold. A NaN is what a text calls null.
inline void expect(bool holds, const std::string& what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}
void expectText(const std::string& what, const std::string& found, const std::string& expected);
void expectNumber(const std::string& what, double found, double expected, double tolerance);
void expectCount(const std::string& what, std::size_t found, std::size_t expected);

/// A generated recording as a measurement of simulated samples in four wires.
Measurement generated(const GeneratorSettings& generator, std::uint32_t inputType, std::uint32_t moreFlags = 0);

}  // namespace rt305

#endif
