#include "signal/linear_prediction.h"

#include <algorithm>
#include <numeric>

namespace rt305 {

namespace {

constexpr std::size_t longestBlock = 1024;
constexpr std::size_t highestOrder = 96;
constexpr double smallestError = 1e-26;  // squared, relative to the power of the signal: rounding errors

/// Coefficients a in x[k] = sum a[j] * x[k - 1 - j] + error. Each order minimises the sum of the squared forward and
/// backward errors. Stops early when only rounding errors are left.
std::vector<double> predictorOf(const std::vector<double>& x, std::size_t order) {
    std::vector<double> forward = x;
    std::vector<double> backward = x;
    std::vector<double> a;
    const double power = std::inner_product(x.begin(), x.end(), x.begin(), 0.0);
    for (std::size_t m = 0; m < order; ++m) {
        double product = 0.0;
        double energy = 0.0;
        for (std::size_t k = m + 1; k < x.size(); ++k) {
            product += forward[k] * backward[k - 1];
            energy += forward[k] * forward[k] + backward[k - 1] * backward[k - 1];
        }
        if (!(energy > smallestError * power)) {
            break;
        }
        const double reflection = 2.0 * product / energy;
        const std::vector<double> previous = a;
        a.push_back(reflection);
        for (std::size_t j = 0; j < m; ++j) {
            a[j] = previous[j] - reflection * previous[m - 1 - j];
        }
        for (std::size_t k = x.size() - 1; k > m; --k) {
            const double f = forward[k];
            forward[k] = f - reflection * backward[k - 1];
            backward[k] = backward[k - 1] - reflection * f;
        }
    }
    return a;
}

}  // namespace

std::vector<double> predicted(const std::vector<double>& x, std::size_t count) {
    const std::size_t block = std::min(x.size(), longestBlock);
    if (block == 0) {
        return std::vector<double>(count);
    }
    std::vector<double> y(x.end() - static_cast<std::ptrdiff_t>(block), x.end());
    const double mean = std::accumulate(y.begin(), y.end(), 0.0) / static_cast<double>(block);
    std::for_each(y.begin(), y.end(), [mean](double& value) { value -= mean; });
    const std::vector<double> a = predictorOf(y, std::min(block / 3, highestOrder));
    for (std::size_t k = 0; k < count; ++k) {
        y.push_back(std::inner_product(a.begin(), a.end(), y.rbegin(), 0.0));
    }
    y.erase(y.begin(), y.begin() + static_cast<std::ptrdiff_t>(block));
    std::for_each(y.begin(), y.end(), [mean](double& value) { value += mean; });
    return y;
}

}  // namespace rt305
