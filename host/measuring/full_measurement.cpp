#include "measuring/full_measurement.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <utility>

#include "base/failure.h"
#include "base/text.h"

namespace rt305 {

namespace {

using Samples = std::vector<double>;

void applyCoefficients(Measurement& measurement) {
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const double factor = std::exchange(measurement.settings.coefficients[channel], 1.0);
        if (factor != 1.0) {
            for (double& x : measurement.samples[channel]) {
                x *= factor;
            }
        }
    }
}

/// Phase voltages, without zero sequence, from the line voltages ab, bc and ca: Ua = (Uab - Uca) / 3 and so on.
void formPhaseVoltages(Measurement& measurement) {
    auto& [a, b, c, ia, ib, ic] = measurement.samples;
    for (std::size_t k = 0; k < a.size(); ++k) {
        const double ab = a[k] * (1.0 / 3.0);
        const double bc = b[k] * (1.0 / 3.0);
        const double ca = c[k] * (1.0 / 3.0);
        a[k] = ab - ca;
        b[k] = bc - ab;
        c[k] = ca - bc;
    }
    measurement.settings.flags |= RT305_4_FOUR_WIRE;
}

/// Samples of a measurement.
struct Range {
    std::size_t first;
    std::size_t count;
};

Range samplesIn(const Measurement& measurement, double startSeconds, double durationSeconds) {
    const auto length = static_cast<std::ptrdiff_t>(measurement.length);
    const auto first = static_cast<std::ptrdiff_t>(std::llround(startSeconds * measurement.rateHz));
    auto count = static_cast<std::ptrdiff_t>(std::llround(durationSeconds * measurement.rateHz));
    count -= first + count == length + 1 ? 1 : 0;  // start and length rounded up
    if (first < 0 || count < 1 || first + count > length) {
        failInput("a window of " + formatNumber(durationSeconds) + " s from " + formatNumber(startSeconds) +
                  " s exceeds the recording");
    }
    return {static_cast<std::size_t>(first), static_cast<std::size_t>(count)};
}

void cut(Measurement& measurement, double startSeconds, double durationSeconds) {
    const auto [first, count] = samplesIn(measurement, startSeconds, durationSeconds);
    measurement.length = count;
    measurement.settings.startSeconds += startSeconds;
    for (auto& samples : measurement.samples) {
        if (!samples.empty()) {
            keepPart(samples, first, count);
        }
    }
}

void cut(FullMeasurement& full, double startSeconds, double durationSeconds) {
    cut(full.measurement, startSeconds, durationSeconds);
    if (full.notResampled) {
        cut(*full.notResampled, startSeconds, durationSeconds);
    }
}

Measurement windowOf(const Measurement& measurement, double startSeconds, double durationSeconds) {
    const auto [first, count] = samplesIn(measurement, startSeconds, durationSeconds);
    Measurement part{.settings = measurement.settings,
                     .assignment = measurement.assignment,
                     .standIns = measurement.standIns,
                     .length = count,
                     .rateHz = measurement.rateHz,
                     .recordedRateHz = measurement.recordedRateHz,
                     .nominalHz = measurement.nominalHz,
                     .inputType = measurement.inputType,
                     .notes = measurement.notes,
                     .warnings = measurement.warnings};
    part.settings.startSeconds += startSeconds;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const Samples& samples = measurement.samples[channel];
        if (!samples.empty()) {
            const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(first);
            part.samples[channel].assign(begin, begin + static_cast<std::ptrdiff_t>(count));
        }
    }
    return part;
}

/// Keeps the longest whole number of cycles from the first sample on.
void cutToWholeCycles(FullMeasurement& full) {
    const Measurement& recorded = full.asRecorded();
    if (recorded.settings.allSamples || !(full.frequencyHz > 0.0)) {
        return;
    }
    constexpr double tolerance = 0.5;  // samples: a cycle need not end at one
    const double samplesPerCycle = recorded.rateHz / full.frequencyHz;
    const double cycles = std::floor((static_cast<double>(recorded.length) + tolerance) / samplesPerCycle);
    if (cycles >= 1.0) {
        const double seconds = std::min(cycles / full.frequencyHz, recorded.durationSeconds());
        const auto count = static_cast<std::ptrdiff_t>(samplesIn(recorded, 0.0, seconds).count);
        for (std::size_t channel = 0; channel < channelTotal; ++channel) {
            if (const Samples& samples = recorded.samples[channel]; !samples.empty()) {
                full.rest[channel].assign(samples.begin() + count, samples.end());
            }
        }
        cut(full, 0.0, seconds);
        full.cycles = static_cast<std::size_t>(cycles);
    }
}

