#include "output/remarks.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "base/text.h"
#include "signal/fundamental.h"

namespace rt305 {

namespace {

/// From this length on a pure sine shows no THD of its own.
constexpr double cyclesForThd = 12.5;

bool isMissing(const std::vector<NamedValue>& parameters, std::string_view name) {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [name](const NamedValue& parameter) { return parameter.name == name; });
    return found == parameters.end() || std::isnan(found->value);
}

/// A channel set whose THD the library admits together, and then each by a channel's fundamental.
struct ThdSet {
    std::size_t firstChannel;
    const char* quantities;  // that are given or missing together
    const char* nameOfAll;
    std::array<const char*, phaseTotal> parameters;
    std::array<std::size_t, phaseTotal> judges;  // the phase by whose fundamental each phase is admitted
};

constexpr ThdSet thdSets[] = {{0, "THD and frequency", "the voltages", {"THD_Va", "THD_Vb", "THD_Vc"}, {0, 2, 1}},
                              {phaseTotal, "THD", "the currents", {"THD_Ia", "THD_Ib", "THD_Ic"}, {0, 1, 2}}};

/// How a power method wants to be fed, and what to say when it is fed otherwise or in any case.
struct PowerRule {
    std::uint32_t flag;
    bool fourWire;
    const char* whenWiredOtherwise;
    const char* always;
};

constexpr PowerRule powerRules[] = {
    {RT305_4_POWER_THREE_WATTMETER, true,
     "Three wattmeters multiply the voltage and the current of a phase; with line voltages (--wiring three) their "
     "powers are not those of the load.",
     "Reactive power by --power three-wattmeter is all that is not active, sqrt(S^2 - P^2) per phase, without a sign."},
    {RT305_4_POWER_THREE_WATTMETER_COMPLEX, true,
     "Three wattmeters multiply the voltage and the current of a phase; with line voltages (--wiring three) their "
     "powers are not those of the load.",
     ""},
    {RT305_4_POWER_TWO_WATTMETER, false,
     "--power two-wattmeter takes Ua and Ub as line voltages: with phase voltages its powers are not those of the "
     "load.",
     ""},
    {RT305_4_POWER_TWO_WATTMETER_PHASE, true,
     "--power two-wattmeter-phase builds the line voltages itself: with line voltages (--wiring three) its powers are "
     "not those of the load.",
     "--power two-wattmeter-phase gives magnitudes: P is right up to 60 degrees between voltage and current, Q from "
     "30 degrees on."},
};

/// Why a channel can have no fundamental; nothing when it has one.
std::string faultOf(std::size_t channel, const Measurement& measurement) {
    const auto& samples = measurement.samples[channel];
    const std::string name(channelNames[channel]);
    if (std::any_of(samples.begin(), samples.end(), [](double x) { return std::isnan(x); })) {
        return name + " has samples that are not numbers";
    }
    if (std::adjacent_find(samples.begin(), samples.end(), std::not_equal_to<>()) == samples.end()) {
        return name + " is dead (0 " + (isCurrent(channel) ? "A" : "V") + ")";
    }
    return estimateFundamental(samples, measurement.rateHz) ? "" : "there is no fundamental in " + name;
}

std::string outside(const std::string& what, double frequency, const FrequencyWindow& window) {
    return "the fundamental" + what + ", " + formatFixed(frequency, 2) + " Hz, lies outside " + window.text();
}

/// The fundamentals of a set as the library takes the samples, in Hz; 0 where there is none.
using Fundamentals = std::array<double, phaseTotal>;

Fundamentals fundamentalsOf(const ThdSet& set, const Measurement& measurement) {
    Fundamentals fundamentals{};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        fundamentals[phase] =
            estimateFundamental(measurement.samples[set.firstChannel + phase], measurement.assumedRateHz())
                .value_or(0.0);
    }
    return fundamentals;
}

double meanOf(const Fundamentals& fundamentals) {
    return (fundamentals[0] + fundamentals[1] + fundamentals[2]) / 3.0;
}

bool admits(const FrequencyWindow& window, const Fundamentals& fundamentals) {
    return window.contains(meanOf(fundamentals)) &&
           std::all_of(fundamentals.begin(), fundamentals.end(), [&](double f) { return window.contains(f); });
}

