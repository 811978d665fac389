#include "measuring/measurement.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <span>

#include "base/failure.h"
#include "base/text.h"
#include "measuring/channel_choice.h"
#include "measuring/nominal_frequency.h"
#include "signal/fractional_delay.h"
#include "signal/gap_filling.h"
#include "signal/resampler.h"

namespace rt305 {

namespace {

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
                                    " is measured, " + counted(segments[number].count, "sample") + " at " +
                                    formatNumber(segments[number].rateHz) + " Hz; --segment chooses another");
    }
    return segments[number];
}

/// The longest gap that is interpolated: a tenth of a cycle at 50 Hz, but no more than 8 samples.
std::size_t longestFilledGap(double rateHz) {
    constexpr double seconds = 0.002;
    constexpr double mostSamples = 8.0;
    return static_cast<std::size_t>(std::min(mostSamples, rateHz * seconds + 1e-6));
}

/// Shifts the samples of channels that a recorder sampled one after the other to the times of the earliest.
void alignChannels(const PerChannel<double>& delays, const Segment& segment, Measurement& measurement) {
    const auto& samples = measurement.samples;
    double earliest = std::numeric_limits<double>::infinity();
    double latest = -earliest;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (!samples[channel].empty()) {
            earliest = std::min(earliest, delays[channel]);
            latest = std::max(latest, delays[channel]);
        }
    }
    constexpr double degreesPerSecond = 360.0 * 50.0;
    const double degrees = (latest - earliest) * degreesPerSecond;
    if (!(degrees > 0.0)) {
        return;
    }
    const std::string apart =
        "the recorder sampled these channels up to " + formatNumber(1e6 * (latest - earliest)) + " us apart, which is ";
    if (!measurement.settings.deskew) {
        measurement.warnings.emplace_back(apart + "not corrected: angles between them are off by up to " +
                                              formatFixed(degrees, 1) + " degrees at 50 Hz",
                                          topic::angles);
        return;
    }
    measurement.notes.push_back(apart + "corrected: up to " + formatFixed(degrees, 1) +
                                " degrees at 50 Hz; --no-deskew leaves it");
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (!samples[channel].empty() && delays[channel] > earliest) {
            measurement.samples[channel] = delayed(samples[channel], (delays[channel] - earliest) * segment.rateHz);
        }
    }
}

/// The assigned columns' samples of the segment, in V and A, without short gaps and at common times. The recording
/// keeps no samples: long ones need the memory.
void takeChannels(Recording& recording, const Segment& segment, Measurement& measurement) {
    const Assignment& assignment = measurement.assignment = assignColumns(recording, measurement.settings.columns);
    measurement.warnings.insert(measurement.warnings.end(), assignment.warnings.begin(), assignment.warnings.end());
    PerChannel<double> delays{};
    std::vector<std::string> filled;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const auto number = assignment.columns[channel];
        if (!number) {
            continue;
        }
        Column& column = recording.columns[*number];
        auto& taken = measurement.samples[channel];
        const bool isLast = std::find(assignment.columns.begin() + static_cast<std::ptrdiff_t>(channel) + 1,
                                      assignment.columns.end(), number) == assignment.columns.end();
        taken = isLast ? std::move(column.samples) : column.samples;
        keepPart(taken, segment.first, segment.count);
        convertToBaseUnit(taken, column.unit);
        if (assignment.isReversed[channel]) {
            std::transform(taken.begin(), taken.end(), taken.begin(), std::negate<>());
        }
        if (const std::size_t count = fillGaps(taken, longestFilledGap(segment.rateHz)); count > 0) {
            filled.push_back(std::to_string(count) + " of " + std::string(assignment.nameOf(channel)));
        }
        delays[channel] = column.delaySeconds;
    }
    if (!filled.empty()) {
        measurement.warnings.emplace_back("missing samples in short gaps are interpolated: " + joined(filled),
                                          topic::ofVoltage | topic::ofCurrent);
    }
    alignChannels(delays, segment, measurement);
    for (Column& column : recording.columns) {
        column.samples = {};
    }
}

/// "50 Hz", "16.67 Hz".
std::string textOfNominal(double nominalHz) {
    return formatNumber(nominalHz, 4) + " Hz";
}

std::string describeResampling(const Measurement& measurement) {
    std::string text = "resampled from " + formatNumber(measurement.recordedRateHz, 9) + " Hz to " +
                       formatNumber(measurement.rateHz) + " Hz, as the library needs 200 samples a cycle of " +
                       textOfNominal(measurement.nominalHz);
    if (measurement.recordedRateHz < measurement.rateHz) {
        text +=
            "; the recording contains no harmonics above " + formatNumber(std::floor(measurement.highestHz())) + " Hz";
    }
    return text;
}

/// A part of a segment, and the measurement with the samples of the whole segment, which the resampler needs around it.
struct ChosenPart {
    Measurement measurement;
    std::size_t first = 0;
    std::size_t count = 0;
};

