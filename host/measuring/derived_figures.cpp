#include "measuring/derived_figures.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "base/sum.h"
#include "signal/effective_power.h"
#include "signal/rms.h"

namespace rt305 {

namespace {

using Samples = std::vector<double>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr TotalAndPhases undefined{nan, nan, nan, nan};

/// The mean product of what varies in x and y.
double meanProduct(const Samples& x, const Samples& y) {
    const double xMean = meanOf(x);
    const double yMean = meanOf(y);
    return sumOf(x.size(), [&](std::size_t k) { return (x[k] - xMean) * (y[k] - yMean); }) /
           static_cast<double>(x.size());
}

/// RMS of x[0] + sign y[0] + z[0], ..., without the mean. Makes no copy of the samples.
double rmsOfSum(const Samples& x, const Samples& y, double sign, const Samples* z = nullptr) {
    return rmsWithoutMean(x.size(), [&](std::size_t k) { return x[k] + sign * y[k] + (z != nullptr ? (*z)[k] : 0.0); });
}

PerPhase<double> lineRmsOf(const Measurement& recorded) {
    PerPhase<double> rms{};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        rms[phase] = rmsOfSum(recorded.samples[phase], recorded.samples[(phase + 1) % phaseTotal], -1.0);
    }
    return rms;
}

TotalAndPhases rmsValues(const Measurement& recorded, std::size_t firstChannel) {
    TotalAndPhases values = undefined;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const Samples& samples = recorded.samples[firstChannel + phase];
        values[1 + phase] = samples.empty() ? nan : rmsWithoutMean(samples);
    }
    return values;
}

/// Sum of the measured phases; NaN when one of them has no value.
double sumOfPhases(const TotalAndPhases& values, const std::vector<std::size_t>& measured) {
    return std::accumulate(measured.begin(), measured.end(), 0.0,
                           [&](double sum, std::size_t phase) { return sum + values[1 + phase]; });
}

/// That of IEEE Std 1459-2010. NaN unless all six channels are measured.
double effectivePower(const FullMeasurement& full, const DerivedFigures& rms) {
    const auto& samples = full.asRecorded().samples;
    if (std::any_of(samples.begin(), samples.end(), [](const Samples& x) { return x.empty(); })) {
        return nan;
    }
    double phases = 0.0;
    double lines = 0.0;
    double currents = 0.0;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const double line = (*rms.lineVoltages)[phase];
        const double u = (*rms.voltages)[1 + phase];
        const double i = (*rms.currents)[1 + phase];
        phases += u * u;
        lines += line * line;
        currents += i * i;
    }
    const double neutral = rmsOfSum(samples[3], samples[4], 1.0, &samples[5]);
    return effectiveApparentPower({phases, lines, currents, neutral * neutral}, !full.fromLineVoltages);
}

/// What is left of `apparent` beside `active`; rounding cannot make it imaginary.
double nonActive(double apparent, double active) {
    return std::isnan(apparent) ? nan : std::sqrt(std::max(0.0, apparent * apparent - active * active));
}

/// NaN for no apparent power.
double factorOf(double active, double apparent) {
    return apparent > 0.0 ? active / apparent : nan;
}

/// P + jQ of the fundamentals on average over the record.
Phasor meanPower(const Samples& voltage, const Samples& current, const FullMeasurement& full) {
    const auto u = fundamentalTrace(voltage, full.asRecorded().rateHz, full.frequencyHz);
    const auto i = fundamentalTrace(current, full.asRecorded().rateHz, full.frequencyHz);
    Phasor sum = 0.0;
    for (std::size_t window = 0; window < u.size(); ++window) {
        sum += u[window] * std::conj(i[window]);
    }
    return sum / static_cast<double>(u.size());
}