/// The time of a sample, as --start counts it.
std::string secondsOf(std::size_t sample, const Measurement& recorded) {
    return formatFixed(recorded.settings.startSeconds + static_cast<double>(sample) / recorded.rateHz, 3);
}

/// "0.100-0.200 s"
std::string rangeOf(std::size_t first, std::size_t count, const Measurement& recorded) {
    return secondsOf(first, recorded) + "-" + secondsOf(first + count, recorded) + " s";
}

/// The change and the parts that are steady; empty for a steady signal.
std::string describeUnsteadiness(const GridState& state, const Measurement& recorded) {
    const std::string text = describeChange(state, recorded);
    if (text.empty()) {
        return {};
    }
    constexpr std::size_t mostListed = 4;
    std::vector<SteadyPart> longest = state.steadiness.parts;
    std::stable_sort(longest.begin(), longest.end(),
                     [](const SteadyPart& x, const SteadyPart& y) { return x.count > y.count; });
    longest.resize(std::min(longest.size(), mostListed));
    std::sort(longest.begin(), longest.end(),
              [](const SteadyPart& x, const SteadyPart& y) { return x.first < y.first; });
    std::vector<std::string> ranges;
    std::transform(longest.begin(), longest.end(), std::back_inserter(ranges),
                   [&](const SteadyPart& part) { return rangeOf(part.first, part.count, recorded); });
    return text + (ranges.empty() ? "; no part of it is steady"
                                  : "; steady are " + joined(ranges) +
                                        ": choose with --part pre-fault, fault or longest-steady, or with --start and "
                                        "--duration");
}

/// How much a part looks like a fault: large currents and small voltages, in units of those before it. The part before
/// has the number of currents less that of voltages.
double faultMeasure(const SteadyPart& part, const SteadyPart& before, const std::vector<std::size_t>& channels) {
    double sum = 0.0;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const double ratio = part.levels[i] / std::max(before.levels[i], std::numeric_limits<double>::min());
        sum += isCurrent(channels[i]) ? std::min(ratio, 100.0) : -ratio;
    }
    return sum;
}

/// A part and how much it looks like a fault.
struct Candidate {
    SteadyPart part;
    double measure;
};

/// The longest of those parts behind `before` that look most like a fault, within a fifth.
std::optional<Candidate> mostFaulty(const std::vector<SteadyPart>& parts, const SteadyPart& before,
                                    const std::vector<std::size_t>& channels) {
    const double usual = faultMeasure(before, before, channels);
    std::vector<Candidate> candidates;
    double most = 0.0;
    for (const SteadyPart& part : parts) {
        if (part.first > before.first) {
            candidates.push_back({part, faultMeasure(part, before, channels) - usual});
            most = std::max(most, candidates.back().measure);
        }
    }
    std::erase_if(candidates, [=](const Candidate& candidate) { return candidate.measure < 0.8 * most; });
    const auto longest =
        std::max_element(candidates.begin(), candidates.end(),
                         [](const Candidate& x, const Candidate& y) { return x.part.count < y.part.count; });
    return longest == candidates.end() ? std::nullopt : std::optional(*longest);
}

/// How the fundamentals of the cycles before a part differ from it.
enum class Before { same, dead, different };

/// Magnitudes within a tenth are the same. Channels are dead below a twentieth.
Before signalBefore(const SteadyPart& part, const GridState& state, const Measurement& recorded) {
    constexpr double sameShare = 0.1;
    constexpr double deadShare = 0.05;
    constexpr double leastShare = 0.2;  // of a channel's largest magnitude: below it changes count as at it
    bool isSame = true;
    bool isDead = true;
    for (std::size_t i = 0; i < state.channels.size(); ++i) {
        double largest = 0.0;
        for (const SteadyPart& any : state.steadiness.parts) {
            largest = std::max(largest, any.levels[i]);
        }
        const double reference = std::max(part.levels[i], leastShare * largest);
        const auto samples = std::span(recorded.samples[state.channels[i]]).first(part.first);
        const auto cycles = fundamentalTrace(samples, recorded.rateHz, state.frequencyHz);
        isSame = isSame && std::all_of(cycles.begin(), cycles.end(), [&](const Phasor& cycle) {
                     return std::fabs(std::abs(cycle) - part.levels[i]) <= sameShare * reference;
                 });
        isDead = isDead && (cycles.empty() || std::abs(cycles.front()) < deadShare * reference);
    }
    return isSame ? Before::same : isDead ? Before::dead : Before::different;
}

/// Also those that are too brief for a steady part.
std::vector<SteadyPart> briefParts(const GridState& state, const Measurement& recorded) {
    return state.steadiness.isSteady
               ? std::vector<SteadyPart>()
               : briefPartsOf(spansOf(recorded, state.channels), recorded.rateHz, state.frequencyHz);
}

