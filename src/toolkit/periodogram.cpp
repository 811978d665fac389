#include "toolkit/periodogram.h"

#include <vector>

namespace coder {
namespace {

double energyOf(samples w) {
    return blockedSum(w.size(), [p = w.data()](std::size_t i) { return p[i] * p[i]; });
}

}  // namespace

Periodogram::Periodogram(column window, double rate)
    : window_(std::move(window)), fft_(std::max(window_.numel(), 1)), scale_(rate * energyOf(window_)) {
    frequencies_.set_size(fft_.bins());
    for (int k = 0; k < fft_.bins(); ++k) {
        frequencies_[k] = k * rate / fft_.size();
    }
    const double sum = combineVectorElements(window_);
    noiseBandwidth_ = scale_ / (sum * sum);
}

void Periodogram::density(samples x, column& pxx) const {
    assert(x.size() == static_cast<std::size_t>(window_.numel()));
    const double offset = mean(x);
    std::vector<double> windowed(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        windowed[i] = (x[i] - offset) * window_.data()[i];
    }
    std::vector<creal_T> transform(static_cast<std::size_t>(fft_.bins()));
    fft_.forward(windowed, transform.data());

    pxx.set_size(fft_.bins());
    for (std::size_t k = 0; k < transform.size(); ++k) {
        const creal_T bin = transform[k];
        pxx.data()[k] = 2.0 * (bin.re * bin.re + bin.im * bin.im) / scale_;
    }
    pxx[0] *= 0.5;
    if (fft_.size() % 2 == 0) {
        pxx[fft_.size() / 2] *= 0.5;
    }
}

double bandpower(samples pxx, double spacing) {
    return combineVectorElements(pxx) * spacing;
}

}  // namespace coder
