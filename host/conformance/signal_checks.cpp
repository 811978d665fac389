/// What the interface promises of the samples that it hands back, and of the currents that it rebuilds.

#include <cmath>
#include <nlohmann/json.hpp>
#include <numeric>

#include "conformance/check.h"
#include "measuring/result_texts.h"

namespace rt305 {

namespace {

constexpr std::uint32_t all = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
constexpr std::uint32_t rebuiltFlag[] = {RT305_4_REBUILT_PHASE_A, RT305_4_REBUILT_PHASE_B, RT305_4_REBUILT_PHASE_C};

std::vector<double> samplesOf(const std::string& text, std::size_t phase) {
    return nlohmann::json::parse(text).front().at(phase).at("dataName");
}

double rmsOf(const std::string& text, std::size_t phase) {
    return readSignals(text).at(phase).statistics.at(1).value;
}

void statistics(const Library& library) {
    const ResultTexts texts = library.measure(generated({}, all), RT305_4_OPERATION_SIGNALS);
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
                // no sample need meet the peak: within 1 - cos(pi/200 / 3)
                expectNumber(found.name, found.value, expected[i].value, 1e-4 * expected[i].value + 1e-9);
            }
        }
    }
}

void offsetAndCoefficient(const Library& library) {
    Measurement measurement = generated({.offsets = {40.0, 0.0, 0.0, 0.0, 0.0, 0.0}}, all);
    measurement.settings.coefficients[0] = -3.0;
    const auto found = samplesOf(library.measure(measurement, RT305_4_OPERATION_SIGNALS).voltages, 0);
    expectCount("samples", found.size(), measurement.length);
    for (std::size_t k = 0; k < found.size(); ++k) {
        expectNumber("sample " + std::to_string(k), found[k], -3.0 * (measurement.samples[0][k] - 40.0), 1e-8);
    }
}

/// Samples that are exactly 0 are missing: they take the mean of the others, which is then the offset.
void missingSamples(const Library& library) {
    const Measurement measurement = generated(
        {.offsets = {40.0, 0.0, 0.0, 0.0, 0.0, 0.0}, .dropouts = {{.channel = 0, .start = 1000, .count = 70}}}, all);
    const auto& x = measurement.samples[0];
    const double mean = std::accumulate(x.begin(), x.end(), 0.0) / static_cast<double>(x.size() - 70);
    const auto found = samplesOf(library.measure(measurement, RT305_4_OPERATION_SIGNALS).voltages, 0);
    for (std::size_t k = 0; k < found.size(); ++k) {
        expectNumber("sample " + std::to_string(k), found[k], x[k] == 0.0 ? 0.0 : x[k] - mean, 1e-8);
    }
}

struct HardwareScale {
    const char* name;
    double resistance;
    double gain;
    double factor;
};

/// The stages behind the input resistor divide by 1 + (19.53125 gain + 35) / 1000.
constexpr HardwareScale hardwareScales[] = {
    {"hardware scale without a resistor", 0.0, 0.0, 0.0049417429956896556 / 1.035},
    {"hardware scale with gain", 0.0, 8.0, 0.0049417429956896556 / (1.0 + (19.53125 * 8.0 + 35.0) / 1000.0)},
    {"hardware scale at 24.9 ohm", 24.9, 0.0, 0.000732421875 * 6.74712643678161 / 24.9 / 1.035},
    {"hardware scale at 127 ohm", 127.0, 0.0, 0.000732421875 * 6.74712643678161 / 127.0 / 1.035},
    {"no hardware scale at another resistance", 100.0, 8.0, 1.0},
};

void hardwareScale(const Library& library, const HardwareScale& scale) {
    for (const std::uint32_t source : {0x0U, 0x10000000U, 0x20000000U, 0x40000000U}) {
        Measurement measurement = generated({}, all);
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

const GeneratorSettings unequalCurrents{.factors = {1.0, 1.0, 1.0, 1.0, 0.8, 0.6}};

/// With two measured currents the third one's samples are minus their sum; with three they are left alone.
void rebuiltSamples(const Library& library, std::size_t rebuilt) {
    for (const std::uint32_t two : {RT305_4_TWO_CURRENTS, UINT32_C(0)}) {
        const Measurement measurement = generated(unequalCurrents, RT305_4_INPUT_CURRENTS, two | rebuiltFlag[rebuilt]);
        const std::string text = library.measure(measurement, RT305_4_OPERATION_SIGNALS).currents;
        const auto a = samplesOf(text, rebuilt);
        const auto b = samplesOf(text, (rebuilt + 1) % phaseTotal);
        const auto c = samplesOf(text, (rebuilt + 2) % phaseTotal);
        for (std::size_t k = 0; k < a.size(); ++k) {
            const double expected = two != 0 ? -(b[k] + c[k]) : measurement.samples[phaseTotal + rebuilt][k];
            expectNumber("sample " + std::to_string(k), a[k], expected, 1e-9);
        }
    }
}

/// Its RMS is the mean of the other two, unless the flag keeps it: then sqrt(x^2 + y^2 - x y), 120 degrees apart.
void rebuiltRms(const Library& library, std::size_t rebuilt) {
    const double x = 5.0 * unequalCurrents.factors[phaseTotal + (rebuilt + 1) % phaseTotal];
    const double y = 5.0 * unequalCurrents.factors[phaseTotal + (rebuilt + 2) % phaseTotal];
    for (const std::uint32_t keep : {RT305_4_KEEP_REBUILT_RMS, UINT32_C(0)}) {
        const Measurement measurement =
            generated(unequalCurrents, all, RT305_4_TWO_CURRENTS | rebuiltFlag[rebuilt] | keep);
        const auto parameters = readParameters(library.measure(measurement, RT305_4_OPERATION_PARAMETERS).parameters);
        const NamedValue& found = parameters.at(19 + rebuilt);
        expectNumber(found.name, found.value, keep != 0 ? std::sqrt(x * x + y * y - x * y) : 0.5 * (x + y), 1e-9);
    }
}

}  // namespace

std::vector<Check> signalChecks() {
    std::vector<Check> checks{{"statistics of sines", statistics},
                              {"offset removed, coefficient applied", offsetAndCoefficient},
                              {"missing samples take the mean", missingSamples}};
    for (const HardwareScale& scale : hardwareScales) {
        checks.push_back({scale.name, [&scale](const Library& library) { hardwareScale(library, scale); }});
    }
    for (std::size_t rebuilt = 0; rebuilt < phaseTotal; ++rebuilt) {
        const std::string name = std::string("I") + "abc"[rebuilt] + " from the other two: ";
        checks.push_back({name + "samples", [rebuilt](const Library& library) { rebuiltSamples(library, rebuilt); }});
        checks.push_back({name + "RMS", [rebuilt](const Library& library) { rebuiltRms(library, rebuilt); }});
    }
    return checks;
}

}  // namespace rt305
