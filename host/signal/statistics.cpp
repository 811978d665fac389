#include "signal/statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "toolkit/sums.h"

namespace rt305 {

namespace {

double finiteOrNan(double x) {
    return std::isfinite(x) ? x : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

Statistics statisticsOf(std::span<const double> samples, double coefficient) {
    const auto n = static_cast<double>(samples.size());
    const double* const x = samples.data();
    const auto zeros = static_cast<double>(std::count(samples.begin(), samples.end(), 0.0));
    double total = coder::blockedSum(samples.size(), [=](std::size_t i) { return x[i]; });
    const double replacement = zeros == 0.0 || zeros == n ? 0.0 : total / (n - zeros);
    const auto filled = [=](std::size_t i) { return x[i] == 0.0 ? replacement : x[i]; };
    if (zeros > 0.0) {
        total = coder::blockedSum(samples.size(), filled);
    }
    const double offset = total / n;
    const auto conditioned = [=](std::size_t i) { return (filled(i) - offset) * coefficient; };
    const auto [sum, squares] = coder::blockedSum(samples.size(), [=](std::size_t i) {
                                    const double y = conditioned(i);
                                    return coder::SideBySide<2>{{y, y * y}};
                                }).sums;
    double smallest = std::numeric_limits<double>::quiet_NaN();
    double largest = smallest;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double y = conditioned(i);
        smallest = y >= smallest ? smallest : y;  // the first, too
        largest = y <= largest ? largest : y;
    }
    const double rms = std::sqrt(squares / n);
    const double peak = std::fmax(std::fabs(largest), std::fabs(smallest));
    return {finiteOrNan(sum / n), finiteOrNan(rms), finiteOrNan(peak / rms), finiteOrNan(largest - smallest)};
}

}  // namespace rt305
