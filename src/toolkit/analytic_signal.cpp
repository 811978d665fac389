#include "toolkit/analytic_signal.h"

#include <algorithm>
#include <vector>

#include "toolkit/broadcasting.h"
#include "toolkit/sums.h"

namespace coder {

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
    return analyticProductSum(A.data(), B.data(), n);
}

creal_T analyticProductSum(const creal_T* A, const creal_T* B, int n) {
    const std::size_t bins = static_cast<std::size_t>(n) / 2 + 1;
    const creal_T total = blockedSum(bins, [=](std::size_t k) {
        const double weight = k == 0 || 2 * k == static_cast<std::size_t>(n) ? 1.0 : 4.0;
        return creal_T{weight * (A[k].re * B[k].re + A[k].im * B[k].im),
                       weight * (A[k].im * B[k].re - A[k].re * B[k].im)};
    });
    return {total.re / n, total.im / n};
}

}  // namespace coder
