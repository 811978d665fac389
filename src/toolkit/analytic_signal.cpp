#include "toolkit/analytic_signal.h"

#include <algorithm>
#include <vector>

namespace coder {

void hilbert(samples x, complex_row& y) {
    if (x.empty()) {
        y.set_size(1, 0);
        return;
    }
    hilbert(x, RealFft(static_cast<int>(x.size())), y);
}

void hilbert(samples x, const RealFft& fft, complex_row& y) {
    assert(x.size() == static_cast<std::size_t>(fft.size()));
    std::vector<creal_T> half(static_cast<std::size_t>(fft.bins()));
    fft.forward(x, half.data());

    // The Hilbert transform turns every line back by a quarter period: a factor -i on the positive frequencies. The
    // real lines at DC and half the rate become imaginary, which the inverse leaves out.
    for (creal_T& line : half) {
        line = {line.im, -line.re};
    }
    std::vector<double> quadrature(x.size());
    fft.inverse(half.data(), quadrature.data());

    y.set_size(1, fft.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        y.data()[i] = {x[i], quadrature[i]};
    }
}

creal_T analyticProductSum(samples a, samples b, const RealFft& shared) {
    const int n = expandedLength(static_cast<int>(a.size()), static_cast<int>(b.size()));
    if (n == 0) {
        return {0.0, 0.0};
    }
    if (n != shared.size()) {
        return analyticProductSum(a, b, RealFft(n));
    }
    const auto bins = static_cast<std::size_t>(shared.bins());
    const auto spectrum = [&](samples x) {
        std::vector<creal_T> half(bins);
        if (x.size() == 1) {
            half[0].re = n * x[0];
        } else {
            shared.forward(x, half.data());
        }
        return half;
    };
    const std::vector<creal_T> A = spectrum(a);
    const std::vector<creal_T> B = spectrum(b);
    const creal_T total = blockedSum(bins, [&](std::size_t k) {
        const double weight = k == 0 || 2 * k == static_cast<std::size_t>(n) ? 1.0 : 4.0;
        return creal_T{weight * (A[k].re * B[k].re + A[k].im * B[k].im),
                       weight * (A[k].im * B[k].re - A[k].re * B[k].im)};
    });
    return {total.re / n, total.im / n};
}

creal_T analyticProductSum(samples a, samples b) {
    const int n = expandedLength(static_cast<int>(a.size()), static_cast<int>(b.size()));
    return analyticProductSum(a, b, RealFft(std::max(n, 1)));
}

}  // namespace coder
