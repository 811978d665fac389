#include "measuring/measurement.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "base/failure.h"
#include "base/text.h"
#include "signal/resampler.h"

namespace rt305 {

namespace {

constexpr double lowestMeasuredRateHz = 4.0 * controlWindow.lower;
constexpr double mostStretch = 64.0;  // new samples for each recorded one
constexpr double shortestSeconds = 1.0 / 60.0;

/// The names of the channels in a range that have samples, or of those that have none.
std::vector<std::string> namesWhere(const Measurement& measurement, bool present, std::size_t from, std::size_t to) {
    std::vector<std::string> names;
    for (std::size_t channel = from; channel < to; ++channel) {
        if (measurement.samples[channel].empty() != present) {
            names.emplace_back(channelNames[channel]);
        }
    }
    return names;
}

/// Forms the samples of one of the three channels from `first` on, whose sum is zero, from the other two, if recorded.
void formThird(Measurement& measurement, std::size_t place, std::size_t first) {
    auto& samples = measurement.samples;
    const auto& x = samples[first + (place + 1) % phaseTotal];
    const auto& y = samples[first + (place + 2) % phaseTotal];
    auto& formed = samples[first + place];
    if (!formed.empty() || x.empty() || y.empty()) {
        return;
    }
    formed.resize(measurement.length);
    for (std::size_t k = 0; k < measurement.length; ++k) {
        formed[k] = -(x[k] + y[k]);
    }
}

void rebuildMissingCurrent(Measurement& measurement) {
    const std::uint32_t place = (measurement.settings.flags & RT305_4_REBUILT_PHASE_MASK) / RT305_4_REBUILT_PHASE_A;
    if (measurement.has(RT305_4_TWO_CURRENTS) && place != 0) {
        formThird(measurement, place - 1, phaseTotal);
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

Segment chosenSegment(const Recording& recording, Measurement& measurement) {
    const auto& segments = recording.segments;
    if (segments.empty()) {
        failInput(recording.source + ": the sample rate is unknown; give --rate HZ");
    }
    const auto wanted = measurement.settings.segment;
    if (wanted && (*wanted < 1 || *wanted > segments.size())) {
        failInput(recording.source + ": there is no segment " + std::to_string(*wanted) + "; the recording has " +
                  std::to_string(segments.size()));
    }
    const std::size_t number = wanted ? *wanted - 1 : mainSegment(recording);
    if (!wanted && segments.size() > 1) {
        measurement.notes.push_back("segment " + std::to_string(number + 1) + " of " + std::to_string(segments.size()) +
                                    " is measured, " + std::to_string(segments[number].count) + " samples at " +
                                    formatNumber(segments[number].rateHz) + " Hz; --segment chooses another");
    }
    return segments[number];
}

/// Line voltages by their names make three wires, unless the user has given the wiring. Two of them give the third.
void useLineVoltages(const Recording& recording, Measurement& measurement) {
    const Assignment& assignment = measurement.assignment;
    if (!assignment.areLineVoltages || (measurement.settings.wiringIsGiven && measurement.has(RT305_4_FOUR_WIRE))) {
        return;
    }
    measurement.settings.flags &= ~RT305_4_FOUR_WIRE;
    std::vector<std::string> names;
    std::optional<std::size_t> missing;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (const auto column = assignment.columns[phase]) {
            names.push_back(inQuotes(recording.columns[*column].name));
        } else {
            missing = phase;
        }
    }
    measurement.notes.push_back(joined(names) +
                                " are line voltages: measured as three wires, with phase voltages "
                                "against the virtual neutral; --wiring four if they are phase voltages");
    if (missing) {
        formThird(measurement, *missing, 0);
        measurement.notes.push_back(std::string(lineVoltageNames[*missing]) + " is formed from the other two");
    }
}

/// The assigned columns' samples of the segment, in V and A.
void takeChannels(const Recording& recording, const Segment& segment, Measurement& measurement) {
    const Assignment& assignment = measurement.assignment = assignColumns(recording, measurement.settings.columns);
    measurement.warnings.insert(measurement.warnings.end(), assignment.warnings.begin(), assignment.warnings.end());
    double earliest = 0.0;
    double latest = 0.0;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (const auto number = assignment.columns[channel]) {
            const Column& column = recording.columns[*number];
            auto samples = samplesInBaseUnit(column);
            if (assignment.isReversed[channel]) {
                std::transform(samples.begin(), samples.end(), samples.begin(), std::negate<>());
            }
            const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(segment.first);
            measurement.samples[channel].assign(begin, begin + static_cast<std::ptrdiff_t>(segment.count));
            earliest = std::min(earliest, column.delaySeconds);
            latest = std::max(latest, column.delaySeconds);
        }
    }
    constexpr double degreesPerSecond = 360.0 * 50.0;
    if (const double degrees = (latest - earliest) * degreesPerSecond; degrees > 0.1) {
        measurement.warnings.push_back("the recorder sampled these channels up to " +
                                       formatNumber(1e6 * (latest - earliest)) +
                                       " us apart, which is not corrected: angles between them are off by up to " +
                                       formatFixed(degrees, 1) + " degrees at 50 Hz");
    }
}

std::string describeResampling(const Measurement& measurement) {
    std::string text = "resampled from " + formatNumber(measurement.recordedRateHz, 9) + " Hz to the " +
                       formatNumber(measurement.rateHz) + " Hz at which the library measures this";
    if (measurement.recordedRateHz < measurement.rateHz) {
        text += "; the recording contains no harmonics above " +
                formatNumber(std::floor(measurement.recordedRateHz * resampledBandwidth / 2.0)) + " Hz";
    }
    return text;
}

/// The library gives no value of a channel with a missing sample.
void warnOfGaps(Measurement& measurement) {
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const auto& samples = measurement.samples[channel];
        const auto first = std::find_if(samples.begin(), samples.end(), [](double x) { return std::isnan(x); });
        if (first != samples.end()) {
            const std::string name(channelNames[channel]);
            const double seconds = static_cast<double>(first - samples.begin()) / measurement.rateHz;
            std::string warning = std::to_string(countMissing(samples));
            warning.append(" samples of ").append(name).append(" are missing, the first after ");
            warning.append(formatNumber(seconds)).append(" s: values with ").append(name);
            warning.append(" are not given; --start and --duration choose a part without gaps");
            measurement.warnings.push_back(std::move(warning));
        }
    }
}

/// A part of a segment, and the measurement with the samples of the whole segment, which the resampler needs around it.
struct ChosenPart {
    Measurement measurement;
    std::size_t first = 0;
    std::size_t count = 0;
};

ChosenPart choosePart(const Recording& recording, const MeasurementSettings& settings) {
    ChosenPart chosen{.measurement = {.settings = settings}};
    Measurement& measurement = chosen.measurement;
    const Segment segment = chosenSegment(recording, measurement);
    const Segment part = partOf(recording, segment, settings.startSeconds, settings.durationSeconds);
    chosen.first = part.first - segment.first;
    chosen.count = part.count;
    measurement.length = segment.count;
    measurement.rateHz = measurement.recordedRateHz = part.rateHz;
    takeChannels(recording, segment, measurement);
    useLineVoltages(recording, measurement);
    rebuildMissingCurrent(measurement);
    measurement.inputType = settings.inputType ? *settings.inputType : decideInputType(measurement, recording.source);
    return chosen;
}

/// Refuses samples that have no fundamental to measure, or of which resampling would make too many.
void requireResamplable(const Measurement& measurement, const ChosenPart& chosen, const std::string& source) {
    const double rate = chosen.measurement.recordedRateHz;
    const double seconds = static_cast<double>(chosen.count) / rate;
    if (rate < lowestMeasuredRateHz) {
        failInput(source + ": a sample rate of " + formatNumber(rate) +
                  " Hz is too low to measure a fundamental, which " + "needs " + formatNumber(lowestMeasuredRateHz) +
                  " Hz; rt305 signals shows the statistics");
    }
    if (measurement.assumedRateHz() > mostStretch * rate) {
        failInput(source + ": a sample rate of " + formatNumber(rate) + " Hz is too low to be resampled to the " +
                  formatNumber(measurement.assumedRateHz()) + " Hz at which the library measures this, by at most " +
                  formatNumber(mostStretch) + " times");
    }
    if (seconds < shortestSeconds) {
        failInput(source + ": " + formatNumber(seconds) + " s are too short to be measured; at least " +
                  formatNumber(shortestSeconds, 3) + " s, a cycle at 60 Hz, are needed");
    }
}

/// Keeps the chosen part of the segment's samples only.
void cutAndResample(Measurement& measurement, const ChosenPart& chosen, RateMatters rateMatters,
                    const std::string& source) {
    if (rateMatters == RateMatters::yes && measurement.settings.resample && !measurement.isAtAssumedRate()) {
        requireResamplable(measurement, chosen, source);
        measurement.rateHz = measurement.assumedRateHz();
        measurement.notes.push_back(describeResampling(measurement));
    }
    for (auto& samples : measurement.samples) {
        if (!samples.empty()) {
            samples = resampled(samples, chosen.first, chosen.count, measurement.recordedRateHz, measurement.rateHz);
            measurement.length = samples.size();
        }
    }
    warnOfGaps(measurement);
}

}  // namespace

std::string FrequencyWindow::text() const {
    return formatNumber(lower) + "-" + formatNumber(upper) + " Hz";
}

bool Measurement::isAtAssumedRate() const {
    return std::fabs(rateHz - assumedRateHz()) <= 1e-4 * assumedRateHz();
}

void invertForTwoWattmeters(MeasurementSettings& settings) {
    settings.coefficients[1] = -settings.coefficients[1];
    settings.flags ^= RT305_4_NEGATE_REACTIVE_POWER;
}

Measurement makeMeasurement(const Recording& recording, const MeasurementSettings& settings, RateMatters rateMatters) {
    ChosenPart chosen = choosePart(recording, settings);
    cutAndResample(chosen.measurement, chosen, rateMatters, recording.source);
    return std::move(chosen.measurement);
}

MeasurementPair makeMeasurementPair(const Recording& recording, const MeasurementSettings& settings) {
    ChosenPart chosen = choosePart(recording, settings);
    MeasurementPair pair{chosen.measurement, std::move(chosen.measurement)};
    cutAndResample(pair.resampled, chosen, RateMatters::yes, recording.source);
    cutAndResample(pair.asRecorded, chosen, RateMatters::no, recording.source);
    return pair;
}

}  // namespace rt305
