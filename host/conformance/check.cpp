#include "conformance/check.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "base/text.h"

namespace rt305 {

void expectText(const std::string& what, const std::string& found, const std::string& expected) {
    expect(found == expected, what + ": " + inQuotes(found) + " instead of " + inQuotes(expected));
}

void expectNumber(const std::string& what, double found, double expected, double tolerance) {
    const auto shown = [](double x) { return std::isnan(x) ? "null" : formatNumber(x, 12); };
    const bool isClose = std::isnan(expected) || std::isnan(found) ? std::isnan(expected) && std::isnan(found)
                                                                   : std::fabs(found - expected) <= tolerance;
    expect(isClose, what + ": " + shown(found) + " instead of " + shown(expected));
}

void expectCount(const std::string& what, std::size_t found, std::size_t expected) {
    expect(found == expected, what + ": " + std::to_string(found) + " instead of " + std::to_string(expected));
}

Measurement generated(const GeneratorSettings& generator, std::uint32_t inputType, std::uint32_t moreFlags) {
    MeasurementSettings settings;
    settings.inputType = inputType;
    settings.fillIn = false;
    settings.flags |= moreFlags;
    Recording recording = generate(generator);
    return makeMeasurement(recording, settings, RateMatters::no);
}

std::vector<NamedValue> parametersOf(const Library& library, const Measurement& measurement) {
    return readParameters(library.measure(measurement, RT305_4_OPERATION_PARAMETERS).parameters);
}

double valueOf(const std::vector<NamedValue>& parameters, const std::string& name) {
    const auto parameter = std::find_if(parameters.begin(), parameters.end(),
                                        [&name](const NamedValue& other) { return other.name == name; });
    expect(parameter != parameters.end(), "there is no " + name);
    return parameter->value;
}

bool checkConformance(const Library& library, std::ostream& out) {
    std::size_t total = 0;
    std::size_t passed = 0;
    for (const auto& list :
         {interfaceChecks(), signalChecks(), parameterChecks(), spectrumChecks(), distortionChecks()}) {
        for (const Check& check : list) {
            ++total;
            try {
                check.run(library);
                ++passed;
                out << "pass  " << check.name << '\n';
            } catch (const std::exception& mismatch) {
                out << "FAIL  " << check.name << ": " << mismatch.what() << '\n';
            }
        }
    }
    out << passed << " of " << total << " checks passed\n";
    return passed == total;
}

}  // namespace rt305
