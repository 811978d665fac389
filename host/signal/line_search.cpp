#include "signal/line_search.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

#include "base/sum.h"
#include "toolkit/fft.h"

namespace rt305 {

namespace {

constexpr std::size_t mostSamples = 65536;

std::vector<double> hannWindow(std::size_t length) {
    std::vector<double> window(length);
    const auto count = static_cast<double>(length);
    for (std::size_t k = 0; k < length; ++k) {
        window[k] = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * (static_cast<double>(k) + 0.5) / count);
    }
    return window;
}

/// The place of the largest peak in x, of which x[0] has the place `first`, by a parabola through the logarithms of
/// three neighbours.
std::optional<double> placeOfLargestPeak(std::span<const double> x, std::size_t first) {
    std::size_t best = 0;
    for (std::size_t k = 1; k + 1 < x.size(); ++k) {
        const bool isPeak = x[k] >= x[k - 1] && x[k] >= x[k + 1];
        best = isPeak && x[k] > (best == 0 ? 0.0 : x[best]) ? k : best;
    }
    if (best == 0) {
        return std::nullopt;
    }
    const double before = std::log(x[best - 1]);
    const double at = std::log(x[best]);
    const double behind = std::log(x[best + 1]);
    const double curvature = before - 2.0 * at + behind;
    const double shift = curvature < 0.0 ? 0.5 * (before - behind) / curvature : 0.0;
    return static_cast<double>(first + best) + std::clamp(std::isfinite(shift) ? shift : 0.0, -0.5, 0.5);
}

}  // namespace

std::span<const double> middleOf(std::span<const double> samples) {
    const std::size_t count = std::min(samples.size(), mostSamples);
    return samples.subspan((samples.size() - count) / 2, count);
}

/// The spectrum is that of the samples padded with zeros to a power of two.
LineSearch::LineSearch(std::size_t count)
    : count_(count),
      window_(hannWindow(std::min(count, mostSamples))),
      transform_(std::make_unique<coder::RealFft>(
          static_cast<int>(std::bit_ceil(std::max<std::size_t>(2 * window_.size(), 8))))) {}

LineSearch::~LineSearch() = default;
LineSearch::LineSearch(LineSearch&&) noexcept = default;
LineSearch& LineSearch::operator=(LineSearch&&) noexcept = default;

std::optional<double> LineSearch::strongestLine(std::span<const double> samples, double rateHz, double lowestHz,
                                                double highestHz) const {
    const auto middle = middleOf(samples);
    const bool hasRange = rateHz > 0.0 && std::isfinite(rateHz) && lowestHz <= highestHz;
    if (samples.size() != count_ || middle.size() < 4 || !hasRange) {
        return std::nullopt;
    }
    const double binHz = rateHz / static_cast<double>(transform_->size());
    const auto last = static_cast<double>(transform_->bins() - 1);
    const auto first = static_cast<std::size_t>(std::clamp(std::ceil(lowestHz / binHz), 1.0, last));
    const auto end = static_cast<std::size_t>(std::clamp(std::floor(highestHz / binHz) + 1.0, 0.0, last));
    if (first >= end) {
        return std::nullopt;
    }
    const double mean =
        sumOf(middle.size(), [&](std::size_t k) { return middle[k]; }) / static_cast<double>(middle.size());
    double* const row = transform_->workspace();
    for (std::size_t k = 0; k < middle.size(); ++k) {
        row[k] = window_[k] * (middle[k] - mean);
    }
    std::fill(row + middle.size(), row + transform_->size(), 0.0);
    const coder::creal_T* const bins = transform_->forward();
    std::vector<double> magnitudes(end + 2 - first);  // of the range and a neighbour on each side
    for (std::size_t i = 0; i < magnitudes.size(); ++i) {
        magnitudes[i] = std::hypot(bins[first - 1 + i].re, bins[first - 1 + i].im);
    }
    const auto place = placeOfLargestPeak(magnitudes, first - 1);
    return place ? std::optional(*place * binHz) : std::nullopt;
}

}  // namespace rt305
