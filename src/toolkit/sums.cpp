#include "toolkit/sums.h"

#include <cmath>
#include <numeric>

#include "toolkit/simd.h"

namespace coder {
namespace {

ALWAYS_INLINE inline void weigh(double* x, double offset, const double* w, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        x[i] = (x[i] - offset) * w[i];
    }
}

ALWAYS_INLINE inline double addMagnitudes(const double* x, std::size_t n) {
    constexpr std::size_t lanes = 32;
    double sums[lanes] = {};
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            sums[lane] += std::fabs(x[i + lane]);
        }
    }
    for (; i < n; ++i) {
        sums[0] += std::fabs(x[i]);
    }
    return std::accumulate(sums, sums + lanes, 0.0);
}

}  // namespace

double combineVectorElements(samples x) {
    return blockedSum(x.size(), [p = x.data()](std::size_t i) { return p[i]; });
}

double mean(samples x) {
    return combineVectorElements(x) / static_cast<double>(x.size());
}

double sumOfMagnitudes(samples x) {
    return vectorized<addMagnitudes>(x.data(), x.size());
}

void weighCentred(double* x, double mean, samples w) {
    vectorized<weigh>(x, mean, w.data(), w.size());
}

}  // namespace coder
