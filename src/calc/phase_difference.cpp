#include "calc/phase_difference.h"

#include <algorithm>
#include <cassert>
#include <memory>

#include "toolkit/extremes.h"
#include "toolkit/non_finite.h"
#include "toolkit/scalar.h"
#include "toolkit/simd.h"
#include "toolkit/sums.h"
#include "toolkit/windows.h"

namespace calc_modul_K9_web_ns {

using coder::creal_T;
using coder::samples;

namespace {

ALWAYS_INLINE inline void magnitudesOf(const creal_T* lines, std::size_t n, double* out) {
    for (std::size_t k = 0; k < n; ++k) {
        out[k] = coder::rt_hypotd_snf(lines[k].re, lines[k].im);
    }
}

}  // namespace

DominantPhase::DominantPhase(int n) : transform_(std::max(n, 1)) {
    coder::b_hanning(n, window_);
}

double DominantPhase::of(samples x) const {
    assert(static_cast<int>(x.size()) == window_.numel());
    if (x.empty()) {
        return rtNaN;
    }
    const auto bins = static_cast<std::size_t>(transform_.bins());
    const auto windowed = std::make_unique_for_overwrite<double[]>(x.size());
    const auto spectrum = std::make_unique_for_overwrite<creal_T[]>(bins);
    const auto magnitudes = std::make_unique_for_overwrite<double[]>(bins);
    coder::weighCentred(x, coder::mean(x), window_, windowed.get());
    transform_.forward({windowed.get(), x.size()}, spectrum.get());
    coder::vectorized<magnitudesOf>(static_cast<const creal_T*>(spectrum.get()), bins, magnitudes.get());
    double largest = 0.0;
    int position = 0;
    coder::maximum({magnitudes.get(), bins}, &largest, &position);
    const creal_T line = spectrum[static_cast<std::size_t>(position) - 1];
    return coder::rt_atan2d_snf(line.im, line.re);
}

double phdiffmeasure(samples x, samples y, const DominantPhase& shared) {
    const auto angle = [&](samples signal) {
        const int n = static_cast<int>(signal.size());
        return n == shared.length() ? shared.of(signal) : DominantPhase(n).of(signal);
    };
    return angle(y) - angle(x);
}

double phdiffmeasure(samples x, samples y) {
    return phdiffmeasure(x, y, DominantPhase(static_cast<int>(x.size())));
}

}  // namespace calc_modul_K9_web_ns
