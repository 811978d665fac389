#ifndef RT305_HOST_OUTPUT_QUALITY_SETTINGS_H
#define RT305_HOST_OUTPUT_QUALITY_SETTINGS_H

#include <optional>
#include <string>

#include "measuring/full_measurement.h"
#include "quality/settings.h"

namespace rt305 {

/// What the user chooses; the rest comes from the recording.
struct QualityChoice {
    QualitySettings settings{};  // thresholds and declared voltage
    std::optional<Lamp> lamp{};  // empty: by the nominal frequency
};

/// The settings for a recording. `recorded` has its samples at their own rate. Fails when there are fewer than 12
/// samples a nominal cycle or less than three cycles, and for dead voltages without a declared one.
QualitySettings qualitySettings(const Recording& recording, const Measurement& recorded, bool fromLineVoltages,
                                const QualityChoice& choice);

/// Those for the events of a full measurement, with the standard's thresholds. Nothing when there is an obstacle, no
/// fundamental, no voltage, or a dead one.
std::optional<QualitySettings> qualitySettingsOf(const Recording& recording, const FullMeasurement& full);

/// Why the power quality of samples cannot be followed: fewer than 12 samples a nominal cycle, or less than three
/// cycles. Empty when it can.
std::string obstacleToQuality(const Measurement& recorded);

}  // namespace rt305

#endif