/// The signal before the first change: the first steady part, unless that has another level than the cycles before it
/// and these begin with a brief part.
SteadyPart partBefore(const GridState& state, const Measurement& recorded) {
    const SteadyPart& first = state.steadiness.parts.front();
    if (signalBefore(first, state, recorded) == Before::different) {
        const auto brief = briefParts(state, recorded);
        if (!brief.empty() && brief.front().first == 0) {
            return brief.front();
        }
    }
    return first;
}

/// The part that looks most like a fault. A brief one counts when it does so clearly more than the steady ones.
SteadyPart faultPart(const GridState& state, const Measurement& recorded, const std::string& source) {
    constexpr double leastMeasure = 0.5;
    constexpr double clearly = 1.5;
    const SteadyPart before = partBefore(state, recorded);
    auto best = mostFaulty(state.steadiness.parts, before, state.channels);
    const auto brief = mostFaulty(briefParts(state, recorded), before, state.channels);
    if (brief && (!best || brief->measure > clearly * best->measure)) {
        best = brief;
    }
    if (!best || best->measure < leastMeasure) {
        failInput(source + ": no part has larger currents or smaller voltages than the first steady one, so there is " +
                  "no fault to tell from it");
    }
    return best->part;
}

/// The part that the user asks for: that before the first change, the longest, or the fault.
SteadyPart partFor(const GridState& state, const Measurement& recorded, const std::string& source) {
    const auto& parts = state.steadiness.parts;
    if (parts.empty()) {
        failInput(source + ": no part of the recording is steady for two and a half cycles");
    }
    switch (recorded.settings.part) {
        case Part::preFault:
            return partBefore(state, recorded);
        case Part::fault:
            return faultPart(state, recorded, source);
        default:
            return *std::max_element(parts.begin(), parts.end(),
                                     [](const SteadyPart& x, const SteadyPart& y) { return x.count < y.count; });
    }
}

/// Where the frequency of a state is from, when not from all samples.
std::string sourceOf(const GridState& state, const Measurement& recorded) {
    if (!state.source) {
        return "not measured, as there are no two steady cycles; the figures of the fundamental are those at " +
               formatNumber(state.frequencyHz, 5) + " Hz (--nominal gives another)";
    }
    const auto& [first, count, levels] = *state.source;
    return count == recorded.length ? "" : "that of the longest steady part, " + rangeOf(first, count, recorded);
}

void takeFrequency(FullMeasurement& full, const GridState& state) {
    full.frequencyHz = state.frequencyHz;
    full.isFrequencyMeasured = state.source.has_value();
    full.frequencySource = sourceOf(state, full.asRecorded());
}

std::string warningOfBriefPart(const SteadyPart& part, const Measurement& recorded, double cycles) {
    const bool isFault = recorded.settings.part == Part::fault;
    return (isFault ? "the fault is steady for " : "the signal before its first change is steady for ") +
           formatFixed(cycles, 1) + " cycles only, " + rangeOf(part.first, part.count, recorded) +
           ": too short for its frequency, THD and harmonics" +
           (isFault ? "; a decaying offset can be part of its RMS values and powers" : "");
}

std::string warningOfLatePart(const SteadyPart& part, const Measurement& recorded) {
    return "the signal changes before the first steady part, " + rangeOf(part.first, part.count, recorded) +
           ", and what comes before is too short to be measured: the figures can be those of a fault";
}

/// Cuts a part that the settings choose, with the frequency that it has. A fault of less than four cycles, and other
/// parts of less than two, are too short to measure that.
void takePart(FullMeasurement& full, const GridState& state, const SteadyPart& part) {
    const Measurement& recorded = full.asRecorded();
    const Part asked = recorded.settings.part;
    const double rate = recorded.rateHz;
    const double cycles = static_cast<double>(part.count) / rate * state.frequencyHz;
    std::string warning;
    if (!state.steadiness.isSteady && cycles < (asked == Part::fault ? 4.0 : 2.0)) {
        warning = warningOfBriefPart(part, recorded, cycles);
    } else {
        if (const double frequency = frequencyIn(part, state, recorded); frequency > 0.0) {
            full.frequencyHz = frequency;
            full.isFrequencyMeasured = true;
            full.frequencySource.clear();
        }
        if (asked == Part::preFault && signalBefore(part, state, recorded) == Before::different) {
            warning = warningOfLatePart(part, recorded);
        }
    }
    if (!warning.empty()) {
        full.measurement.warnings.emplace_back(warning, topic::ofVoltage | topic::ofCurrent);
    }
    cut(full, static_cast<double>(part.first) / rate, static_cast<double>(part.count) / rate);
}

