#include "calc/electrical_parameters.h"

#include <cassert>
#include <cmath>

#include "calc/frequency.h"
#include "calc/frequency_window.h"
#include "calc/phase_difference.h"
#include "toolkit/analytic_signal.h"
#include "toolkit/broadcasting.h"
#include "toolkit/scalar.h"
#include "toolkit/sums.h"

namespace calc_modul_K9_web_ns {
namespace {

using coder::creal_T;
using coder::d_table;
using coder::Expanded;
using coder::expandedLength;
using coder::Parameter;
using coder::row;

using PerPhase = std::array<double, coder::phases>;

/// The parameter of a phase, given that of phase a.
Parameter next(Parameter a, std::size_t phase) {
    assert(phase < coder::phases);
    return static_cast<Parameter>(static_cast<std::size_t>(a) + phase);
}

void store(d_table& out, Parameter first, const PerPhase& values) {
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        out[next(first, phase)] = values[phase];
    }
}

double total(const PerPhase& values) {
    return values[0] + values[1] + values[2];
}

/// sum over i of term(rows[i]...) with singleton expansion, times 1/N.
template <class Term, class... Rows>
double meanOf(double N, Term term, const Rows&... rows) {
    int n = 1;
    ((n = expandedLength(n, rows.numel())), ...);
    const auto count = static_cast<std::size_t>(n);
    const double sum =
        ((rows.numel() == n) && ...)
            ? coder::blockedSum(count, [&, ... x = rows.data()](std::size_t i) { return term(x[i]...); })
            : coder::blockedSum(count, [&, ... x = Expanded(rows)](std::size_t i) { return term(x[i]...); });
    return sum * (1.0 / N);
}

double rms(const row& x, double N) {
    return std::sqrt(meanOf(
        N, [](double a) { return a * a; }, x));
}

double rmsOfDifference(const row& a, const row& b, double N) {
    return std::sqrt(meanOf(
        N, [](double x, double y) { return (x - y) * (x - y); }, a, b));
}

double rmsOfSum(const ChannelSet& set, double N) {
    const auto squareOfSum = [](double a, double b, double c) { return (a + b + c) * (a + b + c); };
    return std::sqrt(meanOf(N, squareOfSum, set[0], set[1], set[2]));
}

row minus(const row& a, const row& b) {
    row difference;
    coder::binary_expand_op(difference, a, b, [](double x, double y) { return x - y; });
    return difference;
}

void measureVoltages(const ChannelSet& u, double N, std::string_view wiring, d_table& out) {
    PerPhase phaseVoltage{};
    PerPhase lineVoltage{};
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        const row& here = u[phase];
        if (wiring == option::wiringThree) {
            lineVoltage[phase] = rms(here, N);
            phaseVoltage[phase] = lineVoltage[phase] / 1.7320508075688772;
        } else if (wiring == option::wiringFour) {
            phaseVoltage[phase] = rms(here, N);
            lineVoltage[phase] = rmsOfDifference(here, u[(phase + 1) % coder::phases], N);
        }
    }
    store(out, Parameter::Uda, phaseVoltage);
    store(out, Parameter::Udab, lineVoltage);
    out[Parameter::Ud0] = rmsOfSum(u, N) * 0.3333333333333333;
}

void measureCurrents(const ChannelSet& i, double N, const MeasurementOptions& options, d_table& out) {
    PerPhase current{rms(i[0], N), rms(i[1], N), rms(i[2], N)};
    if (!options.keepRebuiltRms && options.rebuiltCurrent != PhaseChoice::none) {
        const PhaseWithOthers rebuilt = withOthers(options.rebuiltCurrent);
        current[rebuilt.phase] = (current[rebuilt.first] + current[rebuilt.second]) * 0.5;
    }
    store(out, Parameter::Ida, current);
}

using Gates = std::array<bool, coder::phases>;

/// The phases that the window admits. gatedBy[p] is the phase whose fundamental decides about phase p.
Gates admit(const SetHarmonics& set, const FrequencyWindow& window, const std::array<std::size_t, 3>& gatedBy) {
    const auto fundamental = [&](std::size_t phase) { return set[phase].harmFreq[0]; };
    const bool inRange = window.contains((fundamental(1) + fundamental(0) + fundamental(2)) / 3.0);
    Gates gates{};
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        gates[phase] = inRange && window.contains(fundamental(gatedBy[phase]));
    }
    return gates;
}

constexpr std::array<std::size_t, 3> gatedByPartner{0, 2, 1};
constexpr std::array<std::size_t, 3> gatedByItself{0, 1, 2};

void storeDistortion(const SetHarmonics& set, const Gates& gates, Parameter first, d_table& out) {
    PerPhase percent{rtNaN, rtNaN, rtNaN};
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        if (gates[phase]) {
            percent[phase] = 100.0 * coder::rt_powd_snf(set[phase].r / 20.0);
        }
    }
    store(out, first, percent);
}

void measureFrequencies(const ChannelSet& u, double N, std::string_view option, const Gates& gates, d_table& out) {
    if (gates == Gates{}) {
        return;
    }
    const FrequencySearch search(N, option);
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        if (gates[phase]) {
            out[next(Parameter::Fa, phase)] = search.frequency(u[phase]);
        }
    }
}

