#include "toolkit/sums.h"

#include <cassert>

#include "toolkit/simd.h"

namespace coder {
namespace {

ALWAYS_INLINE inline void weigh(const double* x, double offset, const double* w, std::size_t n, double* out) {
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = (x[i] - offset) * w[i];
    }
}

}  // namespace

double combineVectorElements(samples x) {
    return blockedSum(x.size(), [p = x.data()](std::size_t i) { return p[i]; });
}

double mean(samples x) {
    return combineVectorElements(x) / static_cast<double>(x.size());
}

void weighCentred(samples x, samples w, double* out) {
    assert(x.size() == w.size());
    vectorized<weigh>(x.data(), mean(x), w.data(), x.size(), out);
}

}  // namespace coder
