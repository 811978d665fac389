#include "measuring/channel_choice.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "base/failure.h"
#include "base/text.h"
#include "measuring/nominal_frequency.h"
#include "signal/harmonic_fit.h"

namespace rt305 {

namespace {

/// The first channel of a kind.
constexpr std::size_t voltages = 0;
constexpr std::size_t currents = phaseTotal;

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

std::vector<std::string> namesOf(const Measurement& measurement, std::size_t kind, bool present) {
    return namesWhere(measurement, present, kind, kind + phaseTotal);
}

/// Forms the samples of a channel of a kind, whose sum is zero, from the other two, if they have samples.
void formThird(Measurement& measurement, std::size_t phase, std::size_t kind) {
    auto& samples = measurement.samples;
    const auto& x = samples[kind + (phase + 1) % phaseTotal];
    const auto& y = samples[kind + (phase + 2) % phaseTotal];
    auto& formed = samples[kind + phase];
    if (formed.empty() && !x.empty() && !y.empty()) {
        formed.resize(measurement.length);
        std::transform(x.begin(), x.end(), y.begin(), formed.begin(), [](double p, double q) { return -(p + q); });
    }
}

/// Exchanges two channels with all that belongs to them.
void exchange(Measurement& measurement, std::size_t one, std::size_t other) {
    MeasurementSettings& settings = measurement.settings;
    std::swap(measurement.samples[one], measurement.samples[other]);
    std::swap(measurement.assignment.columns[one], measurement.assignment.columns[other]);
    std::swap(measurement.assignment.reasons[one], measurement.assignment.reasons[other]);
    for (PerChannel<double>* const each : {&settings.coefficients, &settings.gains, &settings.resistances}) {
        std::swap((*each)[one], (*each)[other]);
    }
}

/// Two voltages of similar magnitude, 60 degrees apart, can only be line voltages with the third phase in common: Ua
/// and Uc are then ab and cb.
void recogniseLineVoltages(Measurement& measurement) {
    constexpr double largestRatio = 1.25;
    constexpr double tolerance = 10.0;  // degrees
    auto& samples = measurement.samples;
    const auto names = namesOf(measurement, voltages, true);
    if (names.size() != 2 || measurement.assignment.areLineVoltages || measurement.settings.wiringIsGiven) {
        return;
    }
    const std::size_t common = *findChannel(namesOf(measurement, voltages, false).at(0));
    const std::size_t before = (common + 2) % phaseTotal;  // its voltage against `common` is a line voltage as it is
    const std::size_t after = (common + 1) % phaseTotal;
    const double frequency = commonFundamental(spansOf(samples), measurement.rateHz);
    const auto x = phasorAt(samples[before], measurement.rateHz, frequency);
    const auto y = phasorAt(samples[after], measurement.rateHz, frequency);
    const double ratio = std::abs(y) / std::abs(x);
    if (!(frequency > 0.0 && ratio < largestRatio && ratio > 1.0 / largestRatio &&
          std::fabs(std::fabs(lagDegrees(x, y)) - 60.0) < tolerance)) {
        return;
    }
    exchange(measurement, after, common);
    std::transform(samples[common].begin(), samples[common].end(), samples[common].begin(), std::negate<>());
    measurement.assignment.areLineVoltages = true;
    const std::string phases = "abc";
    const auto [first, second] = std::minmax(before, after);
    measurement.notes.push_back(joined(names) + " are 60 degrees apart, so they are line voltages, " + phases[first] +
                                phases[common] + " and " + phases[second] + phases[common]);
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

void rebuildMissingCurrent(Measurement& measurement) {
    const std::uint32_t place = (measurement.settings.flags & RT305_4_REBUILT_PHASE_MASK) / RT305_4_REBUILT_PHASE_A;
    if (measurement.has(RT305_4_TWO_CURRENTS) && place > 0) {
        formThird(measurement, place - 1, currents);
        return;
    }
    const auto missing = namesOf(measurement, currents, false);
    if (missing.size() == 1 && namesOf(measurement, voltages, true).size() == phaseTotal) {
        const auto others = namesOf(measurement, currents, true);
        formThird(measurement, *findChannel(missing[0]) - currents, currents);
        measurement.warnings.emplace_back(missing[0] + " is not recorded and computed as -(" + others[0] + " + " +
                                              others[1] + "): wrong if a neutral wire carries current",
                                          topic::ofCurrent);
    }
}

void empty(Measurement& measurement, std::size_t kind) {
    for (std::size_t channel = kind; channel < kind + phaseTotal; ++channel) {
        measurement.samples[channel] = {};
    }
}

/// Makes the only channel of a kind that of phase a.
void moveToPhaseA(Measurement& measurement, std::size_t kind) {
    for (std::size_t channel = kind + 1; channel < kind + phaseTotal; ++channel) {
        if (!measurement.samples[channel].empty()) {
            exchange(measurement, channel, kind);
            measurement.notes.push_back(std::string(channelNames[channel]) + " is shown as " +
                                        std::string(channelNames[kind]) + ", the only phase");
            return;
        }
    }
}

bool isSinglePhase(const Measurement& measurement) {
    return namesOf(measurement, voltages, true).size() <= 1 && namesOf(measurement, currents, true).size() <= 1;
}

/// One phase has neither line voltages nor currents to rebuild.
void measureAsPhaseA(Measurement& measurement) {
    moveToPhaseA(measurement, voltages);
    moveToPhaseA(measurement, currents);
    measurement.settings.flags |= RT305_4_FOUR_WIRE;
    measurement.settings.flags &= ~(RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_MASK);
}

/// Empties a kind that is incomplete beside one that is complete.
void measureCompleteKinds(Measurement& measurement, const std::string& source) {
    const auto missingVoltages = namesOf(measurement, voltages, false);
    const auto missingCurrents = namesOf(measurement, currents, false);
    if (!missingVoltages.empty() && !missingCurrents.empty()) {
        failInput(source + ": neither three voltages nor three currents, nor a single phase: there is no column for " +
                  joined(namesWhere(measurement, false, 0, channelTotal)) +
                  "; name the columns with --map Ua=COLUMN,...");
    }
    if (missingVoltages.empty() && missingCurrents.empty()) {
        return;
    }
    const std::size_t incomplete = missingVoltages.empty() ? currents : voltages;
    if (const auto unused = namesOf(measurement, incomplete, true); !unused.empty()) {
        measurement.warnings.emplace_back(joined(unused) + " not used: there is no column for " +
                                          joined(namesOf(measurement, incomplete, false)));
    }
    empty(measurement, incomplete);
}

std::uint32_t typeOf(const Measurement& measurement) {
    return !measurement.hasCurrents()   ? RT305_4_INPUT_VOLTAGES
           : !measurement.hasVoltages() ? RT305_4_INPUT_CURRENTS
                                        : RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
}

bool asksFor(const std::optional<std::uint32_t>& wanted, std::size_t kind) {
    return wanted && *wanted != (kind == voltages ? RT305_4_INPUT_CURRENTS : RT305_4_INPUT_VOLTAGES);
}

/// Fails when a kind of channels is not there, or no kind when the settings ask for none.
void requireKinds(const Measurement& measurement, const std::string& source) {
    std::vector<std::string> missing;
    for (const std::size_t kind : {voltages, currents}) {
        const auto names = namesOf(measurement, kind, false);
        if (asksFor(measurement.settings.inputType, kind) && names.size() == phaseTotal) {
            missing.insert(missing.end(), names.begin(), names.end());
        }
    }
    if (missing.empty() && namesWhere(measurement, true, 0, channelTotal).empty()) {
        missing = namesWhere(measurement, false, 0, channelTotal);
    }
    if (!missing.empty()) {
        failInput(source + ": there is no column for " + joined(missing) +
                  "; name the columns with --map Ua=COLUMN,...");
    }
}

void chooseStandIns(Measurement& measurement) {
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const std::size_t ofOtherKind = (channel + phaseTotal) % channelTotal;
        const std::size_t phaseA = isCurrent(channel) ? currents : voltages;
        for (const std::size_t candidate : {channel, phaseA, ofOtherKind, currents - phaseA}) {
            if (!measurement.samples[candidate].empty()) {
                measurement.standIns[channel] = candidate;
                break;
            }
        }
    }
}

}  // namespace

void chooseChannels(Measurement& measurement, const Recording& recording) {
    const std::string& source = recording.source;
    recogniseLineVoltages(measurement);
    useLineVoltages(recording, measurement);
    for (const std::size_t kind : {voltages, currents}) {
        if (measurement.settings.inputType && !asksFor(measurement.settings.inputType, kind)) {
            empty(measurement, kind);
        }
    }
    requireKinds(measurement, source);
    rebuildMissingCurrent(measurement);
    if (isSinglePhase(measurement)) {
        measureAsPhaseA(measurement);
    } else {
        measureCompleteKinds(measurement, source);
        requireKinds(measurement, source);
    }
    measurement.inputType = typeOf(measurement);
    if (measurement.settings.fillIn) {
        measurement.inputType = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
        chooseStandIns(measurement);
    }
}

}  // namespace rt305
