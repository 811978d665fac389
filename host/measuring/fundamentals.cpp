#include "measuring/fundamentals.h"

#include <algorithm>

#include "signal/fundamental.h"

namespace rt305 {

namespace {

/// In Hz, 0 for none.
double frequencyOf(const Measurement& measurement, std::size_t channel, const std::vector<double>* fromLibrary) {
    if (fromLibrary != nullptr && !fromLibrary->empty() && fromLibrary->front() > 0.0) {
        return fromLibrary->front();
    }
    return estimateFundamental(measurement.samples[channel], measurement.rateHz).value_or(0.0);
}

}  // namespace

double Fundamentals::medianFrequency() const {
    PerPhase<double> sorted = frequencies;
    std::sort(sorted.begin(), sorted.end());
    return sorted[1];
}

Fundamentals fundamentalsOf(const Measurement& measurement, const std::vector<KindResults<Harmonics>>& harmonics) {
    Fundamentals fundamentals;
    const std::size_t first = measurement.hasVoltages() ? 0 : phaseTotal;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (!measurement.measures(first + phase)) {
            fundamentals.frequencies[phase] = fundamentals.frequencies[0];
            continue;
        }
        const bool isGiven = !harmonics.empty() && phase < harmonics[0].channels.size();
        fundamentals.frequencies[phase] =
            frequencyOf(measurement, first + phase, isGiven ? &harmonics[0].channels[phase].frequencies : nullptr);
    }
    const double frequencyHz = fundamentals.medianFrequency();
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        Phasors& phasors = isCurrent(channel) ? fundamentals.currents : fundamentals.voltages;
        if (!measurement.samples[channel].empty()) {
            phasors[channel % phaseTotal] = phasorOf(measurement.samples[channel], frequencyHz, measurement.rateHz);
        }
    }
    return fundamentals;
}

}  // namespace rt305