/// `rms` has those of voltages and currents.
PowerFigures powerOf(const FullMeasurement& full, const Fundamentals& fundamentals, const DerivedFigures& rms) {
    PowerFigures power{undefined, undefined, undefined, undefined, undefined, undefined,
                       undefined, undefined, nan,       nan,       nan};
    constexpr double fewestCycles = 0.5;  // in which a sine and an offset can be told apart
    const bool hasFundamental = fundamentals.frequencyHz > 0.0 && full.cyclesThere() >= fewestCycles;
    Phasor vectorSum = 0.0;
    std::vector<std::size_t> measured;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const Samples& voltage = full.asRecorded().samples[phase];
        const Samples& current = full.asRecorded().samples[phaseTotal + phase];
        if (voltage.empty() || current.empty()) {
            continue;
        }
        measured.push_back(phase);
        const std::size_t at = 1 + phase;
        const Phasor fundamental = full.isSteady() || !hasFundamental
                                       ? fundamentals.voltages[phase] * std::conj(fundamentals.currents[phase])
                                       : meanPower(voltage, current, full);
        power.P[at] = meanProduct(voltage, current);
        power.S[at] = (*rms.voltages)[at] * (*rms.currents)[at];
        power.N[at] = nonActive(power.S[at], power.P[at]);
        power.PF[at] = factorOf(power.P[at], power.S[at]);
        if (hasFundamental) {
            power.P1[at] = fundamental.real();
            power.Q1[at] = fundamental.imag();
            power.S1[at] = std::abs(fundamental);
        }
        power.DPF[at] = factorOf(power.P1[at], power.S1[at]);
        vectorSum += Phasor(power.P[at], std::copysign(power.N[at], power.Q1[at]));
    }
    power.vectorS = std::abs(vectorSum);
    power.arithmeticS = sumOfPhases(power.S, measured);
    power.effectiveS = effectivePower(full, rms);
    for (TotalAndPhases* const sums : {&power.P, &power.P1, &power.Q1}) {
        sums->front() = sumOfPhases(*sums, measured);
    }
    power.S[0] = std::isnan(power.effectiveS) ? power.arithmeticS : power.effectiveS;
    power.N[0] = nonActive(power.S[0], power.P[0]);
    power.PF[0] = factorOf(power.P[0], power.S[0]);
    power.S1[0] = std::hypot(power.P1[0], power.Q1[0]);
    power.DPF[0] = factorOf(power.P1[0], power.S1[0]);
    return power;
}

/// NaN where one of the two is zero or NaN.
PerPhase<double> lags(const Phasors& from, const Phasors& to) {
    PerPhase<double> degrees{};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        degrees[phase] =
            std::abs(to[phase]) > 0.0 && std::abs(from[phase]) > 0.0 ? lagDegrees(from[phase], to[phase]) : nan;
    }
    return degrees;
}

bool areAllMeasured(const Measurement& recorded, std::size_t firstChannel) {
    const auto first = recorded.samples.begin() + static_cast<std::ptrdiff_t>(firstChannel);
    return std::none_of(first, first + phaseTotal, [](const Samples& x) { return x.empty(); });
}

/// The phasors of a kind, 0 for channels without a signal.
Phasors livePhasors(const Fundamentals& fundamentals, std::size_t firstChannel) {
    Phasors phasors = isCurrent(firstChannel) ? fundamentals.currents : fundamentals.voltages;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        phasors[phase] *= fundamentals.hasSignal[firstChannel + phase] ? 1.0 : 0.0;
    }
    return phasors;
}

/// What belongs to a steady fundamental.
void addAnglesAndComponents(DerivedFigures& figures, const Measurement& recorded, const Fundamentals& fundamentals) {
    const Phasors& voltages = fundamentals.voltages;
    const Phasors& currents = fundamentals.currents;
    if (recorded.isCombined()) {
        figures.currentLags = lags(livePhasors(fundamentals, 0), livePhasors(fundamentals, phaseTotal));
    }
    if (areAllMeasured(recorded, 0) && fundamentals.anySignal(0)) {
        figures.voltageLags = lags({voltages[0], voltages[0], voltages[0]}, voltages);
        figures.voltageSequence = sequenceComponentsOf(voltages);
        figures.voltageUnbalance = unbalanceOf(voltages);
    }
    if (areAllMeasured(recorded, phaseTotal) && fundamentals.anySignal(phaseTotal)) {
        figures.currentSequence = sequenceComponentsOf(currents);
        figures.currentUnbalance = unbalanceOf(currents);
    }
}

}  // namespace

DerivedFigures derivedFigures(const FullMeasurement& full, const Fundamentals& fundamentals) {
    const Measurement& recorded = full.asRecorded();
    DerivedFigures figures;
    if (recorded.hasVoltages()) {
        figures.voltages = rmsValues(recorded, 0);
    }
    if (areAllMeasured(recorded, 0)) {
        figures.lineVoltages = lineRmsOf(recorded);
    }
    if (recorded.hasCurrents()) {
        figures.currents = rmsValues(recorded, phaseTotal);
    }
    if (recorded.isCombined()) {
        figures.power = powerOf(full, fundamentals, figures);
    }
    if (areAllMeasured(recorded, phaseTotal)) {
        const Samples* const i = &recorded.samples[phaseTotal];
        const auto& [total, a, b, c] = *figures.currents;
        figures.currentSum = {rmsOfSum(i[0], i[1], 1.0, &i[2]), std::max({a, b, c})};
    }
    if (full.obstacleToComponents().empty()) {
        addAnglesAndComponents(figures, recorded, fundamentals);
    }
    return figures;
}

}  // namespace rt305
