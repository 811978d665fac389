#ifndef RT305_HOST_MEASURING_MEASUREMENT_H
#define RT305_HOST_MEASURING_MEASUREMENT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "recording/channel_assignment.h"
#include "recording/channels.h"
#include "recording/recording.h"
#include "recording/remark.h"
#include "rt305_4/rt305_4.h"

namespace rt305 {

/// The library takes all six channels as sampled at this rate, and the grid as one of 50 Hz, whatever rate a request
/// names. So a cycle needs 200 samples, and the frequencies in its texts are real ones only at 10 kHz. RMS, power and
/// THD do not depend on the scale of time: a grid of any frequency is measured with 200 samples a nominal cycle, and
/// the frequencies are multiplied by rate / 10000.
inline constexpr double libraryRateHz = 10000.0;
inline constexpr double libraryNominalHz = 50.0;

/// A range of the fundamental, without its ends, in Hz.
struct FrequencyWindow {
    double lower;
    double upper;

    bool contains(double frequency) const { return lower < frequency && frequency < upper; }
    FrequencyWindow scaled(double factor) const { return {lower * factor, upper * factor}; }
    std::string text() const;  // "49.6-50.4 Hz"
};

/// Where the library accepts a fundamental, in its own hertz.
inline constexpr FrequencyWindow fixedWindow{49.6, 50.4};
inline constexpr FrequencyWindow controlWindow{10.0, 60.0};

/// Which part of an unsteady recording to measure.
enum class Part { all, preFault, fault, longestSteady };

/// What the user chooses.
struct MeasurementSettings {
    PerChannel<std::string> columns;         // name or number of the column; empty: assigned by name
    std::optional<std::size_t> segment;      // from 1; empty: the main one
    double startSeconds = 0.0;               // of the part to measure, after the segment's first sample
    double durationSeconds = 0.0;            // of the part to measure; 0: to the segment's end
    double durationCycles = 0.0;             // the same in cycles of the fundamental; 0: by seconds
    Part part = Part::all;                   // by steadiness, inside the above
    bool allSamples = false;                 // not only whole cycles
    double nominalHz = 0.0;                  // of the grid; 0: as the file says, else by the fundamental
    bool resample = true;                    // to 200 samples a nominal cycle
    bool chooseWindow = true;                // RT305_4_FREQUENCY_CONTROL when a fundamental needs it
    bool fillIn = true;                      // hand over all six channels: copies for those that are not measured
    bool deskew = true;                      // correct the stated delays of the channels
    std::optional<std::uint32_t> inputType;  // what to measure, RT305_4_INPUT_*; empty: by the channels there
    std::uint32_t flags = RT305_4_SIMULATED_SOURCE_MASK | RT305_4_FOUR_WIRE;  // struct1_T.measurementFlags
    bool wiringIsGiven = false;  // otherwise columns named as line voltages clear RT305_4_FOUR_WIRE
    std::uint32_t spectrumFlags = RT305_4_SPECTRUM_WINDOW_HANN;  // struct1_T.spectrumFlags
    std::int16_t peaks = 10;                                     // the largest lines of each spectrum
    double peakCriterion = 0.0;                                  // with RT305_4_SPECTRUM_CRITERION
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
    Assignment assignment{};                             // the column of each channel
    PerChannel<std::vector<double>> samples{};           // V and A; empty: not measured
    PerChannel<std::size_t> standIns{0, 1, 2, 3, 4, 5};  // the channel whose samples the library gets
    std::size_t length = 0;
    double rateHz = 0.0;
    double recordedRateHz = 0.0;  // before resampling
    double nominalHz = libraryNominalHz;
    std::uint32_t inputType = 0;       // as the library is asked to measure
    std::vector<std::string> notes{};  // preparation that the user may not expect
    std::vector<Remark> warnings{};    // what makes results doubtful or missing

    bool has(std::uint32_t flag) const { return (settings.flags & flag) == flag; }
    std::uint32_t powerFlag() const { return settings.flags & RT305_4_POWER_MASK; }
    /// "Ua", or "Uab" where the samples are those of line voltages.
    std::string_view nameOf(std::size_t channel) const {
        return isCurrent(channel) || has(RT305_4_FOUR_WIRE) ? channelNames[channel] : lineVoltageNames[channel];
    }
    bool measures(std::size_t channel) const { return !samples[channel].empty(); }
    bool hasVoltages() const { return measures(0); }
    bool hasCurrents() const { return measures(phaseTotal); }
    bool isCombined() const { return hasVoltages() && hasCurrents(); }
    bool isThreePhase() const { return measures(1) || measures(phaseTotal + 1); }  // else phase a alone
    const std::vector<double>& handedOver(std::size_t channel) const { return samples[standIns[channel]]; }
    double durationSeconds() const { return static_cast<double>(length) / rateHz; }

    /// The rate at which the library sees the nominal frequency as its 50 Hz; equal within 0.01 %.
    double wantedRateHz() const { return libraryRateHz / libraryNominalHz * nominalHz; }
    bool isAtWantedRate() const;

    /// The highest frequency that the samples contain, also before they were resampled.
    double highestHz() const;

    /// Real hertz for a hertz of the library.
    double frequencyScale() const;
    FrequencyWindow window() const;  // in real hertz
};

/// Whether results depend on the rate that the library assumes: those of frequencies do, statistics do not.
enum class RateMatters { no, yes };

/// Takes the channels from one segment of a recording, or from a part of it (see chooseChannels), decides on nominal
/// frequency and frequency window, and resamples to the rate that the library needs if that matters and the settings
/// allow it; a note says so. Gaps of up to 8 samples and 2 ms are interpolated, and stated delays corrected. Fails when
/// the rate is unknown, when there is no such segment or part, when channels are missing, and on samples to be
/// resampled that are fewer than 2.5 a nominal cycle or last less than one.
///
/// Takes the samples out of the recording, which keeps everything else.
Measurement makeMeasurement(Recording& recording, const MeasurementSettings& settings,
                            RateMatters rateMatters = RateMatters::yes);

/// The same for both answers, from one reading of the channels.
struct MeasurementPair {
    Measurement measured;                   // RateMatters::yes
    std::optional<Measurement> asRecorded;  // RateMatters::no; empty when `measured` was not resampled
};
MeasurementPair makeMeasurementPair(Recording& recording, const MeasurementSettings& settings);

}  // namespace rt305

#endif
