/// What the interface promises of the electrical parameters, in closed form.

#include <algorithm>
#include <cmath>
#include <limits>

#include "conformance/check.h"
#include "measuring/result_texts.h"

namespace rt305 {

namespace {

constexpr std::uint32_t all = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
constexpr double null = std::numeric_limits<double>::quiet_NaN();
constexpr double pi = 3.14159265358979323846;

constexpr std::uint32_t twoWattmeter = RT305_4_POWER_TWO_WATTMETER;
constexpr std::uint32_t twoWattmeterPhase = RT305_4_POWER_TWO_WATTMETER_PHASE;
constexpr std::uint32_t threeWattmeter = RT305_4_POWER_THREE_WATTMETER;
constexpr std::uint32_t complexPower = RT305_4_POWER_THREE_WATTMETER_COMPLEX;
constexpr std::uint32_t control = RT305_4_FREQUENCY_CONTROL;

void namesAndUnits(const Library& library) {
    std::string found;
    for (const NamedValue& parameter : readParameters(library.measure(generated({}, all), 0).parameters)) {
        found += parameter.name + ' ' + parameter.unit + ' ';
    }
    expectText("names and units", found,
               "S VA Sa VA Sb VA Sc VA P W Pa W Pb W Pc W Q VAR Qa VAR Qb VAR Qc VAR Uda V Udb V Udc V Udab V Udbc V "
               "Udca V Ud0 V Ida A Idb A Idc A Fa Hz Fb Hz Fc Hz THD_Va % THD_Vb % THD_Vc % THD_Ia % THD_Ib % "
               "THD_Ic % Pf - Pfa - Pfb - Pfc - ");
}

void noneOfOneKind(const Library& library) {
    for (const std::uint32_t inputType : {RT305_4_INPUT_VOLTAGES, RT305_4_INPUT_CURRENTS}) {
        const auto texts = library.measure(generated({}, inputType, complexPower), RT305_4_OPERATION_PARAMETERS);
        for (const NamedValue& parameter : readParameters(texts.parameters)) {
            expectNumber(parameter.name, parameter.value, null, 0.0);
        }
    }
}

struct ParameterCase {
    const char* name;
    GeneratorSettings generator;
    std::uint32_t flags;  // added to four-wire, simulated source
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

/// 100 V and 10 A on every phase, the currents 20 degrees behind (or ahead) of their voltages.
const GeneratorSettings lagging{.voltage = 100.0, .current = 10.0, .angleDegrees = 20.0};
const GeneratorSettings leading{.voltage = 100.0, .current = 10.0, .angleDegrees = -20.0};
const double cosine = std::cos(20.0 / 180.0 * pi);
const double sine = std::sin(20.0 / 180.0 * pi);

/// IEEE 1459-2010, Annex B, with the voltage phases of orders 5 and 7 that its powers need.
const GeneratorSettings distorted{.voltage = 100.0,
                                  .current = 100.0,
                                  .angleDegrees = 30.0,
                                  .voltageHarmonics = {{3, 8.0, -70.0}, {5, 15.0, 141.0}, {7, 5.0, -34.0}},
                                  .currentHarmonics = {{3, 20.0, -165.0}, {5, 15.0, 234.0}, {7, 10.0, 234.0}}};
constexpr double activePower = 8632.788554;

/// Two angles turn the line voltages Uab and Ubc, as the method takes them, into powers.
Values fromAngles(double degrees1, double degrees2, bool magnitudes) {
    const double scale = 10.0 * 100.0 * std::sqrt(3.0);
    const auto term = [magnitudes](double x) { return magnitudes ? std::fabs(x) : x; };
    const double p = term(std::cos(degrees1 / 180.0 * pi)) + term(std::cos(degrees2 / 180.0 * pi));
    const double q = term(std::sin(degrees1 / 180.0 * pi)) + term(std::sin(degrees2 / 180.0 * pi));
    return powers(scale * p, scale * q, scale * std::hypot(p, q)) + phasePowers(null, null, null);
}

std::vector<ParameterCase> parameterCases() {
    const Values threeWattmeterPowers = balanced(1000.0 * cosine, 1000.0 * sine, 1000.0);
    return {
        {"RMS in four wires",
         {.voltage = 100.0, .current = 10.0, .factors = {1.0, 0.9, 1.0, 1.0, 0.5, 0.25}},
         0,
         {{"Uda", 100.0, ""},
          {"Udb", 90.0, ""},
          {"Udc", 100.0, ""},
          {"Udab", 100.0 * std::sqrt(1.0 + 0.81 + 0.9), ""},
          {"Udbc", 100.0 * std::sqrt(1.0 + 0.81 + 0.9), ""},
          {"Udca", 100.0 * std::sqrt(3.0), ""},
          {"Ud0", 10.0 / 3.0, ""},
          {"Ida", 10.0, ""},
          {"Idb", 5.0, ""},
          {"Idc", 2.5, ""}}},
        {"THD and frequency", distorted, 0,
         threeOf("THD_V", "abc", 17.72005) + threeOf("THD_I", "abc", 26.92582) + threeOf("F", "abc", 50.0)},
        {"a frequency on the grid", {.frequencyHz = 49.8}, 0, threeOf("F", "abc", 49.8)},
        {"the fixed window reports 50.3 Hz at most", {.frequencyHz = 50.38}, 0, threeOf("F", "abc", 50.3)},
        {"power by no method", lagging, RT305_4_POWER_NONE, noPower},
        {"power by three wattmeters", lagging, threeWattmeter, threeWattmeterPowers},
        {"reactive power by three wattmeters has no sign", leading, threeWattmeter, threeWattmeterPowers},
        {"power by three wattmeters, flag value 6", lagging, 0x60000, threeWattmeterPowers},
        {"power by three wattmeters, flag value 7", lagging, 0x70000, threeWattmeterPowers},
        {"power by three wattmeters of a distorted system", distorted, threeWattmeter,
         balanced(activePower, 6007.7127, 10517.4926)},
        {"power by two wattmeters", lagging, twoWattmeter, fromAngles(-20.0, -140.0, false)},
        {"power by two wattmeters and phases", lagging, twoWattmeterPhase, fromAngles(130.0, 190.0, true)},
        {"complex power, lagging", lagging, complexPower, threeWattmeterPowers},
        {"complex power, leading", leading, complexPower, balanced(1000.0 * cosine, -1000.0 * sine, 1000.0)},
        {"complex power of a distorted system", distorted, complexPower,
         balanced(activePower, 4984.669048, 9968.548728)},
        {"no power by flag value 5", lagging, 0x50000, noPower},
        {"the sign of P turned", lagging, complexPower | RT305_4_NEGATE_ACTIVE_POWER,
         powers(-3000.0 * cosine, 3000.0 * sine, 3000.0) + phasePowers(1000.0 * cosine, 1000.0 * sine, 1000.0)},
        {"the sign of Q turned", lagging, complexPower | RT305_4_NEGATE_REACTIVE_POWER,
         powers(3000.0 * cosine, -3000.0 * sine, 3000.0)},
        {"49.5 Hz lies outside the fixed window",
         {.frequencyHz = 49.5, .durationSeconds = 2.0},
         complexPower,
         noVoltageThd + noCurrentThd + noPower + threeOf("Ud", "abc", 230.0)},
        {"49.5 Hz lies inside the control window",
         {.frequencyHz = 49.5, .durationSeconds = 2.0},
         complexPower | control,
         balanced(1150.0, 0.0, 1150.0) + threeOf("F", "abc", 49.5) + threeOf("THD_V", "abc", 0.0)},
        {"65 Hz lies outside the control window",
         {.frequencyHz = 65.0},
         complexPower | control,
         noVoltageThd + noPower},
        {"a dead current leaves voltages only",
         {.factors = {1.0, 1.0, 1.0, 1.0, 1.0, 0.0}},
         complexPower,
         noCurrentThd + noPower + threeOf("THD_V", "abc", 0.0) + threeOf("F", "abc", 50.0) +
             threeOf("Ud", "abc", 230.0)},
        {"no power factors", lagging, complexPower, Values{{"Pf", null, ""}} + threeOf("Pf", "abc", null)},
    };
}

void expectParameters(const Library& library, const Measurement& measurement, const Values& expected) {
    Values found = readParameters(library.measure(measurement, RT305_4_OPERATION_PARAMETERS).parameters);
    for (const NamedValue& value : expected) {
        const auto parameter = std::find_if(found.begin(), found.end(),
                                            [&value](const NamedValue& other) { return other.name == value.name; });
        expect(parameter != found.end(), "there is no " + value.name);
        // 1e-5 is what the phases of a window and THD's floor leave; a frequency is a number of the grid
        expectNumber(value.name, parameter->value, value.value, 1e-5 * std::max(1.0, std::fabs(value.value)));
    }
}

void threeWires(const Library& library) {
    Measurement measurement = generated({.factors = {1.0, 0.9, 1.0, 1.0, 1.0, 1.0}}, all);
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

/// Phase c at 65 Hz: its fundamental judges phase b, and that of b judges c.
void crossedGates(const Library& library) {
    Measurement measurement = generated({}, all, complexPower | control);
    measurement.samples[2] = generated({.frequencyHz = 65.0}, all).samples[2];
    expectParameters(library, measurement,
                     Values{{"THD_Va", 0.0, ""}, {"THD_Vb", null, ""}, {"THD_Vc", 0.0, ""}, {"Fb", null, ""}} +
                         threeOf("THD_I", "abc", 0.0) + noPower);
}

}  // namespace

std::vector<Check> parameterChecks() {
    std::vector<Check> checks{{"names, units and order of the parameters", namesAndUnits},
                              {"voltages or currents alone have no parameters", noneOfOneKind},
                              {"RMS in three wires", threeWires},
                              {"the crossed gates of phases b and c", crossedGates}};
    for (const ParameterCase& c : parameterCases()) {
        checks.push_back({c.name, [c](const Library& library) {
                              expectParameters(library, generated(c.generator, all, c.flags), c.expected);
                          }});
    }
    return checks;
}

}  // namespace rt305
