#include "signal/fractional_delay.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

#include "signal/gap_filling.h"
#include "signal/linear_prediction.h"
#include "toolkit/bessel.h"

namespace rt305 {

namespace {

constexpr std::ptrdiff_t usualReach = 32;  // samples to each side
constexpr double kaiserBeta = 9.0;

/// `before` predicted samples, x, and `behind` predicted ones.
std::vector<double> extended(const std::vector<double>& x, std::ptrdiff_t before, std::ptrdiff_t behind) {
    std::vector<double> y = predicted({x.rbegin(), x.rend()}, static_cast<std::size_t>(before));
    std::reverse(y.begin(), y.end());
    y.insert(y.end(), x.begin(), x.end());
    const auto tail = predicted(x, static_cast<std::size_t>(behind));
    y.insert(y.end(), tail.begin(), tail.end());
    return y;
}

}  // namespace

std::vector<double> sincWeights(double fraction, std::ptrdiff_t reach) {
    std::vector<double> weights(static_cast<std::size_t>(2 * reach));
    double sum = 0.0;
    for (std::ptrdiff_t i = 0; i < 2 * reach; ++i) {
        const double distance = static_cast<double>(i - reach + 1) - fraction;
        const double r = distance / static_cast<double>(reach);
        const double angle = std::numbers::pi * distance;
        const double sinc = distance == 0.0 ? 1.0 : std::sin(angle) / angle;
        const double window = coder::besseli(kaiserBeta * std::sqrt(std::max(0.0, 1.0 - r * r)));
        weights[static_cast<std::size_t>(i)] = sinc * window;
        sum += sinc * window;
    }
    for (double& weight : weights) {
        weight /= sum;
    }
    return weights;
}

std::vector<double> delayed(const std::vector<double>& x, double delay) {
    const auto count = static_cast<std::ptrdiff_t>(x.size());
    const double place = std::clamp(-delay, -static_cast<double>(count), static_cast<double>(count));
    const auto whole = static_cast<std::ptrdiff_t>(std::floor(place));
    const auto weights = sincWeights(place - static_cast<double>(whole), usualReach);
    const std::ptrdiff_t before = std::max<std::ptrdiff_t>(0, usualReach - 1 - whole);
    const std::ptrdiff_t behind = std::max<std::ptrdiff_t>(0, usualReach + whole);
    const std::vector<double> around = extended(bridged(x), before, behind);

    std::vector<double> y(x.size());
    for (std::ptrdiff_t k = 0; k < count; ++k) {
        const double* const from = around.data() + (k + whole + before - usualReach + 1);
        double sum = 0.0;
        for (std::size_t i = 0; i < weights.size(); ++i) {
            sum += weights[i] * from[i];
        }
        const auto isMissing = [&](std::ptrdiff_t at) {
            return at >= 0 && at < count && std::isnan(x[static_cast<std::size_t>(at)]);
        };
        const bool isBetween = place > static_cast<double>(whole);
        const bool isInGap = isMissing(k + whole) || (isBetween && isMissing(k + whole + 1));
        y[static_cast<std::size_t>(k)] = isInGap ? std::numeric_limits<double>::quiet_NaN() : sum;
    }
    return y;
}

}  // namespace rt305
