#include "toolkit/periodogram.h"

#include <algorithm>
#include <cassert>

#include "toolkit/simd.h"
#include "toolkit/sums.h"

namespace coder {
namespace {

/// F[k] = k rate / n
ALWAYS_INLINE inline void fillFrequencies(double rate, int n, double* F, int bins) {
    for (int k = 0; k < bins; ++k) {
        F[k] = k * rate / n;
    }
}

/// pxx = 2 |bins|^2 / scale
ALWAYS_INLINE inline void scaledPower(const creal_T* bins, double scale, std::size_t n, double* pxx) {
    for (std::size_t k = 0; k < n; ++k) {
        pxx[k] = 2.0 * (bins[k].re * bins[k].re + bins[k].im * bins[k].im) / scale;
    }
}

}  // namespace

Periodogram::Periodogram(column window, double rate) : window_(std::move(window)), fft_(std::max(window_.numel(), 1)) {
    frequencies_.set_size(fft_.bins());
    vectorized<fillFrequencies>(rate, fft_.size(), frequencies_.data(), fft_.bins());
    const samples w = window_;
    const auto [sum, energy] = blockedSum(w.size(), [p = w.data()](std::size_t i) {
                                   return SideBySide<2>{{p[i], p[i] * p[i]}};
                               }).sums;
    scale_ = rate * energy;
    noiseBandwidth_ = scale_ / (sum * sum);
}

std::span<double> Periodogram::density(samples x) const {
    assert(x.size() == row().size());
    std::copy(x.begin(), x.end(), row().begin());
    return density(mean(x));
}

std::span<double> Periodogram::density(double mean) const {
    weighCentred(row().data(), mean, window_);
    if (row().empty()) {
        *fft_.workspace() = 0.0;
    }
    const creal_T* const transform = fft_.forward();
    const std::span pxx(fft_.workspace(transform), static_cast<std::size_t>(fft_.bins()));
    vectorized<scaledPower>(transform, scale_, pxx.size(), pxx.data());
    pxx.front() *= 0.5;
    if (fft_.size() % 2 == 0) {
        pxx.back() *= 0.5;
    }
    return pxx;
}

double bandpower(samples pxx, double spacing) {
    return combineVectorElements(pxx) * spacing;
}

}  // namespace coder