/// The samples of the part.
ChannelSpans samplesOf(const ChosenPart& chosen) {
    ChannelSpans part;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (const auto& samples = chosen.measurement.samples[channel]; !samples.empty()) {
            part[channel] = std::span(samples).subspan(chosen.first, chosen.count);
        }
    }
    return part;
}

/// The fundamental of the part, in Hz; of the whole segment where the part has less than ten cycles of that. 0 for
/// none.
double fundamentalOf(const ChosenPart& chosen) {
    constexpr double enoughCycles = 10.0;
    constexpr double lowestHz = 50.0 / 3.0;  // of a standard grid
    const Measurement& measurement = chosen.measurement;
    const double ofPart = commonFundamental(samplesOf(chosen), measurement.recordedRateHz);
    const double seconds = static_cast<double>(chosen.count) / measurement.recordedRateHz;
    if (chosen.count == measurement.length || seconds * lowestHz >= enoughCycles) {
        return ofPart;
    }
    const double ofSegment = commonFundamental(spansOf(measurement.samples), measurement.recordedRateHz);
    return ofSegment > 0.0 && seconds * ofSegment < enoughCycles ? ofSegment : ofPart;
}

/// The library gives no value of a channel with a missing sample.
void warnOfGaps(ChosenPart& chosen) {
    Measurement& measurement = chosen.measurement;
    const ChannelSpans part = samplesOf(chosen);
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const std::size_t missing = countMissing(part[channel]);
        if (missing == 0) {
            continue;
        }
        const auto first =
            std::find_if(part[channel].begin(), part[channel].end(), [](double x) { return std::isnan(x); });
        const auto sample = chosen.first + static_cast<std::size_t>(first - part[channel].begin());
        const std::string name(channelNames[channel]);
        std::string warning = counted(missing, "sample") + " of " + name;
        warning.append(missing == 1 ? " is" : " are").append(" missing, the first at ");
        warning.append(formatNumber(static_cast<double>(sample) / measurement.recordedRateHz));
        warning.append(" s, in gaps too long to interpolate: values with ").append(name);
        warning.append(" are not given; --start and --duration choose a part without gaps");
        measurement.warnings.emplace_back(std::move(warning), isCurrent(channel) ? topic::ofCurrent : topic::ofVoltage);
    }
}

/// The user's nominal frequency, else the file's, else one by the fundamental, the latter if a grid can have them;
/// otherwise 50 Hz.
double chooseNominal(const ChosenPart& chosen, const Recording& recording) {
    constexpr FrequencyWindow ofGrids{5.0, 1000.0};
    if (chosen.measurement.settings.nominalHz > 0.0) {
        return chosen.measurement.settings.nominalHz;
    }
    if (ofGrids.contains(recording.nominalHz)) {
        return recording.nominalHz;
    }
    const double measured = nominalFrequencyFor(fundamentalOf(chosen));
    return ofGrids.contains(measured) ? measured : libraryNominalHz;
}

/// Fundamentals so close to an end of the fixed window, relative to it, are measured with the wide one.
constexpr double windowMargin = 0.0005;

/// Takes the wide window when a fundamental is inside it, and not safely inside the narrow one.
void chooseWindow(Measurement& measurement) {
    const FrequencyWindow narrow = fixedWindow.scaled(measurement.frequencyScale());
    const FrequencyWindow wide = controlWindow.scaled(measurement.frequencyScale());
    for (const double fundamental : fundamentalsOf(spansOf(measurement.samples), measurement.rateHz)) {
        const bool isSafe =
            narrow.contains(fundamental * (1.0 - windowMargin)) && narrow.contains(fundamental * (1.0 + windowMargin));
        if (!isSafe && wide.contains(fundamental)) {
            measurement.settings.flags |= RT305_4_FREQUENCY_CONTROL;
        }
    }
}

ChosenPart choosePart(Recording& recording, const MeasurementSettings& settings) {
    ChosenPart chosen{.measurement = {.settings = settings}};
    Measurement& measurement = chosen.measurement;
    const Segment segment = chosenSegment(recording, measurement);
    const Segment part = partOf(recording, segment, settings.startSeconds, settings.durationSeconds);
    chosen.first = part.first - segment.first;
    chosen.count = part.count;
    measurement.length = segment.count;
    measurement.rateHz = measurement.recordedRateHz = part.rateHz;
    takeChannels(recording, segment, measurement);
    chooseChannels(measurement, recording);
    measurement.nominalHz = chooseNominal(chosen, recording);
    return chosen;
}