/// Powers of the three phases, and their arithmetic sums as totals.
void storePhasePowers(const PerPhase& active, const PerPhase& reactive, const PerPhase& apparent, d_table& out) {
    store(out, Parameter::Pa, active);
    store(out, Parameter::Qa, reactive);
    store(out, Parameter::Sa, apparent);
    out[Parameter::P] = total(active);
    out[Parameter::Q] = total(reactive);
    out[Parameter::S] = total(apparent);
}

/// P = mean of u i, S = U I, Q = P tan(acos(P / S)): never negative, NaN where |P| > S.
void threeWattmeter(const ChannelSet& u, const ChannelSet& i, double N, d_table& out) {
    PerPhase active{};
    PerPhase reactive{};
    PerPhase apparent{};
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        active[phase] = meanOf(
            N, [](double a, double b) { return a * b; }, u[phase], i[phase]);
        apparent[phase] = out[next(Parameter::Ida, phase)] * out[next(Parameter::Uda, phase)];
        reactive[phase] = active[phase] * std::tan(std::acos(active[phase] / apparent[phase]));
    }
    storePhasePowers(active, reactive, apparent, out);
}

/// P + jQ = mean of u conj(i) / 2 over the analytic signals, S = |P + jQ| per phase. The total S is the arithmetic sum.
void threeWattmeterComplex(const ChannelSet& u, const ChannelSet& i, double N, d_table& out) {
    PerPhase active{};
    PerPhase reactive{};
    PerPhase apparent{};
    const coder::RealFft shared(u[0].numel());
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        const creal_T power = coder::analyticProductSum(u[phase], i[phase], shared);
        active[phase] = power.re * (1.0 / N) * 0.5;
        reactive[phase] = power.im * (1.0 / N) * 0.5;
        apparent[phase] = coder::rt_hypotd_snf(active[phase], reactive[phase]);
    }
    storePhasePowers(active, reactive, apparent, out);
}

/// Two wattmeters: one reads current a and line voltage ab at the angle phi1, the other current c and line voltage bc
/// at phi2.
void twoWattmeter(double phi1, double phi2, bool magnitudes, d_table& out) {
    const auto reading = [=](double factor, double current, double lineVoltage) {
        const double product = factor * current * lineVoltage;
        return magnitudes ? std::fabs(product) : product;
    };
    const double currentA = out[Parameter::Ida];
    const double currentC = out[Parameter::Idc];
    const double voltageAb = out[Parameter::Udab];
    const double voltageBc = out[Parameter::Udbc];
    const double active = reading(std::cos(phi1), currentA, voltageAb) + reading(std::cos(phi2), currentC, voltageBc);
    const double reactive = reading(std::sin(phi1), currentA, voltageAb) + reading(std::sin(phi2), currentC, voltageBc);
    out[Parameter::P] = active;
    out[Parameter::Q] = reactive;
    out[Parameter::S] = std::sqrt(active * active + reactive * reactive);
}

void measurePower(const ChannelSet& u, const ChannelSet& i, double N, std::string_view method, d_table& out) {
    if (method == option::powerThreeWattmeter) {
        threeWattmeter(u, i, N, out);
    } else if (method == option::powerThreeWattmeterComplex) {
        threeWattmeterComplex(u, i, N, out);
    } else if (method == option::powerTwoWattmeter) {
        const DominantPhase shared(u[0].numel());
        twoWattmeter(phdiffmeasure(u[0], i[0], shared), phdiffmeasure(u[1], i[2], shared), false, out);
    } else if (method == option::powerTwoWattmeterPhase) {
        const DominantPhase shared(u[0].numel());
        twoWattmeter(phdiffmeasure(minus(u[1], u[0]), i[0], shared), phdiffmeasure(minus(u[1], u[2]), i[2], shared),
                     true, out);
    }
}

}  // namespace

void ParamData_mo_305_4(const ChannelSet& voltages, const ChannelSet& currents, double N,
                        const MeasurementOptions& options, const HarmonicsOfBoth& harmonics, d_table& out) {
    measureVoltages(voltages, N, options.wiring, out);
    measureCurrents(currents, N, options, out);

    const FrequencyWindow window = frequencyWindow(options.frequency);
    const Gates voltageGates = admit(harmonics.voltages, window, gatedByPartner);
    const Gates currentGates = admit(harmonics.currents, window, gatedByItself);
    storeDistortion(harmonics.voltages, voltageGates, Parameter::THD_Va, out);
    storeDistortion(harmonics.currents, currentGates, Parameter::THD_Ia, out);
    measureFrequencies(voltages, N, options.frequency, voltageGates, out);

    constexpr Gates all{true, true, true};
    if (voltageGates != all || currentGates != all) {
        return;
    }
    measurePower(voltages, currents, N, options.power, out);
    if (options.negateActivePower) {
        out[Parameter::P] = -out[Parameter::P];
    }
    if (options.negateReactivePower) {
        out[Parameter::Q] = -out[Parameter::Q];
    }
}

}  // namespace calc_modul_K9_web_ns
