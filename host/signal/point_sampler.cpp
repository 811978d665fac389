#include "signal/point_sampler.h"

#include "signal/fractional_delay.h"

namespace rt305 {

namespace {

constexpr std::size_t taps = 32;
constexpr std::size_t fractions = 256;

/// The sum of products; four side by side, which is faster.
double product(const double* weights, const double* x) {
    double sums[4] = {};
    for (std::size_t i = 0; i < taps; i += 4) {
        for (std::size_t lane = 0; lane < 4; ++lane) {
            sums[lane] += weights[i + lane] * x[i + lane];
        }
    }
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

}  // namespace

PointSampler::PointSampler() {
    for (std::size_t i = 0; i <= fractions; ++i) {
        const auto weights = sincWeights(static_cast<double>(i) / static_cast<double>(fractions), taps / 2);
        kernels_.insert(kernels_.end(), weights.begin(), weights.end());
    }
}

void PointSampler::sample(const SampleStore& store, double begin, double end,
                          PerChannel<std::vector<double>>& rows) const {
    std::vector<std::pair<const double*, std::vector<double>*>> channels;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (!rows[channel].empty()) {
            channels.emplace_back(store.from(channel, static_cast<std::size_t>(begin) + 1 - taps / 2), &rows[channel]);
        }
    }
    const std::size_t count = channels.empty() ? 0 : channels[0].second->size();
    const double step = (end - begin) / static_cast<double>(count);
    const double offset = begin - static_cast<double>(static_cast<std::size_t>(begin));
    std::array<double, taps> weights{};
    for (std::size_t k = 0; k < count; ++k) {
        const double place = offset + step * static_cast<double>(k);
        const auto whole = static_cast<std::size_t>(place);
        const double fraction = (place - static_cast<double>(whole)) * static_cast<double>(fractions);
        const auto row = static_cast<std::size_t>(fraction);
        const double part = fraction - static_cast<double>(row);
        const double* const kernel = kernels_.data() + row * taps;
        for (std::size_t i = 0; i < taps; ++i) {
            weights[i] = kernel[i] + part * (kernel[taps + i] - kernel[i]);
        }
        for (const auto& [samples, points] : channels) {
            (*points)[k] = product(weights.data(), samples + whole);
        }
    }
}

}  // namespace rt305