/// Finds the fundamental, and cuts what the settings choose.
FullMeasurement chosenPart(FullMeasurement full, const Recording& recording) {
    const MeasurementSettings settings = full.asRecorded().settings;
    GridState state = gridStateOf(full.asRecorded(), full.measurement.nominalHz);
    if (settings.durationCycles > 0.0) {
        if (!(state.frequencyHz > 0.0)) {
            failInput(recording.source + ": a length in cycles was asked for, but there is no fundamental");
        }
        cut(full, 0.0, settings.durationCycles / state.frequencyHz);
        state = gridStateOf(full.asRecorded(), state.frequencyHz);
    }
    takeFrequency(full, state);
    if (settings.part == Part::all) {
        full.unsteadiness = describeUnsteadiness(state, full.asRecorded());
    } else {
        takePart(full, state, partFor(state, full.asRecorded(), recording.source));
    }
    return full;
}

/// Phase voltages and currents with coefficients applied. Whether the phase voltages are formed from line voltages.
bool makePhases(Measurement& measurement) {
    const bool fromLineVoltages = measurement.hasVoltages() && !measurement.has(RT305_4_FOUR_WIRE);
    applyCoefficients(measurement);
    if (fromLineVoltages) {
        formPhaseVoltages(measurement);
    }
    return fromLineVoltages;
}

}  // namespace

std::string FullMeasurement::obstacleToComponents() const {
    constexpr double wholeCycle = 0.95;
    if (!isSteady()) {
        return "the signal is not steady";
    }
    return cyclesThere() < wholeCycle ? "this is less than one cycle" : "";
}

void FullMeasurement::appendRest() {
    Measurement& recorded = notResampled ? *notResampled : measurement;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        Samples& samples = recorded.samples[channel];
        samples.insert(samples.end(), rest[channel].begin(), rest[channel].end());
        recorded.length = std::max(recorded.length, samples.size());
        rest[channel].clear();
    }
}

RecordedPhases recordedPhases(Recording& recording, const MeasurementSettings& settings) {
    RecordedPhases phases{makeMeasurement(recording, settings, RateMatters::no), false};
    phases.fromLineVoltages = makePhases(phases.measurement);
    return phases;
}

FullMeasurement prepare(Recording& recording, const MeasurementSettings& settings, WholeCycles wholeCycles) {
    MeasurementSettings toTheEnd = settings;
    toTheEnd.durationSeconds = settings.durationCycles > 0.0 ? 0.0 : settings.durationSeconds;
    MeasurementPair pair = makeMeasurementPair(recording, toTheEnd);
    FullMeasurement full{std::move(pair.measured), std::move(pair.asRecorded), false};
    full.fromLineVoltages = makePhases(full.measurement);
    if (full.notResampled) {
        makePhases(*full.notResampled);
    }
    full = chosenPart(std::move(full), recording);
    if (wholeCycles == WholeCycles::here) {
        cutToWholeCycles(full);
    }
    if (recording.segments.size() == 1) {
        keepPart(recording.seconds, 0, std::min<std::size_t>(recording.seconds.size(), 1));
        recording.seconds.shrink_to_fit();
    }
    return full;
}

FullMeasurement windowOf(const FullMeasurement& full, double startSeconds, double durationSeconds) {
    FullMeasurement window{windowOf(full.measurement, startSeconds, durationSeconds),
                           std::nullopt,
                           full.fromLineVoltages,
                           full.frequencyHz,
                           full.isFrequencyMeasured,
                           full.frequencySource};
    if (full.notResampled) {
        window.notResampled = windowOf(*full.notResampled, startSeconds, durationSeconds);
    }
    if (!full.isSteady()) {
        const GridState state = gridStateOf(window.asRecorded(), full.frequencyHz);
        takeFrequency(window, state);
        window.unsteadiness = describeUnsteadiness(state, window.asRecorded());
    }
    cutToWholeCycles(window);
    return window;
}

std::string describeChange(const GridState& state, const Measurement& measurement) {
    const LargestChange& change = state.steadiness.change;
    if (state.steadiness.isSteady || state.channels.empty()) {
        return {};
    }
    std::string text = "the signal is not steady: the fundamental of " +
                       std::string(measurement.nameOf(state.channels[change.channel])) + " changes by " +
                       formatFixed(change.percent, 0) + " % in magnitude";
    if (std::fabs(change.degrees) >= 1.0) {
        text += " and " + formatFixed(change.degrees, 0) + " degrees in angle";
    }
    return text + " at about " + secondsOf(change.sample, measurement) + " s";
}

std::vector<double> lineVoltage(const Measurement& measurement, std::size_t phase) {
    const auto& from = measurement.samples[phase];
    const auto& to = measurement.samples[(phase + 1) % phaseTotal];
    std::vector<double> line(from.size());
    std::transform(from.begin(), from.end(), to.begin(), line.begin(), std::minus<>());
    return line;
}

}  // namespace rt305
