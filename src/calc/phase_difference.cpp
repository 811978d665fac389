#include "calc/phase_difference.h"

#include <algorithm>

#include "toolkit/non_finite.h"
#include "toolkit/scalar.h"
#include "toolkit/windows.h"

namespace calc_modul_K9_web_ns {

using coder::creal_T;
using coder::samples;

DominantPhase::DominantPhase(int n) : transform_(std::max(n, 1)) {
    coder::b_hanning(n, window_);
}

double DominantPhase::of(samples x) const {
    assert(static_cast<int>(x.size()) == window_.numel());
    if (x.empty()) {
        return rtNaN;
    }
    const double mean = coder::mean(x);
    std::vector<double> windowed(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        windowed[i] = (x[i] - mean) * window_.data()[i];
    }
    std::vector<creal_T> spectrum(static_cast<std::size_t>(transform_.bins()));
    transform_.forward(windowed, spectrum.data());
    std::vector<double> magnitudes(spectrum.size());
    std::transform(spectrum.begin(), spectrum.end(), magnitudes.begin(),
                   [](creal_T z) { return coder::rt_hypotd_snf(z.re, z.im); });
    double largest = 0.0;
    int position = 0;
    coder::maximum(magnitudes, &largest, &position);
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
