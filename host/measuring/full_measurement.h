#ifndef RT305_HOST_MEASURING_FULL_MEASUREMENT_H
#define RT305_HOST_MEASURING_FULL_MEASUREMENT_H

#include <optional>
#include <string>
#include <vector>

#include "measuring/fundamentals.h"
#include "measuring/measurement.h"

namespace rt305 {

/// A recording prepared to be measured in full: phase voltages and currents in V and A at the rate that the library
/// assumes, with coefficients applied and the frequency window chosen.
struct FullMeasurement {
    Measurement measurement;
    std::optional<Measurement> notResampled;  // the same samples at their own rate; empty: as in `measurement`
    bool fromLineVoltages;            // the phase voltages are computed from line voltages: no zero sequence is known
    double frequencyHz = 0.0;         // of the fundamental; 0: none found
    bool isFrequencyMeasured = true;  // otherwise it is assumed
    std::string frequencySource{};    // where it is from, if not from the measured samples
    std::size_t cycles = 0;           // whole cycles that the samples span; 0: all samples are measured
    PerChannel<std::vector<double>> rest{};  // of those at their own rate, the samples behind the last whole cycle
    std::string unsteadiness{};              // how the signal changes, and which parts do not; empty: it is steady

    /// The samples at their own rate, for statistics and waveforms.
    const Measurement& asRecorded() const { return notResampled ? *notResampled : measurement; }
    bool isSteady() const { return unsteadiness.empty(); }
    /// Why there are no symmetrical components, angles and no verdict on the wiring; empty: there are.
    std::string obstacleToComponents() const;

    /// Appends the rest to the samples at their own rate: for events and waveforms, when everything else is measured.
    void appendRest();

    /// Cycles of the fundamental, or of the nominal frequency where there is none.
    double cyclesThere() const {
        return asRecorded().durationSeconds() * (frequencyHz > 0.0 ? frequencyHz : measurement.nominalHz);
    }
};

/// Where samples are cut to the longest whole number of cycles, unless all samples are wanted.
enum class WholeCycles {
    here,
    inWindows  // windows have their own; a cut before could lose the last of them
};

/// Takes the part that the settings choose. Fails when there is no such part. Takes the samples out of the recording,
/// which keeps everything else; of the times of a single segment it keeps the first.
FullMeasurement prepare(Recording& recording, const MeasurementSettings& settings,
                        WholeCycles wholeCycles = WholeCycles::here);

/// The part that the settings choose at its own rate: phase voltages and currents in V and A with coefficients applied.
struct RecordedPhases {
    Measurement measurement;
    bool fromLineVoltages;
};
RecordedPhases recordedPhases(Recording& recording, const MeasurementSettings& settings);

/// A part of it, from `startSeconds` after its first sample, in whole cycles as above. Fails when it exceeds the
/// samples.
FullMeasurement windowOf(const FullMeasurement& full, double startSeconds, double durationSeconds);

/// What makes a signal unsteady, by how much and where; empty when it is steady.
std::string describeChange(const GridState& state, const Measurement& measurement);

/// The voltage between a phase and the next: ab, bc or ca.
std::vector<double> lineVoltage(const Measurement& measurement, std::size_t phase);

}  // namespace rt305

#endif
