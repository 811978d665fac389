#include "toolkit/extremes.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

#include "toolkit/simd.h"

namespace coder {
namespace {

/// The largest element for direction 1; minus the smallest for direction -1. NaN is skipped.
ALWAYS_INLINE inline double extreme(const double* x, std::size_t n, double direction) {
    constexpr std::size_t lanes = 32;
    double best[lanes];
    std::fill_n(best, lanes, -std::numeric_limits<double>::infinity());
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const double value = direction * x[i + lane];
            best[lane] = value > best[lane] ? value : best[lane];
        }
    }
    for (; i < n; ++i) {
        best[0] = std::fmax(best[0], direction * x[i]);
    }
    return *std::max_element(best, best + lanes);
}

void findExtreme(samples x, double direction, double* value, int* index) {
    assert(!x.empty());
    const double wanted = direction * vectorized<extreme>(x.data(), x.size(), direction);
    const auto found = std::find(x.begin(), x.end(), wanted);
    const auto first = found == x.end() ? x.begin() : found;  // none: all are NaN
    *value = *first;
    *index = static_cast<int>(first - x.begin()) + 1;
}

}  // namespace

void maximum(samples x, double* value, int* index) {
    findExtreme(x, 1.0, value, index);
}

void minimum(samples x, double* value, int* index) {
    findExtreme(x, -1.0, value, index);
}

}  // namespace coder
