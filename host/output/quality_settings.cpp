#include "output/quality_settings.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "signal/usual_level.h"

namespace rt305 {

namespace {

constexpr double leastSamplesPerCycle = 12.0;
constexpr double leastCycles = 3.0;
constexpr std::int64_t nanosecondsOfTwoHours = 7'200'000'000'000;

/// The time of the first sample that is measured, since a full two hours; 0 without a clock.
double clockSecondsOf(const Recording& recording, const MeasurementSettings& settings) {
    const auto clock = clockOf(recording, settings.segment);
    return clock ? static_cast<double>(*clock % nanosecondsOfTwoHours) * 1e-9 + settings.startSeconds : 0.0;
}

std::vector<std::span<const double>> gaplessVoltages(const Measurement& recorded) {
    std::vector<std::span<const double>> voltages;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const auto& samples = recorded.samples[phase];
        if (!samples.empty() && std::none_of(samples.begin(), samples.end(), [](double x) { return std::isnan(x); })) {
            voltages.emplace_back(samples);
        }
    }
    return voltages;
}

/// The declared voltage stays 0 where voltages are dead or have gaps.
QualitySettings settingsFor(const Recording& recording, const Measurement& recorded, bool fromLineVoltages,
                            const QualityChoice& choice) {
    QualitySettings settings = choice.settings;
    settings.rateHz = recorded.rateHz;
    settings.nominalHz = recorded.nominalHz;
    settings.startSeconds = recorded.settings.startSeconds;
    settings.clockSeconds = clockSecondsOf(recording, recorded.settings);
    settings.hasNeutral = !fromLineVoltages;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        settings.isMeasured[channel] = recorded.measures(channel);
    }
    constexpr double between = 55.0;
    settings.lamp = choice.lamp.value_or(settings.nominalHz < between ? Lamp::of230V : Lamp::of120V);
    if (settings.hasVoltages() && !(settings.declaredVolts > 0.0)) {
        settings.declaredVolts = usualLevelOf(gaplessVoltages(recorded), settings.rateHz, settings.nominalHz);
    }
    return settings;
}

}  // namespace

std::string obstacleToQuality(const Measurement& recorded) {
    const std::string grid = "; a grid of " + formatNumber(recorded.nominalHz, 4) + " Hz needs ";
    if (recorded.rateHz < leastSamplesPerCycle * recorded.nominalHz) {
        return "a sample rate of " + formatNumber(recorded.rateHz) +
               " Hz is too low to follow the voltage from cycle to cycle" + grid +
               formatNumber(leastSamplesPerCycle * recorded.nominalHz) + " Hz";
    }
    if (recorded.durationSeconds() * recorded.nominalHz < leastCycles) {
        return formatNumber(recorded.durationSeconds()) + " s are too short" + grid +
               formatNumber(leastCycles / recorded.nominalHz, 3) + " s, " + formatNumber(leastCycles) + " cycles";
    }
    return {};
}

QualitySettings qualitySettings(const Recording& recording, const Measurement& recorded, bool fromLineVoltages,
                                const QualityChoice& choice) {
    if (const std::string obstacle = obstacleToQuality(recorded); !obstacle.empty()) {
        failInput(recording.source + ": " + obstacle);
    }
    const QualitySettings settings = settingsFor(recording, recorded, fromLineVoltages, choice);
    if (settings.hasVoltages() && !(settings.declaredVolts > 0.0)) {
        failInput(recording.source +
                  ": the voltages are dead or have gaps, so events have nothing to compare with; give --declared V");
    }
    return settings;
}

std::optional<QualitySettings> qualitySettingsOf(const Recording& recording, const FullMeasurement& full) {
    const Measurement& recorded = full.asRecorded();
    if (!recorded.hasVoltages() || !(full.frequencyHz > 0.0) || !obstacleToQuality(recorded).empty()) {
        return std::nullopt;
    }
    QualitySettings settings = settingsFor(recording, recorded, full.fromLineVoltages, {});
    settings.eventsOnly = true;
    return settings.declaredVolts > 0.0 ? std::optional(settings) : std::nullopt;
}

}  // namespace rt305
