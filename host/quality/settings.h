#ifndef RT305_HOST_QUALITY_SETTINGS_H
#define RT305_HOST_QUALITY_SETTINGS_H

#include <cmath>
#include <cstddef>

#include "recording/channels.h"
#include "signal/flicker.h"

namespace rt305 {

/// What an analysis of power quality assumes. The thresholds are in percent of the declared voltage; their values are
/// those of IEC 61000-4-30 as far as it names some.
struct QualitySettings {
    double rateHz = 0.0;
    double nominalHz = 50.0;            // of the grid
    double declaredVolts = 0.0;         // above 0 where voltages are measured
    double startSeconds = 0.0;          // time of the first sample, to which all times refer
    double clockSeconds = 0.0;          // the same by the clock, since a full two hours; 0: there is no clock
    PerChannel<bool> isMeasured{};      // channels with samples
    bool hasNeutral = true;             // the zero-sequence voltage is measured
    bool isSlidingReference = false;    // thresholds follow the voltage of the last minute
    bool eventsOnly = false;            // no intervals and no flicker
    double dipPercent = 90.0;           // a dip begins below
    double swellPercent = 110.0;        // a swell begins above
    double interruptionPercent = 10.0;  // an interruption begins below, in all phases
    double hysteresisPercent = 2.0;     // events end this much inside
    double changePercent = 5.0;         // a rapid voltage change leaves the mean of a second by this
    double transientPercent = 20.0;     // of the declared voltage's crest
    Lamp lamp = Lamp::of230V;

    bool measures(std::size_t channel) const { return isMeasured[channel]; }
    bool hasVoltages() const { return isMeasured[0]; }
    std::size_t leadingChannel() const { return hasVoltages() ? 0 : phaseTotal; }
    bool isThreePhase() const { return isMeasured[leadingChannel() + 2]; }
    double samplesPerCycle() const { return rateHz / nominalHz; }

    /// The cycles closest to 200 ms: 10 at 50 Hz, 12 at 60 Hz.
    std::size_t cyclesPerInterval() const {
        return static_cast<std::size_t>(std::fmax(1.0, std::round(0.2 * nominalHz)));
    }
};

}  // namespace rt305

#endif
