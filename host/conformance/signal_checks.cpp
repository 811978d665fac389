/// Checks of the conditioned samples, their statistics and the rebuilt currents.

#include <cmath>
#include <nlohmann/json.hpp>
#include <numeric>

#include "conformance/check.h"

namespace rt305 {

namespace {

std::vector<double> samplesOf(const std::string& text, std::size_t phase) {
    return nlohmann::json::parse(text).front().at(phase).at("dataName");
}

double rmsOf(const std::string& text, std::size_t phase) {
    return readSignals(text).at(phase).statistics.at(1).value;
}

void statistics(const Library& library) {
    const ResultTexts texts = library.measure(generated({}, allChannels), RT305_4_OPERATION_SIGNALS);
    for (const auto& [text, rms, unit] : {std::tuple{texts.voltages, 230.0, "V"}, {texts.currents, 5.0, "A"}}) {
        const std::vector<NamedValue> expected{{"mean", 0.0, unit},
                                               {"rms", rms, unit},
                                               {"peak2rms", std::sqrt(2.0), unit},
                                               {"peak2peak", 2.0 * std::sqrt(2.0) * rms, unit}};
        for (const SignalStatistics& signal : readSignals(text)) {
            expectCount("statistics", signal.statistics.size(), expected.size());
            for (std::size_t i = 0; i < expected.size(); ++i) {
                const NamedValue& found = signal.statistics[i];
                expectText("name", found.name, expected[i].name);
                expectText("unit", found.unit, unit);
                // the peak may be between two samples: off by at most 1 - cos(pi/200 / 3)
                expectNumber(found.name, found.value, expected[i].value, 1e-4 * expected[i].value + 1e-9);
            }
        }
    }
}

void offsetAndCoefficient(const Library& library) {
    Measurement measurement = generated({.offsets = {40.0, 0.0, 0.0, 0.0, 0.0, 0.0}}, allChannels);
    measurement.settings.coefficients[0] = -3.0;
    const auto found = samplesOf(library.measure(measurement, RT305_4_OPERATION_SIGNALS).voltages, 0);
    expectCount("samples", found.size(), measurement.length);
    for (std::size_t k = 0; k < found.size(); ++k) {
        expectNumber("sample " + std::to_string(k), found[k], -3.0 * (measurement.samples[0][k] - 40.0), 1e-8);
    }
}

/// Samples of exactly 0 are missing. They are replaced by the mean of the others, which is then removed as the offset.
void missingSamples(const Library& library) {
    constexpr std::size_t missing = 70;
    const Measurement measurement = generated(
        {.offsets = {40.0, 0.0, 0.0, 0.0, 0.0, 0.0}, .dropouts = {{.channel = 0, .start = 1000, .count = missing}}},
        allChannels);
    const auto& x = measurement.samples[0];
    const double mean = std::accumulate(x.begin(), x.end(), 0.0) / static_cast<double>(x.size() - missing);
    const auto found = samplesOf(library.measure(measurement, RT305_4_OPERATION_SIGNALS).voltages, 0);
    expectCount("samples", found.size(), measurement.length);
    for (std::size_t k = 0; k < found.size(); ++k) {
        expectNumber("sample " + std::to_string(k), found[k], x[k] == 0.0 ? 0.0 : x[k] - mean, 1e-8);
    }
}

struct HardwareScale {
    const char* name;
    double resistance;  // ohm
    double gain;
    double factor;
};

/// The stages after the input resistor divide by this.
constexpr double afterResistor(double gain) {
    return 1.0 + (19.53125 * gain + 35.0) / 1000.0;
}

constexpr double converterScale = 0.000732421875 * 6.74712643678161;  // of 1 ohm, and of no resistor

constexpr HardwareScale hardwareScales[] = {
    {"hardware scale without a resistor", 0.0, 0.0, converterScale / afterResistor(0.0)},
    {"hardware scale with gain", 0.0, 8.0, converterScale / afterResistor(8.0)},
    {"hardware scale at 24.9 ohm", 24.9, 0.0, converterScale / 24.9 / afterResistor(0.0)},
    {"hardware scale at 127 ohm", 127.0, 0.0, converterScale / 127.0 / afterResistor(0.0)},
    {"no hardware scale at another resistance", 100.0, 8.0, 1.0},
};

/// Samples of a simulated source are not scaled.
void hardwareScale(const Library& library, const HardwareScale& scale) {
    for (const std::uint32_t value : {0U, 1U, 2U, 4U}) {
        const std::uint32_t source = flagValue(RT305_4_SIMULATED_SOURCE_MASK, value);
        Measurement measurement = generated({}, allChannels);
        measurement.settings.flags = RT305_4_FOUR_WIRE | source;
        measurement.settings.resistances.fill(scale.resistance);
        measurement.settings.gains.fill(scale.gain);
        const ResultTexts texts = library.measure(measurement, RT305_4_OPERATION_SIGNALS);
        const double factor = source == 0 ? scale.factor : 1.0;
        for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
            expectNumber("voltage", rmsOf(texts.voltages, phase), 230.0 * factor, 1e-9 * 230.0 * factor);
            expectNumber("current", rmsOf(texts.currents, phase), 5.0 * factor, 1e-9 * 5.0 * factor);
        }
    }
}

struct RebuiltCurrent {
    const char* name;
    std::size_t phase;
    std::uint32_t flag;

