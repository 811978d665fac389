#include "toolkit/periodogram.h"

#include <cassert>
#include <memory>

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

void Periodogram::density(samples x, double mean, column& pxx) const {
    assert(x.size() == static_cast<std::size_t>(window_.numel()));
    const auto windowed = std::make_unique_for_overwrite<double[]>(x.size());
    weighCentred(x, mean, window_, windowed.get());
    const auto bins = static_cast<std::size_t>(fft_.bins());
    const auto transform = std::make_unique_for_overwrite<creal_T[]>(bins);
    fft_.forward({windowed.get(), x.size()}, transform.get());
    pxx.set_size(fft_.bins());
    vectorized<scaledPower>(transform.get(), scale_, bins, pxx.data());
    pxx[0] *= 0.5;
    if (fft_.size() % 2 == 0) {
        pxx[fft_.size() / 2] *= 0.5;
    }
}

double bandpower(samples pxx, double spacing) {
    return combineVectorElements(pxx) * spacing;
}

}  // namespace coder
