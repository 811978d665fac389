#include "calc/electrical_parameters.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <vector>

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

/// Mean of u i with singleton expansion: the sum times 1/N.
double meanProduct(double N, const row& u, const row& i) {
    const auto n = static_cast<std::size_t>(expandedLength(u.numel(), i.numel()));
    const auto product = [](const auto& x, const auto& y) { return [=](std::size_t k) { return x[k] * y[k]; }; };
    const double sum = u.numel() == i.numel() ? coder::blockedSum(n, product(u.data(), i.data()))
                                              : coder::blockedSum<1>(n, product(Expanded(u), Expanded(i)));
    return sum * (1.0 / N);
}

/// Root mean squares from sums of squares.
PerPhase rmsOf(const PerPhase& squares, double N) {
    PerPhase rms{};
    std::transform(squares.begin(), squares.end(), rms.begin(), [=](double sum) { return std::sqrt(sum * (1.0 / N)); });
    return rms;
}

void measureVoltages(const ChannelSums& u, double N, std::string_view wiring, d_table& out) {
    const PerPhase rms = rmsOf(u.squares, N);
    if (wiring == option::wiringThree) {
        constexpr double root3 = 1.7320508075688772;
        store(out, Parameter::Uda, {rms[0] / root3, rms[1] / root3, rms[2] / root3});
        store(out, Parameter::Udab, rms);
    } else {
        store(out, Parameter::Uda, rms);
        store(out, Parameter::Udab, rmsOf(u.squaresOfDifferences, N));
    }
    out[Parameter::Ud0] = std::sqrt(u.squaresOfSum * (1.0 / N)) * 0.3333333333333333;
}

void measureCurrents(const ChannelSums& i, double N, const MeasurementOptions& options, d_table& out) {
    PerPhase current = rmsOf(i.squares, N);
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

void measureFrequencies(const ConditionedSet& u, double N, std::string_view option, const Gates& gates, d_table& out) {
    if (gates == Gates{}) {
        return;
    }
    const FrequencySearch search(N, option);
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        if (gates[phase]) {
            out[next(Parameter::Fa, phase)] = search.frequency(u.row(phase));
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
void threeWattmeter(const ConditionedSet& u, const ConditionedSet& i, double N, d_table& out) {
    PerPhase active{};
    PerPhase reactive{};
    PerPhase apparent{};
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        active[phase] = meanProduct(N, u.row(phase), i.row(phase));
        apparent[phase] = out[next(Parameter::Ida, phase)] * out[next(Parameter::Uda, phase)];
        reactive[phase] = active[phase] * std::tan(std::acos(active[phase] / apparent[phase]));
    }
    storePhasePowers(active, reactive, apparent, out);
}

/// Sum of u conj(i) over the analytic signals of a phase.
creal_T complexProduct(const ConditionedSet& u, const ConditionedSet& i, std::size_t phase,
                       const coder::RealFft& shared) {
    const int n = shared.size();
    if (u.length(phase) != i.length(phase) || u.length(phase) != static_cast<std::size_t>(n)) {
        return coder::analyticProductSum(u.row(phase), i.row(phase), shared);
    }
    u.write(phase, shared.workspace());
    const creal_T* const spectrum = shared.forward();
    const std::vector<creal_T> U(spectrum, spectrum + shared.bins());
    i.write(phase, shared.workspace());
    return coder::analyticProductSum(U.data(), shared.forward(), n);
}

/// P + jQ = mean of u conj(i) / 2 over the analytic signals, S = |P + jQ| per phase. The total S is the arithmetic sum.
void threeWattmeterComplex(const ConditionedSet& u, const ConditionedSet& i, double N, d_table& out) {
    PerPhase active{};
    PerPhase reactive{};
    PerPhase apparent{};
    const coder::RealFft shared(static_cast<int>(u.length(0)));
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        const creal_T power = complexProduct(u, i, phase, shared);
        active[phase] = power.re * (1.0 / N) * 0.5;
        reactive[phase] = power.im * (1.0 / N) * 0.5;
        apparent[phase] = coder::rt_hypotd_snf(active[phase], reactive[phase]);
    }
    storePhasePowers(active, reactive, apparent, out);
}

/// Two wattmeters: one reads current a and line voltage ab at the angle phi1, the other current c and line voltage bc
/// at phi2.
void storeTwoWattmeters(double phi1, double phi2, bool magnitudes, d_table& out) {
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

/// Phase of the dominant line of a signal of n samples: fill(y) writes them to y[n] and returns their mean.
template <class Fill>
double dominantPhase(std::size_t n, const DominantPhase& shared, Fill fill) {
    const auto phaseBy = [&](const DominantPhase& measurement) { return measurement.ofRow(fill(measurement.row())); };
    const int length = static_cast<int>(n);
    return length == shared.length() ? phaseBy(shared) : phaseBy(DominantPhase(length));
}

void twoWattmeters(const ConditionedSet& u, const ConditionedSet& i, const SumsOfBoth& sums, bool lineVoltages,
                   d_table& out) {
    const DominantPhase shared(static_cast<int>(u.length(0)));
    const auto phaseOf = [&](const ConditionedSet& set, const ChannelSums& sumsOfSet, std::size_t phase) {
        const std::size_t n = set.length(phase);
        return dominantPhase(n, shared, [&](double* y) {
            set.write(phase, y);
            return sumsOfSet.samples[phase] / static_cast<double>(n);
        });
    };
    const auto phaseOfDifference = [&](std::size_t a, std::size_t b) {
        const auto n =
            static_cast<std::size_t>(expandedLength(static_cast<int>(u.length(a)), static_cast<int>(u.length(b))));
        return dominantPhase(n, shared, [&](double* y) {
            u.writeCombined(a, b, 0, n, y, [](double one, double other) { return one - other; });
            return coder::mean({y, n});
        });
    };
    const double phi1 =
        phaseOf(i, sums.currents, 0) - (lineVoltages ? phaseOfDifference(1, 0) : phaseOf(u, sums.voltages, 0));
    const double phi2 =
        phaseOf(i, sums.currents, 2) - (lineVoltages ? phaseOfDifference(1, 2) : phaseOf(u, sums.voltages, 1));
    storeTwoWattmeters(phi1, phi2, lineVoltages, out);
}

void measurePower(const ConditionedSet& u, const ConditionedSet& i, const SumsOfBoth& sums, double N,
                  std::string_view method, d_table& out) {
    if (method == option::powerThreeWattmeter) {
        threeWattmeter(u, i, N, out);
    } else if (method == option::powerThreeWattmeterComplex) {
        threeWattmeterComplex(u, i, N, out);
    } else if (method == option::powerTwoWattmeter) {
        twoWattmeters(u, i, sums, false, out);
    } else if (method == option::powerTwoWattmeterPhase) {
        twoWattmeters(u, i, sums, true, out);
    }
}

}  // namespace

void ParamData_mo_305_4(const ConditionedSet& voltages, const ConditionedSet& currents, const SumsOfBoth& sums,
                        double N, const MeasurementOptions& options, const HarmonicsOfBoth& harmonics, d_table& out) {
    measureVoltages(sums.voltages, N, options.wiring, out);
    measureCurrents(sums.currents, N, options, out);

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
    measurePower(voltages, currents, sums, N, options.power, out);
    if (options.negateActivePower) {
        out[Parameter::P] = -out[Parameter::P];
    }
    if (options.negateReactivePower) {
        out[Parameter::Q] = -out[Parameter::Q];
    }
}

}  // namespace calc_modul_K9_web_ns
