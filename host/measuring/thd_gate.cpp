#include "measuring/thd_gate.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "signal/fundamental.h"

namespace rt305 {

namespace {

using Kind = ThdObstacle::Kind;
using Frequencies = std::array<double, phaseTotal>;

/// Channels that can have no fundamental.
std::vector<ThdObstacle> unusableChannels(const ThdSet& set, const Measurement& measurement) {
    std::vector<ThdObstacle> obstacles;
    for (std::size_t channel = set.firstChannel; channel < set.firstChannel + phaseTotal; ++channel) {
        const auto& samples = measurement.samples[channel];
        if (std::any_of(samples.begin(), samples.end(), [](double x) { return std::isnan(x); })) {
            obstacles.push_back({Kind::missingSamples, channel});
        } else if (std::adjacent_find(samples.begin(), samples.end(), std::not_equal_to<>()) == samples.end()) {
            obstacles.push_back({Kind::dead, channel});
        } else if (!estimateFundamental(samples, measurement.rateHz)) {
            obstacles.push_back({Kind::noFundamental, channel});
        }
    }
    return obstacles;
}

/// In Hz at the rate that the library assumes; 0 without a fundamental.
Frequencies frequenciesOf(const ThdSet& set, const Measurement& measurement) {
    Frequencies frequencies{};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        frequencies[phase] =
            estimateFundamental(measurement.samples[set.firstChannel + phase], measurement.assumedRateHz())
                .value_or(0.0);
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

std::vector<ThdObstacle> outsideWindow(const ThdSet& set, const std::vector<std::size_t>& missing,
                                       const FrequencyWindow& window, const Frequencies& frequencies) {
    if (const double mean = meanOf(frequencies); !window.contains(mean)) {
        return {{Kind::meanOutsideWindow, set.firstChannel, mean}};
    }
    std::vector<ThdObstacle> obstacles;
    for (const std::size_t phase : missing) {
        const std::size_t judge = set.judges[phase];
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
        if (std::isnan(parameterNamed(parameters, set.parameters[phase]).value)) {
            missing.phases.push_back(phase);
        }
    }
    if (missing.phases.empty()) {
        return missing;
    }
    const Frequencies frequencies = frequenciesOf(set, measurement);
    missing.obstacles = unusableChannels(set, measurement);
    if (missing.obstacles.empty()) {
        missing.obstacles = outsideWindow(set, missing.phases, measurement.window(), frequencies);
    }
    missing.areOutsideWindow = std::all_of(frequencies.begin(), frequencies.end(), [](double f) { return f > 0.0; }) &&
                               !accepts(measurement.window(), frequencies);
    missing.controlWindowAccepts = missing.areOutsideWindow && accepts(controlWindow, frequencies);
    return missing;
}

double cyclesOf(const Measurement& measurement) {
    const auto& samples = measurement.samples[measurement.hasVoltages() ? 0 : phaseTotal];
    return measurement.durationSeconds() * estimateFundamental(samples, measurement.rateHz).value_or(0.0);
}

}  // namespace rt305
