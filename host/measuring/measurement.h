#ifndef RT305_HOST_MEASURING_MEASUREMENT_H
#define RT305_HOST_MEASURING_MEASUREMENT_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "recording/channels.h"
#include "recording/recording.h"
#include "rt305_4/rt305_4.h"

namespace rt305 {

/// The rates at which the library takes a record, whatever its own, when it measures frequency, harmonics and spectra:
/// the first for all six channels, the second for voltages or currents alone.
inline constexpr double combinedRateHz = 10000.0;
inline constexpr double singleKindRateHz = 500.0;

/// Where the library lets a fundamental lie.
struct FrequencyWindow {
    double lower;
    double upper;

    bool contains(double frequency) const { return lower < frequency && frequency < upper; }
    std::string text() const;  // "49.6-50.4 Hz"
};
inline constexpr FrequencyWindow fixedWindow{49.6, 50.4};
inline constexpr FrequencyWindow controlWindow{10.0, 60.0};

/// The words for the ways to measure power, with their RT305_4_POWER_* flags.
inline const std::map<std::string, std::uint32_t> powerMethods{
    {"none", RT305_4_POWER_NONE},
    {"two-wattmeter", RT305_4_POWER_TWO_WATTMETER},
    {"two-wattmeter-phase", RT305_4_POWER_TWO_WATTMETER_PHASE},
    {"three-wattmeter", RT305_4_POWER_THREE_WATTMETER},
    {"three-wattmeter-complex", RT305_4_POWER_THREE_WATTMETER_COMPLEX}};

/// What the user sets beside the samples.
struct MeasurementSettings {
    PerChannel<std::string> columns;         // the user's choice of columns; empty: by their names
    std::optional<std::size_t> segment;      // from 1; empty: the main one
    double startSeconds = 0.0;               // of the part to measure, from the segment's first sample on
    double durationSeconds = 0.0;            // of the part to measure; 0: to the segment's end
    bool resample = true;                    // to the rate that the library assumes
    std::optional<std::uint32_t> inputType;  // RT305_4_INPUT_*; empty: by the channels that are there
    std::uint32_t flags = RT305_4_SIMULATED_SOURCE_MASK | RT305_4_FOUR_WIRE;  // struct1_T.measurementFlags
    std::uint32_t spectrumFlags = 0;                                          // struct1_T.spectrumFlags
    std::int16_t peaks = 10;                                                  // largest lines wanted of each spectrum
    double peakCriterion = 0.0;                                               // with RT305_4_SPECTRUM_CRITERION
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
    double recordedRateHz = 0.0;  // before resampling
    std::uint32_t inputType = 0;
    std::vector<std::string> notes;     // what was done that the user may not expect
    std::vector<std::string> warnings;  // what makes results doubtful or missing

    bool has(std::uint32_t flag) const { return (settings.flags & flag) == flag; }
    const FrequencyWindow& window() const { return has(RT305_4_FREQUENCY_CONTROL) ? controlWindow : fixedWindow; }
    std::uint32_t powerMethod() const { return settings.flags & RT305_4_POWER_MASK; }
    bool isCombined() const { return inputType == RT305_4_INPUT_VOLTAGES_AND_CURRENTS; }
    double assumedRateHz() const { return isCombined() ? combinedRateHz : singleKindRateHz; }
    bool isAtAssumedRate() const;  // within 0.01 %
};

/// Whether what is measured depends on the rate that the library assumes: frequencies do, statistics do not.
enum class RateMatters { no, yes };

/// Takes the channels out of one segment of a recording, or of a part of it, and resamples them to the rate that the
/// library assumes when that matters and is wanted; its warnings say so. A current that is to be rebuilt from the other
/// two need not be recorded. Fails when the rate is unknown, when there is no such segment or part, and when the
/// channels that are there make no input type.
Measurement makeMeasurement(const Recording& recording, const MeasurementSettings& settings,
                            RateMatters rateMatters = RateMatters::yes);

}  // namespace rt305

#endif
