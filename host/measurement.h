#ifndef RT305_HOST_MEASUREMENT_H
#define RT305_HOST_MEASUREMENT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "recording.h"
#include "rt305_4/rt305_4.h"

namespace rt305 {

/// The rate at which the library takes every record when it measures frequency, harmonics and power.
inline constexpr double parameterRateHz = 10000.0;

/// What the user sets beside the samples.
struct MeasurementSettings {
    PerChannel<std::string> columns;         // the user's choice of columns; empty: by their names
    std::optional<std::uint32_t> inputType;  // RT305_4_INPUT_*; empty: by the channels that are there
    std::uint32_t flags = RT305_4_SIMULATED_SOURCE_MASK | RT305_4_FOUR_WIRE;  // struct1_T.measurementFlags
    PerChannel<double> coefficients{1.0, 1.0, 1.0, 1.0, 1.0, 1.0};
    PerChannel<double> gains{1.0, 1.0, 1.0, 1.0, 1.0, 1.0};
    PerChannel<double> resistances{};  // ohm
};

/// Samples with their settings, ready to be measured.
struct Measurement {
    MeasurementSettings settings;
    PerChannel<std::vector<double>> samples;  // V and A; empty: not measured
    std::size_t length = 0;
    double rateHz = 0.0;
    std::uint32_t inputType = 0;
    std::vector<std::string> warnings;

    bool has(std::uint32_t flag) const { return (settings.flags & flag) == flag; }
    std::uint32_t powerMethod() const { return settings.flags & RT305_4_POWER_MASK; }
    bool isAtParameterRate() const;  // within 0.1 %
};

/// Takes the channels out of a recording. A current that is to be rebuilt from the other two need not be recorded.
/// Fails when the rate is unknown and when the channels that are there make no input type.
Measurement makeMeasurement(const Recording& recording, const MeasurementSettings& settings);

}  // namespace rt305

#endif
