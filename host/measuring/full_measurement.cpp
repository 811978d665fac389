#include "measuring/full_measurement.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "base/text.h"

namespace rt305 {

namespace {

using Samples = std::vector<double>;

Samples weightedSum(const Samples& x, double xWeight, const Samples& y, double yWeight) {
    Samples sum(x.size());
    std::transform(x.begin(), x.end(), y.begin(), sum.begin(),
                   [=](double p, double q) { return xWeight * p + yWeight * q; });
    return sum;
}

void applyCoefficients(Measurement& measurement) {
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        double& factor = measurement.settings.coefficients[channel];
        for (double& x : measurement.samples[channel]) {
            x *= factor;
        }
        factor = 1.0;
    }
}

/// Phase voltages, without zero sequence, from the line voltages ab, bc and ca: Ua = (Uab - Uca) / 3 and so on.
void formPhaseVoltages(Measurement& measurement) {
    const auto line = measurement.samples;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const std::size_t before = (phase + phaseTotal - 1) % phaseTotal;
        measurement.samples[phase] = weightedSum(line[phase], 1.0 / 3.0, line[before], -1.0 / 3.0);
    }
    measurement.settings.flags |= RT305_4_FOUR_WIRE;
}

Measurement windowOf(const Measurement& measurement, double startSeconds, double durationSeconds) {
    const auto first = static_cast<std::ptrdiff_t>(std::llround(startSeconds * measurement.rateHz));
    const auto count = static_cast<std::ptrdiff_t>(std::llround(durationSeconds * measurement.rateHz));
    if (first < 0 || count < 1 || first + count > static_cast<std::ptrdiff_t>(measurement.length)) {
        failInput("a window of " + formatNumber(durationSeconds) + " s from " + formatNumber(startSeconds) +
                  " s exceeds the recording");
    }
    Measurement part{.settings = measurement.settings,
                     .assignment = measurement.assignment,
                     .standIns = measurement.standIns,
                     .length = static_cast<std::size_t>(count),
                     .rateHz = measurement.rateHz,
                     .recordedRateHz = measurement.recordedRateHz,
                     .nominalHz = measurement.nominalHz,
                     .inputType = measurement.inputType,
                     .warnings = measurement.warnings};
    part.settings.startSeconds += startSeconds;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const Samples& samples = measurement.samples[channel];
        if (!samples.empty()) {
            part.samples[channel].assign(samples.begin() + first, samples.begin() + first + count);
        }
    }
    return part;
}

}  // namespace

FullMeasurement prepare(const Recording& recording, const MeasurementSettings& settings) {
    MeasurementPair pair = makeMeasurementPair(recording, settings);
    FullMeasurement full{std::move(pair.resampled), std::move(pair.asRecorded), false};
    full.fromLineVoltages = full.measurement.hasVoltages() && !full.measurement.has(RT305_4_FOUR_WIRE);
    for (Measurement* const each : {&full.measurement, &full.asRecorded}) {
        applyCoefficients(*each);
        if (full.fromLineVoltages) {
            formPhaseVoltages(*each);
        }
    }
    return full;
}

FullMeasurement windowOf(const FullMeasurement& full, double startSeconds, double durationSeconds) {
    return {windowOf(full.measurement, startSeconds, durationSeconds),
            windowOf(full.asRecorded, startSeconds, durationSeconds), full.fromLineVoltages};
}

Measurement withLineVoltages(Measurement measurement) {
    const auto phase = measurement.samples;
    for (std::size_t line = 0; line < phaseTotal; ++line) {
        measurement.samples[line] = weightedSum(phase[line], 1.0, phase[(line + 1) % phaseTotal], -1.0);
    }
    measurement.settings.flags &= ~RT305_4_FOUR_WIRE;
    return measurement;
}

}  // namespace rt305
