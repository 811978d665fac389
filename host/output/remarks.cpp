#include "output/remarks.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "measuring/power_methods.h"
#include "measuring/thd_gate.h"

namespace rt305 {

namespace {

/// The words for a set of channels.
struct ThdWording {
    const char* quantities;  // that are given or missing together
    const char* allChannels;
};
constexpr ThdWording voltageWording{"THD and frequency", "the voltages"};
constexpr ThdWording currentWording{"THD", "the currents"};

/// What to say about the powers of a method with voltages that it is not meant for, and in any case.
struct PowerRemarks {
    std::uint32_t flag;
    const char* withOtherVoltages;
    const char* always;
};

constexpr const char* threeWattmetersWithLineVoltages =
    "Three wattmeters multiply the voltage and the current of a phase; with line voltages (--wiring three) their "
    "powers are not those of the load.";

constexpr PowerRemarks powerRemarks[] = {
    {RT305_4_POWER_THREE_WATTMETER, threeWattmetersWithLineVoltages,
     "Reactive power by --power three-wattmeter is all power that is not active, sqrt(S^2 - P^2) per phase, without a "
     "sign."},
    {RT305_4_POWER_THREE_WATTMETER_COMPLEX, threeWattmetersWithLineVoltages, ""},
    {RT305_4_POWER_TWO_WATTMETER,
     "--power two-wattmeter takes Ua and Ub as line voltages: with phase voltages its powers are not those of the "
     "load.",
     ""},
    {RT305_4_POWER_TWO_WATTMETER_PHASE,
     "--power two-wattmeter-phase computes the line voltages itself: with line voltages (--wiring three) its powers "
     "are not those of the load.",
     "--power two-wattmeter-phase gives magnitudes: P is right up to 60 degrees between voltage and current, Q from "
     "30 degrees on."},
};

bool isMissing(const Parameters& parameters, std::string_view name) {
    return std::isnan(parameterNamed(parameters, name).value);
}

std::string sentenceOf(const ThdObstacle& obstacle, const Measurement& measurement) {
    const FrequencyWindow window = measurement.window();
    const std::string name(measurement.nameOf(obstacle.channel));
    const auto isAt = [&obstacle](double limit) { return std::fabs(obstacle.frequencyHz - limit) < 0.001 * limit; };
    const std::string outside = formatFixed(obstacle.frequencyHz, 2) + " Hz, lies " +
                                (isAt(window.lower) || isAt(window.upper) ? "at a limit of " : "outside ") +
                                window.text();
    switch (obstacle.kind) {
        case ThdObstacle::Kind::missingSamples:
            return name + " has samples that are not numbers";
        case ThdObstacle::Kind::dead:
            return name + " is dead (0 " + (isCurrent(obstacle.channel) ? "A" : "V") + ")";
        case ThdObstacle::Kind::noFundamental:
            return "there is no steady fundamental in " + name;
        case ThdObstacle::Kind::meanOutsideWindow:
            return "the fundamental on average, " + outside;
        case ThdObstacle::Kind::outsideWindow:
            break;
    }
    return "the fundamental of " + name + ", " + outside +
           (obstacle.decidesOnOther ? ", and the library judges b by c and c by b" : "");
}

std::string reasonOf(const MissingThd& missing, const Measurement& measurement) {
    if (missing.obstacles.empty()) {
        return "the library finds another fundamental; the record may be too short, too distorted or not steady";
    }
    std::vector<std::string> sentences;
    for (const ThdObstacle& obstacle : missing.obstacles) {
        sentences.push_back(sentenceOf(obstacle, measurement));
    }
    return joined(sentences);
}

std::string hintOn(const MissingThd& missing) {
    if (missing.controlWindowAccepts) {
        return "; try --frequency control";
    }
    return missing.betterNominalHz > 0.0 ? "; try --nominal " + formatNumber(missing.betterNominalHz, 4) : "";
}

/// Adds a remark when THD of the set is missing and the reason is not in `doubts`, and returns the reason.
std::string explainThd(const ThdSet& set, const Parameters& parameters, const Measurement& measurement,
                       const DistortionDoubts& doubts, std::vector<Remark>& remarks) {
    const MissingThd missing = missingThd(set, parameters, measurement);
    if (missing.phases.empty()) {
        return "";
    }
    const auto doubtOn = [&](std::size_t phase) { return doubts[set.firstChannel + phase]; };
    if (std::none_of(missing.phases.begin(), missing.phases.end(),
                     [&](std::size_t phase) { return doubtOn(phase).empty(); })) {
        return doubtOn(missing.phases[0]);
    }
    std::vector<std::string> names;
    for (const std::size_t phase : missing.phases) {
        names.emplace_back(measurement.nameOf(set.firstChannel + phase));
    }
    const auto& [quantities, allChannels] = isCurrent(set.firstChannel) ? currentWording : voltageWording;
    std::string reason = reasonOf(missing, measurement);
    remarks.emplace_back(std::string(quantities) + " of " + (names.size() == phaseTotal ? allChannels : joined(names)) +
                             " not given: " + reason + hintOn(missing) + ".",
                         isCurrent(set.firstChannel) ? topic::currentThd : topic::voltageThd);
    return reason;
}

void explainPower(const Parameters& parameters, const Measurement& measurement, std::uint32_t powerFlag,
                  const std::string& thdReason, std::vector<Remark>& remarks) {
    const auto hasFlag = [&](const auto& known) { return known.flag == powerFlag; };
    const auto* const method = std::find_if(std::begin(powerMethods), std::end(powerMethods), hasFlag);
    if (method == std::end(powerMethods)) {
        remarks.emplace_back("No power: --power was not given.", topic::library);
        return;
    }
    if (!measurement.isThreePhase() && !method->givesPhases) {
        remarks.emplace_back("No power: two wattmeters need three phases; use a three-wattmeter method.",
                             topic::library);
        return;
    }
    if (!thdReason.empty()) {
        remarks.emplace_back("No power: it needs THD of all channels, but " + thdReason + ".", topic::library);
        return;
    }
    if (isMissing(parameters, "Pa")) {
        remarks.emplace_back("No power per phase: only the three-wattmeter methods give it.", topic::library);
    }
    if (isMissing(parameters, "Q")) {
        remarks.emplace_back("No total reactive power: in some phase the active power exceeds U x I.", topic::library);
    }
    const PowerRemarks& onMethod = *std::find_if(std::begin(powerRemarks), std::end(powerRemarks), hasFlag);
    if (method->requiresPhaseVoltages != measurement.has(RT305_4_FOUR_WIRE)) {
        remarks.emplace_back(onMethod.withOtherVoltages, topic::library);
    }
    if (*onMethod.always != '\0') {
        remarks.emplace_back(onMethod.always, topic::library);
    }
}

}  // namespace

std::string remarkOnLength(const Measurement& measurement, double cycles) {
    return isTooShortForThd(cycles)
               ? "THD and harmonics read too high in records of less than " + formatNumber(cyclesForThd) + " cycles (" +
                     formatNumber(cyclesForThd / measurement.nominalHz, 3) + " s at " +
                     formatNumber(measurement.nominalHz, 4) + " Hz); this one has " + formatFixed(cycles, 1) +
                     ", of which a pure sine reads up to " + formatNumber(thdOfPureSine(cycles), 3) + " %."
               : "";
}

std::string remarkOnTexts(const Measurement& measurement, bool areSpectra) {
    std::vector<std::string> differences;
    if (const double scale = measurement.frequencyScale(); scale != 1.0) {
        differences.push_back("frequencies are " + formatNumber(1.0 / scale, 9) + " times what they are");
    }
    if (areSpectra && (measurement.settings.spectrumFlags & RT305_4_SPECTRUM_WINDOW_MASK) != 0) {
        differences.emplace_back("amplitudes are not corrected for the gain of the window");
    }
    if (areSpectra) {
        differences.emplace_back("peaks can be side lobes");
    }
    if (!measurement.isCombined() || !measurement.isThreePhase()) {
        differences.emplace_back("channels that are not measured are copies of others");
    }
    return differences.empty() ? "" : "the texts are the library's own: " + joined(differences);
}

std::vector<Remark> remarksOnDoubts(const DistortionDoubts& doubts, const Measurement& measurement) {
    std::vector<std::pair<std::string, std::vector<std::string>>> byReason;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (doubts[channel].empty()) {
            continue;
        }
        auto known = std::find_if(byReason.begin(), byReason.end(),
                                  [&](const auto& entry) { return entry.first == doubts[channel]; });
        if (known == byReason.end()) {
            known = byReason.insert(byReason.end(), {doubts[channel], {}});
        }
        known->second.emplace_back(measurement.nameOf(channel));
    }
    std::vector<Remark> remarks;
    std::transform(byReason.begin(), byReason.end(), std::back_inserter(remarks), [](const auto& entry) {
        return Remark("THD, harmonics and frequency by the library not shown for " + joined(entry.second) + ": " +
                          entry.first + ".",
                      topic::library);
    });
    return remarks;
}

std::vector<Remark> remarksOnDistortion(const Parameters& parameters, const Measurement& measurement,
                                        const DistortionDoubts& doubts) {
    std::vector<Remark> remarks;
    for (const ThdSet& set : thdSets) {
        explainThd(set, parameters, measurement, doubts, remarks);
    }
    return remarks;
}

std::vector<Remark> remarksOn(const Parameters& parameters, const Measurement& measurement, double cycles,
                              std::uint32_t powerFlag, const DistortionDoubts& doubts) {
    std::vector<Remark> remarks;
    std::string thdReason;
    for (const ThdSet& set : thdSets) {
        const std::string reason = explainThd(set, parameters, measurement, doubts, remarks);
        thdReason = thdReason.empty() ? reason : thdReason;
    }
    if (const std::string remark = remarkOnLength(measurement, cycles); !remark.empty()) {
        remarks.emplace_back(remark, topic::thd);
    }
    if (measurement.isCombined()) {
        explainPower(parameters, measurement, powerFlag, thdReason, remarks);
    } else if (powerFlag != RT305_4_POWER_NONE) {
        remarks.emplace_back("No power: it needs voltages and currents.");
    }
    return remarks;
}

}  // namespace rt305
