#include "signal/usual_level.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "signal/line_search.h"
#include "signal/median.h"
#include "signal/sample_store.h"
#include "signal/steadiness.h"

namespace rt305 {

namespace {

constexpr double longestLook = 10.0;  // s
constexpr double leastShareOfHighest = 0.5;
constexpr double leastShareOfHighestSignal = 0.8;

/// Mean of the values of at least 80 % of the highest one.
double meanOfHigh(const std::vector<double>& values) {
    const double least = leastShareOfHighestSignal * *std::max_element(values.begin(), values.end());
    double sum = 0.0;
    double count = 0.0;
    for (const double value : values) {
        sum += value >= least ? value : 0.0;
        count += value >= least ? 1.0 : 0.0;
    }
    return sum / count;
}

/// RMS of each cycle, mean of the signals that are not far below the highest.
std::vector<double> cycleRms(const std::vector<std::span<const double>>& signals, double period) {
    std::vector<double> result;
    IntegralWeights integral;
    double begin = 1.0;
    while (begin + period + 3.0 < static_cast<double>(signals[0].size())) {
        setIntegral(begin, begin + period, integral);
        std::vector<double> values;
        for (const auto& signal : signals) {
            double squares = 0.0;
            for (std::size_t k = 0; k < integral.weights.size(); ++k) {
                const double x = signal[integral.first + k];
                squares += integral.weights[k] * x * x;
            }
            values.push_back(std::sqrt(std::fmax(0.0, squares / period)));
        }
        result.push_back(meanOfHigh(values));
        begin += period;
    }
    return result;
}

}  // namespace

double usualLevelOf(std::vector<std::span<const double>> signals, double rateHz, double nominalHz) {
    for (auto& signal : signals) {
        signal = signal.first(std::min(signal.size(), static_cast<std::size_t>(longestLook * rateHz)));
    }
    if (signals.empty()) {
        return 0.0;
    }
    const auto energyOf = [](const auto& signal) {
        return std::inner_product(signal.begin(), signal.end(), signal.begin(), 0.0);
    };
    const auto strongest = std::ranges::max_element(signals, {}, energyOf);
    const double frequency = strongestLine(*strongest, rateHz, 0.8 * nominalHz, 1.2 * nominalHz).value_or(nominalHz);
    const double period = rateHz / frequency;
    const auto cycles = cycleRms(signals, period);
    const double enough = cycles.empty() ? 0.0 : leastShareOfHighest * *std::max_element(cycles.begin(), cycles.end());
    for (const SteadyPart& part : steadinessOf(signals, rateHz, frequency).parts) {
        const auto first = std::min(cycles.size(), static_cast<std::size_t>(static_cast<double>(part.first) / period));
        const auto count =
            std::min(cycles.size() - first, static_cast<std::size_t>(static_cast<double>(part.count) / period));
        const double level = median({cycles.begin() + static_cast<std::ptrdiff_t>(first),
                                     cycles.begin() + static_cast<std::ptrdiff_t>(first + count)});
        if (level >= enough) {
            return level;
        }
    }
    const auto first = std::find_if(cycles.begin(), cycles.end(), [enough](double rms) { return rms >= enough; });
    return first == cycles.end() ? 0.0 : *first;
}

}  // namespace rt305
