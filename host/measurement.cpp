#include "measurement.h"

#include <cmath>

#include "failure.h"
#include "text.h"

namespace rt305 {

namespace {

/// The names of the channels of a set that are there, or of those that are not.
std::vector<std::string> namesWhere(const Measurement& measurement, bool present, std::size_t from, std::size_t to) {
    std::vector<std::string> names;
    for (std::size_t channel = from; channel < to; ++channel) {
        if (measurement.samples[channel].empty() != present) {
            names.emplace_back(channelNames[channel]);
        }
    }
    return names;
}

void rebuildMissingCurrent(Measurement& measurement) {
    const std::uint32_t place = (measurement.settings.flags & RT305_4_REBUILT_PHASE_MASK) / RT305_4_REBUILT_PHASE_A;
    if (!measurement.has(RT305_4_TWO_CURRENTS) || place == 0) {
        return;
    }
    auto& samples = measurement.samples;
    const std::size_t rebuilt = phaseTotal + place - 1;
    const auto& x = samples[phaseTotal + place % phaseTotal];
    const auto& y = samples[phaseTotal + (place + 1) % phaseTotal];
    if (!samples[rebuilt].empty() || x.empty() || y.empty()) {
        return;
    }
    samples[rebuilt].resize(measurement.length);
    for (std::size_t k = 0; k < measurement.length; ++k) {
        samples[rebuilt][k] = -(x[k] + y[k]);
    }
}

std::uint32_t decideInputType(Measurement& measurement, const std::string& source) {
    const auto missingVoltages = namesWhere(measurement, false, 0, phaseTotal);
    const auto missingCurrents = namesWhere(measurement, false, phaseTotal, channelTotal);
    if (missingVoltages.empty() && missingCurrents.empty()) {
        return RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
    }
    if (!missingVoltages.empty() && !missingCurrents.empty()) {
        const auto missing = namesWhere(measurement, false, 0, channelTotal);
        failInput(source + ": neither three voltages nor three currents, there is no column for " + joined(missing) +
                  "; name the columns with --map Ua=COLUMN,...");
    }
    const bool voltages = missingVoltages.empty();
    const auto unused = voltages ? namesWhere(measurement, true, phaseTotal, channelTotal)
                                 : namesWhere(measurement, true, 0, phaseTotal);
    if (!unused.empty()) {
        measurement.warnings.push_back(joined(unused) + " not used: there is no column for " +
                                       joined(voltages ? missingCurrents : missingVoltages));
    }
    return voltages ? RT305_4_INPUT_VOLTAGES : RT305_4_INPUT_CURRENTS;
}

}  // namespace

std::string FrequencyWindow::text() const {
    return formatNumber(lower) + "-" + formatNumber(upper) + " Hz";
}

bool Measurement::isAtAssumedRate() const {
    return std::fabs(rateHz - assumedRateHz()) <= 1e-3 * assumedRateHz();
}

Measurement makeMeasurement(const Recording& recording, const MeasurementSettings& settings) {
    if (recording.rateHz == 0.0) {
        failInput(recording.source + ": there is no time column to take the sample rate from; give --rate HZ");
    }
    Measurement measurement;
    measurement.settings = settings;
    measurement.length = recording.length;
    measurement.rateHz = recording.rateHz;
    const auto columns = assignColumns(recording, settings.columns);
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (columns[channel]) {
            measurement.samples[channel] = samplesInBaseUnit(recording.columns[*columns[channel]]);
        }
    }
    rebuildMissingCurrent(measurement);
    measurement.inputType = settings.inputType ? *settings.inputType : decideInputType(measurement, recording.source);
    return measurement;
}

}  // namespace rt305
