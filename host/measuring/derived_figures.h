#ifndef RT305_HOST_MEASURING_DERIVED_FIGURES_H
#define RT305_HOST_MEASURING_DERIVED_FIGURES_H

#include <array>
#include <optional>

#include "measuring/full_measurement.h"
#include "measuring/fundamentals.h"

namespace rt305 {

/// RMS values in A.
struct CurrentSum {
    double ofSum;
    double ofLargest;  // of the three currents
};

/// What the tool computes itself, in addition to the library. Empty where the channels for it are not measured, NaN
/// where they give no value.
struct DerivedFigures {
    std::optional<std::array<double, 1 + phaseTotal>> powerFactors{};  // P / (U I), total, a, b, c
    std::optional<PerPhase<double>> currentLags{};                     // degrees by which I lags U
    std::optional<PerPhase<double>> voltageLags{};                     // degrees by which U lags Ua
    std::optional<Unbalance> voltageUnbalance{};
    std::optional<Unbalance> currentUnbalance{};
    std::optional<CurrentSum> currentSum{};
};

/// `parameters` are those by the plain three-wattmeter method, which has S = U I; not used unless all six channels are
/// measured.
DerivedFigures derivedFigures(const Measurement& measurement, const Fundamentals& fundamentals,
                              const Parameters& parameters);

}  // namespace rt305

#endif
