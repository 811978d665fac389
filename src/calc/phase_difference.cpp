#include "calc/phase_difference.h"

#include <algorithm>
#include <cassert>
#include <span>

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
    assert(static_cast<int>(x.size()) == length());
    std::copy(x.begin(), x.end(), row());
    return ofRow(coder::mean(x));
}

double DominantPhase::ofRow(double mean) const {
    const samples w = window_;
    if (w.empty()) {
        return rtNaN;
    }
    coder::weighCentred(row(), mean, w);
    const creal_T* const spectrum = transform_.forward();
    const std::span magnitudes(transform_.workspace(spectrum), static_cast<std::size_t>(transform_.bins()));
    coder::vectorized<magnitudesOf>(spectrum, magnitudes.size(), magnitudes.data());
    double largest = 0.0;
    int position = 0;
    coder::maximum(magnitudes, &largest, &position);
    const creal_T line = spectrum[position - 1];
    return coder::rt_atan2d_snf(line.im, line.re);
}

double phdiffmeasure(samples x, samples y) {
    const DominantPhase shared(static_cast<int>(x.size()));
    return (x.size() == y.size() ? shared.of(y) : DominantPhase(static_cast<int>(y.size())).of(y)) - shared.of(x);
}

}  // namespace calc_modul_K9_web_ns
