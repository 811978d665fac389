#include "remarks.h"

#include <algorithm>
#include <cmath>

#include "fundamental.h"
#include "text.h"

namespace rt305 {

namespace {

/// From this length on a pure sine shows no THD of its own.
constexpr double cyclesForThd = 12.5;

struct Window {
    double lower;
    double upper;

    bool contains(double frequency) const { return lower < frequency && frequency < upper; }
    std::string text() const { return formatNumber(lower) + "-" + formatNumber(upper) + " Hz"; }
};

constexpr Window fixedWindow{49.6, 50.4};
constexpr Window controlWindow{10.0, 60.0};

bool isMissing(const std::vector<NamedValue>& parameters, std::string_view name) {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [name](const NamedValue& parameter) { return parameter.name == name; });
    return found == parameters.end() || std::isnan(found->value);
}

/// A channel set whose THD the library admits together.
struct ThdSet {
    std::size_t firstChannel;
    const char* quantities;  // that are given or missing together
    const char* nameOfAll;
    std::array<const char*, phaseTotal> parameters;
};

constexpr ThdSet thdSets[] = {{0, "THD and frequency", "the voltages", {"THD_Va", "THD_Vb", "THD_Vc"}},
                              {phaseTotal, "THD", "the currents", {"THD_Ia", "THD_Ib", "THD_Ic"}}};

/// How a power method wants to be fed, and what to say when it is fed otherwise or in any case.
struct PowerMethod {
    std::uint32_t flag;
    bool fourWire;
    const char* whenWiredOtherwise;
    const char* always;
};

constexpr PowerMethod powerMethods[] = {
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
     "--power two-wattmeter takes Ub as the line voltage cb and gives Q with the opposite sign (--invert-q turns it); "
     "when Ub holds bc, give --coefficients Ub=-1."},
    {RT305_4_POWER_TWO_WATTMETER_PHASE, true,
     "--power two-wattmeter-phase builds the line voltages itself: with line voltages (--wiring three) its powers are "
     "not those of the load.",
     "--power two-wattmeter-phase gives magnitudes: P is right up to 60 degrees between voltage and current, Q from "
     "30 degrees on."},
};

/// Why the library admitted no THD, judged by the fundamental that the tool itself finds in each channel.
std::string thdReason(const ThdSet& set, const Measurement& measurement) {
    const Window& window = measurement.has(RT305_4_FREQUENCY_CONTROL) ? controlWindow : fixedWindow;
    std::vector<std::string> dead;
    std::vector<double> found;
    for (std::size_t channel = set.firstChannel; channel < set.firstChannel + phaseTotal; ++channel) {
        if (const auto frequency = estimateFundamental(measurement.samples[channel], parameterRateHz)) {
            found.push_back(*frequency);
        } else {
            dead.emplace_back(channelNames[channel]);
        }
    }
    if (!dead.empty()) {
        return "there is no fundamental in " + joined(dead);
    }
    const auto [lowest, highest] = std::minmax_element(found.begin(), found.end());
    const auto isOutside = [](const Window& range, double a, double b) {
        return !range.contains(a) || !range.contains(b);
    };
    if (!isOutside(window, *lowest, *highest)) {
        return "the record may be too short or too distorted to find it";
    }
    const std::string low = formatFixed(*lowest, 1);
    const std::string high = formatFixed(*highest, 1);
    std::string reason = "it is at " + low + (low == high ? "" : " to " + high) + " Hz";
    if (!measurement.isAtParameterRate()) {
        reason += " when the samples are taken as 10000 a second";
    }
    if (&window == &fixedWindow && !isOutside(controlWindow, *lowest, *highest)) {
        reason += "; try --frequency control";
    }
    return reason;
}

/// Adds a remark when THD of the set is missing, and says whether it is.
bool explainThd(const ThdSet& set, const std::vector<NamedValue>& parameters, const Measurement& measurement,
                std::vector<std::string>& remarks) {
    std::vector<std::string> missing;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (isMissing(parameters, set.parameters[phase])) {
            missing.emplace_back(channelNames[set.firstChannel + phase]);
        }
    }
    if (missing.empty()) {
        return false;
    }
    const Window& window = measurement.has(RT305_4_FREQUENCY_CONTROL) ? controlWindow : fixedWindow;
    remarks.push_back(std::string(set.quantities) + " of " +
                      (missing.size() == phaseTotal ? set.nameOfAll : joined(missing)) +
                      " not given: the fundamental must lie inside " + window.text() + " on average and per channel; " +
                      thdReason(set, measurement) + ".");
    return true;
}

void explainPower(const std::vector<NamedValue>& parameters, const Measurement& measurement, bool thdIsMissing,
                  std::vector<std::string>& remarks) {
    const auto* const method =
        std::find_if(std::begin(powerMethods), std::end(powerMethods),
                     [&](const PowerMethod& known) { return known.flag == measurement.powerMethod(); });
    if (method == std::end(powerMethods)) {
        remarks.emplace_back("No power: --power was not given.");
        return;
    }
    if (thdIsMissing) {
        remarks.emplace_back("No power: it needs THD of all six channels.");
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

std::vector<std::string> remarksOn(const std::vector<NamedValue>& parameters, const Measurement& measurement) {
    if (measurement.inputType != RT305_4_INPUT_VOLTAGES_AND_CURRENTS) {
        return {"Types 4 and 8 (voltages or currents alone) carry no electrical parameters: give all six channels."};
    }
    std::vector<std::string> remarks;
    bool thdIsMissing = false;
    for (const ThdSet& set : thdSets) {
        thdIsMissing = explainThd(set, parameters, measurement, remarks) || thdIsMissing;
    }
    const double cycles = static_cast<double>(measurement.length) / parameterRateHz *
                          estimateFundamental(measurement.samples[0], parameterRateHz).value_or(0.0);
    if (cycles < cyclesForThd - 0.05 && !isMissing(parameters, "THD_Va")) {
        remarks.push_back("THD reads too high in records of less than " + formatNumber(cyclesForThd) +
                          " cycles; this one has " + formatFixed(cycles, 1) + ".");
    }
    explainPower(parameters, measurement, thdIsMissing, remarks);
    if (isMissing(parameters, "Pf")) {
        remarks.emplace_back("No power factors: this library does not compute them.");
    }
    return remarks;
}

}  // namespace rt305