    std::size_t next() const { return (phase + 1) % phaseTotal; }
    std::size_t afterNext() const { return (phase + 2) % phaseTotal; }
};

constexpr RebuiltCurrent rebuiltCurrents[] = {{"Ia from the other two", 0, RT305_4_REBUILT_PHASE_A},
                                              {"Ib from the other two", 1, RT305_4_REBUILT_PHASE_B},
                                              {"Ic from the other two", 2, RT305_4_REBUILT_PHASE_C}};

const GeneratorSettings unequalCurrents{.factors = {1.0, 1.0, 1.0, 1.0, 0.8, 0.6}};

/// With two measured currents the samples of the third are minus their sum; with three they are unchanged.
void rebuiltSamples(const Library& library, const RebuiltCurrent& c) {
    for (const std::uint32_t two : {RT305_4_TWO_CURRENTS, UINT32_C(0)}) {
        const Measurement measurement = generated(unequalCurrents, currentsOnly, two | c.flag);
        const std::string text = library.measure(measurement, RT305_4_OPERATION_SIGNALS).currents;
        const auto found = samplesOf(text, c.phase);
        const auto x = samplesOf(text, c.next());
        const auto y = samplesOf(text, c.afterNext());
        for (const auto& samples : {found, x, y}) {
            expectCount("samples", samples.size(), measurement.length);
        }
        for (std::size_t k = 0; k < found.size(); ++k) {
            const double expected = two != 0 ? -(x[k] + y[k]) : measurement.samples[phaseTotal + c.phase][k];
            expectNumber("sample " + std::to_string(k), found[k], expected, 1e-9);
        }
    }
}

/// The RMS of the third current is the mean of the other two. With the flag it is the RMS of the rebuilt samples:
/// sqrt(x^2 + y^2 - x y) for currents 120 degrees apart.
void rebuiltRms(const Library& library, const RebuiltCurrent& c) {
    const double x = 5.0 * unequalCurrents.factors[phaseTotal + c.next()];
    const double y = 5.0 * unequalCurrents.factors[phaseTotal + c.afterNext()];
    const std::string name = std::string("Id") + "abc"[c.phase];
    for (const std::uint32_t keep : {RT305_4_KEEP_REBUILT_RMS, UINT32_C(0)}) {
        const auto parameters =
            parametersOf(library, generated(unequalCurrents, allChannels, RT305_4_TWO_CURRENTS | c.flag | keep));
        const double expected = keep != 0 ? std::sqrt(x * x + y * y - x * y) : 0.5 * (x + y);
        expectNumber(name, valueOf(parameters, name), expected, 1e-9);
    }
}

}  // namespace

std::vector<Check> signalChecks() {
    std::vector<Check> checks{{"statistics of sines", statistics},
                              {"offset removed, coefficient applied", offsetAndCoefficient},
                              {"missing samples are replaced by the mean", missingSamples}};
    addRows(checks, "", hardwareScales, hardwareScale);
    addRows(checks, "samples of ", rebuiltCurrents, rebuiltSamples);
    addRows(checks, "RMS of ", rebuiltCurrents, rebuiltRms);
    return checks;
}

}  // namespace rt305
