#ifndef RT305_HOST_MEASURING_DERIVED_FIGURES_H
#define RT305_HOST_MEASURING_DERIVED_FIGURES_H

#include <array>
#include <optional>

#include "measuring/full_measurement.h"
#include "measuring/fundamentals.h"

namespace rt305 {

/// A figure in total and by phase; NaN where it is not defined.
using TotalAndPhases = std::array<double, 1 + phaseTotal>;

/// Power by IEEE Std 1459-2010, from the samples without their means. By phase P is the mean of u i, S = U I,
/// N = sqrt(S^2 - P^2), PF = P / S; P1, Q1 and S1 belong to the fundamental, Q1 positive when the current lags, and
/// DPF = P1 / S1. In total P, P1 and Q1 are sums; S is the effective apparent power, N and PF belong to it; S1 is the
/// magnitude of P1 + j Q1. When the signal is not steady, P1 + j Q1 by phase is the mean over the cycles; in less than
/// half a cycle it is NaN.
struct PowerFigures {
    TotalAndPhases P, S, N, PF, P1, Q1, S1, DPF;  // W, VA, var
    double vectorS;                               // |sum of P + j sum of Q|, Q of a phase being N with the sign of Q1
    double arithmeticS;                           // sum of U I
    double effectiveS;                            // 3 Ue Ie
};

/// RMS values in A.
struct CurrentSum {
    double ofSum;
    double ofLargest;  // of the three currents
};

/// What the tool computes itself from the samples at their own rate. Empty where the channels for it are not measured;
/// NaN where they give no value. Symmetrical components and angles need a steady fundamental.
struct DerivedFigures {
    std::optional<TotalAndPhases> voltages{};        // RMS without the mean, V
    std::optional<PerPhase<double>> lineVoltages{};  // of ab, bc and ca: the same
    std::optional<TotalAndPhases> currents{};        // A
    std::optional<PowerFigures> power{};
    std::optional<SequenceComponents> voltageSequence{};
    std::optional<SequenceComponents> currentSequence{};
    std::optional<PerPhase<double>> currentLags{};  // degrees by which I lags U
    std::optional<PerPhase<double>> voltageLags{};  // degrees by which U lags Ua
    std::optional<Unbalance> voltageUnbalance{};
    std::optional<Unbalance> currentUnbalance{};
    std::optional<CurrentSum> currentSum{};  // without the means
};

DerivedFigures derivedFigures(const FullMeasurement& full, const Fundamentals& fundamentals);

}  // namespace rt305

#endif
