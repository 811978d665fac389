#include "measuring/derived_figures.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace rt305 {

namespace {

std::array<double, 1 + phaseTotal> powerFactors(const Parameters& parameters) {
    constexpr std::array<std::pair<const char*, const char*>, 1 + phaseTotal> names{
        {{"P", "S"}, {"Pa", "Sa"}, {"Pb", "Sb"}, {"Pc", "Sc"}}};
    std::array<double, 1 + phaseTotal> factors{};
    std::transform(names.begin(), names.end(), factors.begin(), [&parameters](const auto& name) {
        return parameterNamed(parameters, name.first).value / parameterNamed(parameters, name.second).value;
    });
    return factors;
}

/// NaN where one of the two is zero or NaN.
PerPhase<double> lags(const Phasors& from, const Phasors& to) {
    PerPhase<double> degrees{};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        degrees[phase] = std::abs(to[phase]) > 0.0 && std::abs(from[phase]) > 0.0
                             ? lagDegrees(from[phase], to[phase])
                             : std::numeric_limits<double>::quiet_NaN();
    }
    return degrees;
}

CurrentSum sumOfCurrents(const Measurement& measurement) {
    using Samples = std::vector<double>;
    const auto rms = [](const Samples& x) {
        return std::sqrt(std::inner_product(x.begin(), x.end(), x.begin(), 0.0) / static_cast<double>(x.size()));
    };
    const Samples* const i = &measurement.samples[phaseTotal];
    Samples sum = i[0];
    for (const Samples& added : {i[1], i[2]}) {
        std::transform(sum.begin(), sum.end(), added.begin(), sum.begin(), std::plus<>());
    }
    return {rms(sum), std::max({rms(i[0]), rms(i[1]), rms(i[2])})};
}

}  // namespace

DerivedFigures derivedFigures(const Measurement& measurement, const Fundamentals& fundamentals,
                              const Parameters& parameters) {
    const Phasors& voltages = fundamentals.voltages;
    const Phasors& currents = fundamentals.currents;
    DerivedFigures figures;
    if (measurement.isCombined()) {
        figures.powerFactors = powerFactors(parameters);
        figures.currentLags = lags(voltages, currents);
    }
    if (!measurement.isThreePhase()) {
        return figures;
    }
    if (measurement.hasVoltages()) {
        figures.voltageLags = lags({voltages[0], voltages[0], voltages[0]}, voltages);
        figures.voltageUnbalance = unbalanceOf(voltages);
    }
    if (measurement.hasCurrents()) {
        figures.currentUnbalance = unbalanceOf(currents);
        figures.currentSum = sumOfCurrents(measurement);
    }
    return figures;
}

}  // namespace rt305
