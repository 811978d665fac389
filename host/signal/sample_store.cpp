#include "signal/sample_store.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace rt305 {

namespace {

/// Adds the weights of the integral from far before up to `place`, times `sign`.
void addIntegralTo(double place, double sign, IntegralWeights& result) {
    const double floor = std::floor(place);
    const std::size_t last = static_cast<std::size_t>(floor) - result.first;  // the sample at or before the place
    // whole steps of (-1, 13, 13, -1) / 24 add up to ones but for these at the end
    constexpr std::array<double, 4> wholeSteps{25.0 / 24.0, 12.0 / 24.0, -1.0 / 24.0, 0.0};
    const auto part = integralOverPart(place - floor);
    for (std::size_t i = 0; i + 1 < last; ++i) {
        result.weights[i] += sign;
    }
    for (std::size_t i = 0; i < part.size(); ++i) {
        result.weights[last - 1 + i] += sign * (wholeSteps[i] + part[i]);
    }
}

}  // namespace

void SampleStore::append(const SampleBlock& block) {
    std::size_t count = 0;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        samples_[channel].insert(samples_[channel].end(), block[channel].begin(), block[channel].end());
        count = std::max(count, block[channel].size());
    }
    end_ += count;
}

void SampleStore::dropBefore(std::size_t sample) {
    if (sample <= first_ || 2 * (sample - first_) < end_ - first_) {
        return;
    }
    const auto count = static_cast<std::ptrdiff_t>(std::min(sample, end_) - first_);
    for (auto& samples : samples_) {
        if (!samples.empty()) {
            samples.erase(samples.begin(), samples.begin() + count);
        }
    }
    first_ += static_cast<std::size_t>(count);
}

std::array<double, 4> integralOverPart(double u) {
    const double square = u * u;
    const double cube = square * u / 3.0;
    const double fourth = square * square / 4.0;
    return {-(fourth - 3.0 * cube + square) / 6.0, (fourth - 2.0 * cube - 0.5 * square + 2.0 * u) / 2.0,
            -(fourth - cube - square) / 2.0, (fourth - 0.5 * square) / 6.0};
}

void setIntegral(double begin, double end, IntegralWeights& result) {
    assert(begin >= 1.0 && begin + 4.0 <= end);
    result.first = static_cast<std::size_t>(begin) - 1;
    result.weights.assign(static_cast<std::size_t>(end) + 3 - result.first, 0.0);
    addIntegralTo(end, 1.0, result);
    addIntegralTo(begin, -1.0, result);
}

}  // namespace rt305