/// Why the library admitted no THD of these phases, judged by the fundamentals that the tool itself finds.
std::string thdReason(const ThdSet& set, const std::vector<std::size_t>& missing, const Measurement& measurement) {
    std::vector<std::string> reasons;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (const std::string fault = faultOf(set.firstChannel + phase, measurement); !fault.empty()) {
            reasons.push_back(fault);
        }
    }
    if (!reasons.empty()) {
        return joined(reasons);
    }
    const FrequencyWindow& window = measurement.window();
    const Fundamentals fundamentals = fundamentalsOf(set, measurement);
    if (const double mean = meanOf(fundamentals); !window.contains(mean)) {
        return outside(" on average", mean, window);
    }
    for (const std::size_t phase : missing) {
        const std::size_t judge = set.judges[phase];
        if (!window.contains(fundamentals[judge])) {
            const std::string name(channelNames[set.firstChannel + judge]);
            reasons.push_back(outside(" of " + name, fundamentals[judge], window) +
                              (judge == phase ? "" : ", and the library judges b by c and c by b"));
        }
    }
    return reasons.empty() ? "the record may be too short or too distorted to find its fundamental" : joined(reasons);
}

/// What to know and to try when fundamentals lie outside the window.
std::string hintOn(const ThdSet& set, const Measurement& measurement) {
    const Fundamentals fundamentals = fundamentalsOf(set, measurement);
    const bool live = std::all_of(fundamentals.begin(), fundamentals.end(), [](double f) { return f > 0.0; });
    if (!live || admits(measurement.window(), fundamentals)) {
        return "";
    }
    std::string hint;
    if (!measurement.isAtAssumedRate()) {
        hint += " when the samples are taken as " + formatNumber(measurement.assumedRateHz()) + " a second";
    }
    if (admits(controlWindow, fundamentals)) {
        hint += "; try --frequency control";
    }
    return hint;
}

/// Adds a remark when THD of the set is missing, and gives the reason.
std::string explainThd(const ThdSet& set, const std::vector<NamedValue>& parameters, const Measurement& measurement,
                       std::vector<std::string>& remarks) {
    std::vector<std::size_t> missing;
    std::vector<std::string> names;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (isMissing(parameters, set.parameters[phase])) {
            missing.push_back(phase);
            names.emplace_back(channelNames[set.firstChannel + phase]);
        }
    }
    if (missing.empty()) {
        return "";
    }
    std::string reason = thdReason(set, missing, measurement);
    remarks.push_back(std::string(set.quantities) + " of " +
                      (missing.size() == phaseTotal ? set.nameOfAll : joined(names)) + " not given: " + reason +
                      hintOn(set, measurement) + ".");
    return reason;
}

void explainPower(const std::vector<NamedValue>& parameters, const Measurement& measurement,
                  const std::string& thdReason, std::vector<std::string>& remarks) {
    const auto* const method = std::find_if(std::begin(powerRules), std::end(powerRules), [&](const PowerRule& known) {
        return known.flag == measurement.powerMethod();
    });
    if (method == std::end(powerRules)) {
        remarks.emplace_back("No power: --power was not given.");
        return;
    }
    if (!thdReason.empty()) {
        remarks.push_back("No power: it needs THD of all six channels, but " + thdReason + ".");
        return;
    }
    if (isMissing(parameters, "Pa")) {
        remarks.emplace_back("No power per phase: only the three-wattmeter methods give it.");
    }
    if (isMissing(parameters, "Q")) {
        remarks.emplace_back("No total reactive power: in some phase the active power exceeds U x I.");
    }
    if (method->fourWire != measurement.has(RT305_4_FOUR_WIRE)) {
        remarks.emplace_back(method->whenWiredOtherwise);
    }
    if (*method->always != '\0') {
        remarks.emplace_back(method->always);
    }
}

}  // namespace

std::string remarkOnLength(const Measurement& measurement) {
    const auto& samples = measurement.samples[measurement.inputType == RT305_4_INPUT_CURRENTS ? phaseTotal : 0];
    const double fundamental = estimateFundamental(samples, measurement.rateHz).value_or(0.0);
    const double cycles = static_cast<double>(measurement.length) / measurement.rateHz * fundamental;
    if (cycles >= cyclesForThd - 0.05) {
        return {};
    }
    return "THD and harmonics read too high in records of less than " + formatNumber(cyclesForThd) +
           " cycles (2500 samples at 50 Hz and 10000 Hz); this one has " + formatFixed(cycles, 1) + ".";
}

std::vector<std::string> remarksOn(const std::vector<NamedValue>& parameters, const Measurement& measurement) {
    if (!measurement.isCombined()) {
        return {"Types 4 and 8 (voltages or currents alone) carry no electrical parameters: give all six channels."};
    }
    std::vector<std::string> remarks;
    std::string thdReason;
    for (const ThdSet& set : thdSets) {
        const std::string reason = explainThd(set, parameters, measurement, remarks);
        thdReason = thdReason.empty() ? reason : thdReason;
    }
    if (const std::string remark = remarkOnLength(measurement); !remark.empty() && thdReason.empty()) {
        remarks.push_back(remark);
    }
    explainPower(parameters, measurement, thdReason, remarks);
    return remarks;
}

}  // namespace rt305