/// Refuses samples that have no fundamental to measure, or of which resampling would make too many.
void requireResamplable(const Measurement& measurement, const ChosenPart& chosen, const std::string& source) {
    constexpr double fewestPerCycle = 2.5;
    constexpr double largestStretch = 20.0;
    constexpr double mostStretchedFurther = 4e6;  // samples of all channels together
    const double nominal = measurement.nominalHz;
    const double rate = measurement.recordedRateHz;
    const double seconds = static_cast<double>(chosen.count) / rate;
    if (rate < fewestPerCycle * nominal) {
        failInput(source + ": a sample rate of " + formatNumber(rate) + " Hz is too low to measure a grid of " +
                  textOfNominal(nominal) + ", which needs " + formatNumber(fewestPerCycle * nominal) +
                  " Hz; rt305 signals shows the statistics");
    }
    if (seconds * nominal < 1.0) {
        failInput(source + ": " + formatNumber(seconds) + " s are too short to be measured; at least " +
                  formatNumber(1.0 / nominal, 3) + " s, a cycle at " + textOfNominal(nominal) + ", are needed");
    }
    const auto channels = static_cast<double>(std::count_if(measurement.samples.begin(), measurement.samples.end(),
                                                            [](const auto& x) { return !x.empty(); }));
    const double most = mostStretchedFurther / (channels * measurement.wantedRateHz());  // seconds
    if (measurement.wantedRateHz() > largestStretch * rate && seconds > most) {
        failInput(source + ": " + formatNumber(seconds) + " s at " + formatNumber(rate) +
                  " Hz are too long to be measured at once, as each sample becomes " +
                  formatNumber(std::floor(measurement.wantedRateHz() / rate)) + "; choose " +
                  formatNumber(std::floor(most)) + " s or less with --start and --duration");
    }
}

/// Keeps the chosen part of the segment's samples only.
void cut(Measurement& measurement, const ChosenPart& chosen) {
    for (auto& samples : measurement.samples) {
        if (!samples.empty()) {
            keepPart(samples, chosen.first, chosen.count);
            measurement.length = samples.size();
        }
    }
}

bool isToBeResampled(const Measurement& measurement) {
    return measurement.settings.resample && !measurement.isAtWantedRate();
}

/// Keeps the chosen part of the segment's samples only, at the rate that the library needs.
void cutAndResample(Measurement& measurement, const ChosenPart& chosen, const std::string& source) {
    if (isToBeResampled(measurement)) {
        requireResamplable(measurement, chosen, source);
        measurement.rateHz = measurement.wantedRateHz();
        measurement.notes.push_back(describeResampling(measurement));
        for (auto& samples : measurement.samples) {
            if (!samples.empty()) {
                samples =
                    resampled(samples, chosen.first, chosen.count, measurement.recordedRateHz, measurement.rateHz);
                measurement.length = samples.size();
            }
        }
    } else {
        cut(measurement, chosen);
    }
    if (measurement.settings.chooseWindow) {
        chooseWindow(measurement);
    }
}

}  // namespace

std::string FrequencyWindow::text() const {
    return formatNumber(lower, 4) + "-" + formatNumber(upper, 4) + " Hz";
}

bool Measurement::isAtWantedRate() const {
    return std::fabs(rateHz - wantedRateHz()) <= 1e-4 * wantedRateHz();
}

double Measurement::highestHz() const {
    const double lower = std::min(recordedRateHz, rateHz);
    return lower / 2.0 * (rateHz == recordedRateHz ? 1.0 : resampledBandwidth);
}

double Measurement::frequencyScale() const {
    const double nominalScale = nominalHz / libraryNominalHz;
    return std::fabs(rateHz - wantedRateHz()) <= 1e-7 * wantedRateHz() ? nominalScale : rateHz / libraryRateHz;
}

FrequencyWindow Measurement::window() const {
    return (has(RT305_4_FREQUENCY_CONTROL) ? controlWindow : fixedWindow).scaled(frequencyScale());
}

void invertForTwoWattmeters(MeasurementSettings& settings) {
    settings.coefficients[1] = -settings.coefficients[1];
    settings.flags ^= RT305_4_NEGATE_REACTIVE_POWER;
}

Measurement makeMeasurement(Recording& recording, const MeasurementSettings& settings, RateMatters rateMatters) {
    if (settings.durationCycles > 0.0) {
        failUsage("rt305 measure and rt305 report take a --duration in cycles; give it in seconds here");
    }
    ChosenPart chosen = choosePart(recording, settings);
    warnOfGaps(chosen);
    Measurement measurement = std::move(chosen.measurement);
    if (rateMatters == RateMatters::yes) {
        cutAndResample(measurement, chosen, recording.source);
    } else {
        cut(measurement, chosen);
    }
    return measurement;
}

MeasurementPair makeMeasurementPair(Recording& recording, const MeasurementSettings& settings) {
    ChosenPart chosen = choosePart(recording, settings);
    warnOfGaps(chosen);
    MeasurementPair pair{std::move(chosen.measurement), std::nullopt};
    if (isToBeResampled(pair.measured)) {
        pair.asRecorded = pair.measured;
        cut(*pair.asRecorded, chosen);
    }
    cutAndResample(pair.measured, chosen, recording.source);
    return pair;
}

}  // namespace rt305
