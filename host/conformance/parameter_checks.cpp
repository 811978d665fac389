/// Checks of the electrical parameters against closed-form values.

#include <algorithm>
#include <cmath>
#include <limits>

#include "conformance/check.h"

namespace rt305 {

namespace {

constexpr double null = std::numeric_limits<double>::quiet_NaN();
constexpr double pi = 3.14159265358979323846;

constexpr std::uint32_t twoWattmeter = RT305_4_POWER_TWO_WATTMETER;
constexpr std::uint32_t twoWattmeterPhase = RT305_4_POWER_TWO_WATTMETER_PHASE;
constexpr std::uint32_t threeWattmeter = RT305_4_POWER_THREE_WATTMETER;
constexpr std::uint32_t complexPower = RT305_4_POWER_THREE_WATTMETER_COMPLEX;
constexpr std::uint32_t control = RT305_4_FREQUENCY_CONTROL;

void namesAndUnits(const Library& library) {
    std::string found;
    for (const NamedValue& parameter : parametersOf(library, generated({}, allChannels))) {
        found += parameter.name + ' ' + parameter.unit + ' ';
    }
    expectText("names and units", found,
               "S VA Sa VA Sb VA Sc VA P W Pa W Pb W Pc W Q VAR Qa VAR Qb VAR Qc VAR Uda V Udb V Udc V Udab V Udbc V "
               "Udca V Ud0 V Ida A Idb A Idc A Fa Hz Fb Hz Fc Hz THD_Va % THD_Vb % THD_Vc % THD_Ia % THD_Ib % "
               "THD_Ic % Pf - Pfa - Pfb - Pfc - ");
}

void noneForOneKind(const Library& library) {
    for (const std::uint32_t inputType : {voltagesOnly, currentsOnly}) {
        for (const NamedValue& parameter : parametersOf(library, generated({}, inputType, complexPower))) {
            expectNumber(parameter.name, parameter.value, null, 0.0);
        }
    }
}

struct ParameterCase {
    const char* name;
    GeneratorSettings generator;
    std::uint32_t flags;  // in addition to four-wire and simulated source
    std::vector<NamedValue> expected;
};

using Values = std::vector<NamedValue>;

Values operator+(Values values, const Values& more) {
    values.insert(values.end(), more.begin(), more.end());
    return values;
}

Values powers(double p, double q, double s) {
    return {{"P", p, ""}, {"Q", q, ""}, {"S", s, ""}};
}

Values phasePowers(double p, double q, double s) {
    Values values;
    for (const std::string phase : {"a", "b", "c"}) {
        values.insert(values.end(), {{"P" + phase, p, ""}, {"Q" + phase, q, ""}, {"S" + phase, s, ""}});
    }
    return values;
}

Values balanced(double p, double q, double s) {
    return powers(3.0 * p, 3.0 * q, 3.0 * s) + phasePowers(p, q, s);
}

Values threeOf(const std::string& name, const char* suffixes, double value) {
    Values values;
    for (const char* suffix = suffixes; *suffix != '\0'; ++suffix) {
        values.push_back({name + *suffix, value, ""});
    }
    return values;
}

const Values noPower = powers(null, null, null) + phasePowers(null, null, null);
const Values noVoltageThd = threeOf("THD_V", "abc", null) + threeOf("F", "abc", null);
const Values noCurrentThd = threeOf("THD_I", "abc", null);

double cosDegrees(double degrees) {
    return std::cos(degrees / 180.0 * pi);
}
double sinDegrees(double degrees) {
    return std::sin(degrees / 180.0 * pi);
}

/// 100 V and 10 A in each phase, with currents that lag or lead their voltages by 20 degrees.
const GeneratorSettings lagging{.voltage = 100.0, .current = 10.0, .angleDegrees = 20.0};
const GeneratorSettings leading{.voltage = 100.0, .current = 10.0, .angleDegrees = -20.0};
const double cosine = cosDegrees(20.0);
const double sine = sinDegrees(20.0);

/// IEEE 1459-2010, Annex B, with the voltage phases of orders 5 and 7 that agree with its powers.
const GeneratorSettings distorted{.voltage = 100.0,
                                  .current = 100.0,
                                  .angleDegrees = 30.0,
                                  .voltageHarmonics = {{3, 8.0, -70.0}, {5, 15.0, 141.0}, {7, 5.0, -34.0}},
                                  .currentHarmonics = {{3, 20.0, -165.0}, {5, 15.0, 234.0}, {7, 10.0, 234.0}}};
constexpr double activePower = 8632.788554;

/// Powers of two wattmeters with line voltages at these angles to the currents.
Values twoWattmeters(double degrees1, double degrees2, bool magnitudes) {
    const double scale = 10.0 * 100.0 * std::sqrt(3.0);
    const auto term = [magnitudes](double x) { return magnitudes ? std::fabs(x) : x; };
    const double p = term(cosDegrees(degrees1)) + term(cosDegrees(degrees2));
    const double q = term(sinDegrees(degrees1)) + term(sinDegrees(degrees2));
    return powers(scale * p, scale * q, scale * std::hypot(p, q)) + phasePowers(null, null, null);
}

/// RMS, THD and frequency.
std::vector<ParameterCase> basicCases() {
    const double line = 100.0 * std::sqrt(1.0 + 0.81 + 0.9);  // between 100 V and 90 V, 120 degrees apart
    return {
        {"RMS in four wires",
         {.voltage = 100.0, .current = 10.0, .factors = {1.0, 0.9, 1.0, 1.0, 0.5, 0.25}},
         0,
         {{"Uda", 100.0, ""},
          {"Udb", 90.0, ""},
          {"Udc", 100.0, ""},
          {"Udab", line, ""},
          {"Udbc", line, ""},
          {"Udca", 100.0 * std::sqrt(3.0), ""},
          {"Ud0", 10.0 / 3.0, ""},
          {"Ida", 10.0, ""},
          {"Idb", 5.0, ""},
          {"Idc", 2.5, ""}}},
        {"THD and frequency", distorted, 0,
         threeOf("THD_V", "abc", 17.72005) + threeOf("THD_I", "abc", 26.92582) + threeOf("F", "abc", 50.0)},
        {"a frequency on the grid", {.frequencyHz = 49.8}, 0, threeOf("F", "abc", 49.8)},
        {"the fixed window reports 50.3 Hz at most", {.frequencyHz = 50.38}, 0, threeOf("F", "abc", 50.3)},
    };
}

std::vector<ParameterCase> powerCases() {
    const Values balancedPowers = balanced(1000.0 * cosine, 1000.0 * sine, 1000.0);
    return {
        {"power by no method", lagging, RT305_4_POWER_NONE, noPower},
        {"power by three wattmeters", lagging, threeWattmeter, balancedPowers},
        {"reactive power by three wattmeters has no sign", leading, threeWattmeter, balancedPowers},
        {"power by three wattmeters, flag value 6", lagging, flagValue(RT305_4_POWER_MASK, 6), balancedPowers},
        {"power by three wattmeters, flag value 7", lagging, flagValue(RT305_4_POWER_MASK, 7), balancedPowers},
        {"power by three wattmeters of a distorted system", distorted, threeWattmeter,
         balanced(activePower, 6007.7127, 10517.4926)},
        {"power by two wattmeters", lagging, twoWattmeter, twoWattmeters(-20.0, -140.0, false)},
        {"power by two wattmeters and phases", lagging, twoWattmeterPhase, twoWattmeters(130.0, 190.0, true)},
        {"complex power, lagging", lagging, complexPower, balancedPowers},
        {"complex power, leading", leading, complexPower, balanced(1000.0 * cosine, -1000.0 * sine, 1000.0)},
        {"complex power of a distorted system", distorted, complexPower,
         balanced(activePower, 4984.669048, 9968.548728)},
        {"no power by flag value 5", lagging, flagValue(RT305_4_POWER_MASK, 5), noPower},
        {"P with inverted sign", lagging, complexPower | RT305_4_NEGATE_ACTIVE_POWER,
         powers(-3000.0 * cosine, 3000.0 * sine, 3000.0) + phasePowers(1000.0 * cosine, 1000.0 * sine, 1000.0)},
        {"Q with inverted sign", lagging, complexPower | RT305_4_NEGATE_REACTIVE_POWER,
         powers(3000.0 * cosine, -3000.0 * sine, 3000.0)},
    };
}

/// Fundamentals at which THD, frequency or power are not measured.
std::vector<ParameterCase> missingCases() {
    const GeneratorSettings at49Point5Hz{.frequencyHz = 49.5, .durationSeconds = 2.0};
    return {
        {"49.5 Hz is outside the fixed window", at49Point5Hz, complexPower,
         noVoltageThd + noCurrentThd + noPower + threeOf("Ud", "abc", 230.0)},
        {"49.5 Hz is inside the control window", at49Point5Hz, complexPower | control,
         balanced(1150.0, 0.0, 1150.0) + threeOf("F", "abc", 49.5) + threeOf("THD_V", "abc", 0.0)},
        {"65 Hz is outside the control window", {.frequencyHz = 65.0}, complexPower | control, noVoltageThd + noPower},
        {"a dead current leaves only values of the voltages",
         {.factors = {1.0, 1.0, 1.0, 1.0, 1.0, 0.0}},
         complexPower,
         noCurrentThd + noPower + threeOf("THD_V", "abc", 0.0) + threeOf("F", "abc", 50.0) +
             threeOf("Ud", "abc", 230.0)},
        {"no power factors", lagging, complexPower, Values{{"Pf", null, ""}} + threeOf("Pf", "abc", null)},
    };
}

void expectParameters(const Library& library, const Measurement& measurement, const Values& expected) {
    const Values found = parametersOf(library, measurement);
    for (const NamedValue& value : expected) {
        // windows leave an error that depends on their phase, and THD has a floor: both are below 1e-5
        expectNumber(value.name, valueOf(found, value.name), value.value, 1e-5 * std::max(1.0, std::fabs(value.value)));
    }
}

void parameters(const Library& library, const ParameterCase& c) {
    expectParameters(library, generated(c.generator, allChannels, c.flags), c.expected);
}

void threeWires(const Library& library) {
    Measurement measurement = generated({.factors = {1.0, 0.9, 1.0, 1.0, 1.0, 1.0}}, allChannels);
    measurement.settings.flags &= ~RT305_4_FOUR_WIRE;
    expectParameters(library, measurement,
                     {{"Udab", 230.0, ""},
                      {"Udbc", 207.0, ""},
                      {"Udca", 230.0, ""},
                      {"Uda", 230.0 / std::sqrt(3.0), ""},
                      {"Udb", 207.0 / std::sqrt(3.0), ""},
                      {"Udc", 230.0 / std::sqrt(3.0), ""},
                      {"Ud0", 23.0 / 3.0, ""}});
}

/// The fundamental of phase c decides on phase b, and that of b on c. Phase c is at 65 Hz.
void crossedGates(const Library& library) {
    Measurement measurement = generated({}, allChannels, complexPower | control);
    measurement.samples[2] = generated({.frequencyHz = 65.0}, allChannels).samples[2];
    expectParameters(library, measurement,
                     Values{{"THD_Va", 0.0, ""}, {"THD_Vb", null, ""}, {"THD_Vc", 0.0, ""}, {"Fb", null, ""}} +
                         threeOf("THD_I", "abc", 0.0) + noPower);
}

}  // namespace

std::vector<Check> parameterChecks() {
    std::vector<Check> checks{{"names, units and order of the parameters", namesAndUnits},
                              {"voltages or currents alone have no parameters", noneForOneKind},
                              {"RMS in three wires", threeWires},
                              {"the crossed gates of phases b and c", crossedGates}};
    addRows(checks, "", basicCases(), parameters);
    addRows(checks, "", powerCases(), parameters);
    addRows(checks, "", missingCases(), parameters);
    return checks;
}

}  // namespace rt305
