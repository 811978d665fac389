#include "measuring/thd_gate.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "measuring/nominal_frequency.h"

namespace rt305 {

namespace {

using Kind = ThdObstacle::Kind;
using Frequencies = std::array<double, phaseTotal>;

/// Channels that can have no fundamental.
std::vector<ThdObstacle> unusableChannels(const ThdSet& set, const Measurement& measurement) {
    std::vector<ThdObstacle> obstacles;
    for (std::size_t channel = set.firstChannel; channel < set.firstChannel + phaseTotal; ++channel) {
        const auto& samples = measurement.samples[channel];
        if (samples.empty()) {
            continue;
        }
        if (std::any_of(samples.begin(), samples.end(), [](double x) { return std::isnan(x); })) {
            obstacles.push_back({Kind::missingSamples, channel});
        } else if (std::adjacent_find(samples.begin(), samples.end(), std::not_equal_to<>()) == samples.end()) {
            obstacles.push_back({Kind::dead, channel});
        } else if (fundamentalOf(samples, measurement.rateHz) == 0.0) {
            obstacles.push_back({Kind::noFundamental, channel});
        }
    }
    return obstacles;
}

/// In Hz, 0 where there is no fundamental.
Frequencies frequenciesOf(const ThdSet& set, const Measurement& measurement) {
    Frequencies frequencies{};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        frequencies[phase] = fundamentalOf(measurement.handedOver(set.firstChannel + phase), measurement.rateHz);
    }
    return frequencies;
}

double meanOf(const Frequencies& frequencies) {
    return (frequencies[0] + frequencies[1] + frequencies[2]) / 3.0;
}

bool accepts(const FrequencyWindow& window, const Frequencies& frequencies) {
    return window.contains(meanOf(frequencies)) &&
           std::all_of(frequencies.begin(), frequencies.end(), [&](double f) { return window.contains(f); });
}

/// Without the margin in which the library may see a fundamental on the other side of the limit.
FrequencyWindow surelyInside(const FrequencyWindow& window) {
    constexpr double margin = 0.0005;
    return {window.lower * (1.0 + margin), window.upper * (1.0 - margin)};
}

std::vector<ThdObstacle> outsideWindow(const ThdSet& set, const std::vector<std::size_t>& missing,
                                       const Measurement& measurement, const Frequencies& frequencies) {
    const FrequencyWindow window = surelyInside(measurement.window());
    const double mean = meanOf(frequencies);
    if (measurement.isThreePhase() && !window.contains(mean)) {
        return {{Kind::meanOutsideWindow, set.firstChannel, mean}};
    }
    std::vector<ThdObstacle> obstacles;
    for (const std::size_t phase : missing) {
        const std::size_t judge = measurement.isThreePhase() ? set.judges[phase] : phase;
        if (!window.contains(frequencies[judge])) {
            obstacles.push_back({Kind::outsideWindow, set.firstChannel + judge, frequencies[judge], judge != phase});
        }
    }
    return obstacles;
}

}  // namespace

MissingThd missingThd(const ThdSet& set, const Parameters& parameters, const Measurement& measurement) {
    MissingThd missing;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (measurement.measures(set.firstChannel + phase) &&
            std::isnan(parameterNamed(parameters, set.parameters[phase]).value)) {
            missing.phases.push_back(phase);
        }
    }
    if (missing.phases.empty()) {
        return missing;
    }
    const Frequencies frequencies = frequenciesOf(set, measurement);
    missing.obstacles = unusableChannels(set, measurement);
    if (!missing.obstacles.empty()) {
        return missing;
    }
    missing.obstacles = outsideWindow(set, missing.phases, measurement, frequencies);
    const FrequencyWindow wide = controlWindow.scaled(measurement.frequencyScale());
    missing.controlWindowAccepts = !missing.obstacles.empty() && !measurement.has(RT305_4_FREQUENCY_CONTROL) &&
                                   accepts(surelyInside(wide), frequencies);
    const double nominal = nominalFrequencyFor(meanOf(frequencies));
    const auto window = fixedWindow.scaled(nominal / libraryNominalHz);
    if (!missing.obstacles.empty() && nominal != measurement.nominalHz && accepts(window, frequencies)) {
        missing.betterNominalHz = nominal;
    }
    return missing;
}

double cyclesOf(const Measurement& measurement) {
    constexpr double tolerance = 0.2;
    const double nominal = measurement.nominalHz;
    const double fundamental = commonFundamental(spansOf(measurement.samples), measurement.rateHz);
    const bool isPlausible = std::fabs(fundamental - nominal) <= tolerance * nominal;
    return measurement.durationSeconds() * (isPlausible ? fundamental : nominal);
}

double thdOfPureSine(double cycles) {
    // measured by scripts/accuracy for all phases
    static constexpr std::pair<double, double> measured[] = {
        {10.0, 0.0005}, {9.5, 0.003}, {9.0, 0.011}, {8.5, 0.04}, {8.0, 0.12}, {7.5, 0.32}, {7.0, 0.78},
        {6.5, 1.8},     {6.0, 3.7},   {5.5, 7.1},   {5.0, 13.0}, {4.0, 32.0}, {3.0, 61.0}};
    constexpr double rounding = 0.05;  // cycles
    if (!isTooShortForThd(cycles)) {
        return 0.0;
    }
    const auto* const found = std::find_if(std::begin(measured), std::end(measured),
                                           [=](const auto& row) { return row.first <= cycles + rounding; });
    return found == std::end(measured) ? 100.0 : found->second;
}

}  // namespace rt305
