#include "signal/fundamental.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace rt305 {

namespace {

constexpr double thresholdShare = 0.25;  // of the largest magnitude

}  // namespace

std::optional<double> estimateFundamental(const std::vector<double>& samples, double rateHz) {
    const double mean = std::accumulate(samples.begin(), samples.end(), 0.0) /
                        static_cast<double>(std::max<std::size_t>(samples.size(), 1));
    double largest = 0.0;
    for (const double x : samples) {
        largest = std::max(largest, std::fabs(x - mean));
    }
    const double threshold = thresholdShare * largest;
    std::vector<double> crossings;
    bool armed = false;  // the signal has been below -threshold since the last crossing
    double crossing = 0.0;
    for (std::size_t k = 1; k < samples.size(); ++k) {
        const double before = samples[k - 1] - mean;
        const double now = samples[k] - mean;
        if (before < 0.0 && now >= 0.0) {
            crossing = static_cast<double>(k) - now / (now - before);
        }
        if (armed && now > threshold) {
            crossings.push_back(crossing);
            armed = false;
        }
        armed = armed || now < -threshold;
    }
    if (crossings.size() < 2) {
        return std::nullopt;
    }
    return static_cast<double>(crossings.size() - 1) / (crossings.back() - crossings.front()) * rateHz;
}

}  // namespace rt305
