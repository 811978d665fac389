#ifndef RT305_HOST_MEASURING_MEASUREMENT_H
#define RT305_HOST_MEASURING_MEASUREMENT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "recording/channel_assignment.h"
#include "recording/channels.h"
#include "recording/recording.h"
#include "rt305_4/rt305_4.h"

namespace rt305 {

/// The sample rates that the library assumes when it measures frequency, harmonics and spectra, whatever rate a request
/// names: one for all six channels, one for voltages or currents alone.
inline constexpr double combinedRateHz = 10000.0;
inline constexpr double singleKindRateHz = 500.0;

/// The range in which the library accepts a fundamental, without its ends, in Hz.
struct FrequencyWindow {
    double lower;
    double upper;

    bool contains(double frequency) const { return lower < frequency && frequency < upper; }
    std::string text() const;  // "49.6-50.4 Hz"
};
inline constexpr FrequencyWindow fixedWindow{49.6, 50.4};
inline constexpr FrequencyWindow controlWindow{10.0, 60.0};

/// What the user chooses.
struct MeasurementSettings {
    PerChannel<std::string> columns;         // name or number of the column; empty: assigned by name
    std::optional<std::size_t> segment;      // from 1; empty: the main one
    double startSeconds = 0.0;               // of the part to measure, after the segment's first sample
    double durationSeconds = 0.0;            // of the part to measure; 0: to the segment's end
    bool resample = true;                    // to the rate that the library assumes
    std::optional<std::uint32_t> inputType;  // RT305_4_INPUT_*; empty: by the channels in the recording
    std::uint32_t flags = RT305_4_SIMULATED_SOURCE_MASK | RT305_4_FOUR_WIRE;  // struct1_T.measurementFlags
    bool wiringIsGiven = false;       // otherwise columns named as line voltages clear RT305_4_FOUR_WIRE
    std::uint32_t spectrumFlags = 0;  // struct1_T.spectrumFlags
    std::int16_t peaks = 10;          // the largest lines of each spectrum
    double peakCriterion = 0.0;       // with RT305_4_SPECTRUM_CRITERION
    PerChannel<double> coefficients{1.0, 1.0, 1.0, 1.0, 1.0, 1.0};
    PerChannel<double> gains{1.0, 1.0, 1.0, 1.0, 1.0, 1.0};
    PerChannel<double> resistances{};  // ohm
};

/// The two-wattmeter method takes the line voltages ab and cb, and the library returns its Q with the opposite sign.
/// For samples that hold bc in the second channel: inverts that channel, and Q once more.
void invertForTwoWattmeters(MeasurementSettings& settings);

/// Samples ready to be measured, with their settings.
struct Measurement {
    MeasurementSettings settings;
    Assignment assignment{};                    // the column of each channel
    PerChannel<std::vector<double>> samples{};  // V and A; empty: not measured
    std::size_t length = 0;
    double rateHz = 0.0;
    double recordedRateHz = 0.0;  // before resampling
    std::uint32_t inputType = 0;
    std::vector<std::string> notes{};     // preparation that the user may not expect
    std::vector<std::string> warnings{};  // what makes results doubtful or missing

    bool has(std::uint32_t flag) const { return (settings.flags & flag) == flag; }
    const FrequencyWindow& window() const { return has(RT305_4_FREQUENCY_CONTROL) ? controlWindow : fixedWindow; }
    std::uint32_t powerFlag() const { return settings.flags & RT305_4_POWER_MASK; }
    bool hasVoltages() const { return inputType != RT305_4_INPUT_CURRENTS; }
    bool hasCurrents() const { return inputType != RT305_4_INPUT_VOLTAGES; }
    bool isCombined() const { return inputType == RT305_4_INPUT_VOLTAGES_AND_CURRENTS; }
    double durationSeconds() const { return static_cast<double>(length) / rateHz; }
    double assumedRateHz() const { return isCombined() ? combinedRateHz : singleKindRateHz; }
    bool isAtAssumedRate() const;  // within 0.01 %
};

/// Whether results depend on the rate that the library assumes: those of frequencies do, statistics do not.
enum class RateMatters { no, yes };

/// Takes the channels from one segment of a recording, or from a part of it, and resamples them to the rate that the
/// library assumes if that matters and the settings allow it; a note says so. A current that is to be rebuilt from the
/// other two need not be recorded. Fails when the rate is unknown, when there is no such segment or part, when the
/// channels present make no input type, and on samples to be resampled that are taken below 40 Hz or 1/64 of the new
/// rate, or last less than 1/60 s.
Measurement makeMeasurement(const Recording& recording, const MeasurementSettings& settings,
                            RateMatters rateMatters = RateMatters::yes);

/// The same for both answers, from one reading of the channels.
struct MeasurementPair {
    Measurement resampled;   // RateMatters::yes
    Measurement asRecorded;  // RateMatters::no
};
MeasurementPair makeMeasurementPair(const Recording& recording, const MeasurementSettings& settings);

}  // namespace rt305

#endif
