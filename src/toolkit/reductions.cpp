#include "toolkit/reductions.h"

#include <cmath>
#include <limits>
#include <new>

#include "toolkit/non_finite.h"
#include "toolkit/vector_clones.h"

namespace coder {
namespace {

/// The largest element, NaN skipped, or the smallest for direction -1, in that direction.
RT305_4_VECTOR_CLONES double extreme(const double* x, std::size_t n, double direction) {
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

/// Position of the first element that none exceeds in a direction, NaN skipped; 0 when all are NaN.
std::size_t extremeIndex(samples x, double direction) {
    assert(!x.empty());
    const auto first = std::find(x.begin(), x.end(), direction * extreme(x.data(), x.size(), direction));
    return first == x.end() ? 0 : static_cast<std::size_t>(first - x.begin());
}

RT305_4_VECTOR_CLONES void weigh(const double* x, double offset, const double* w, std::size_t n, double* out) {
    for (std::size_t i = 0; i < n; ++i) {
        out[i] = (x[i] - offset) * w[i];
    }
}

void store(samples x, std::size_t at, double* value, int* index) {
    *value = x[at];
    *index = static_cast<int>(at) + 1;
}

/// How many whole steps lead from a to b, and where the last one ends.
struct Steps {
    double count;
    double end;
};

Steps stepsBetween(double a, double d, double b) {
    const double count = std::floor((b - a) / d + 0.5);
    const double end = a + count * d;
    if (std::fabs(end - b) < 4.440892098500626e-16 * std::max(std::fabs(a), std::fabs(b))) {
        return {count, b};
    }
    const bool beyond = d > 0.0 ? end > b : end < b;
    return beyond ? Steps{count - 1.0, a + (count - 1.0) * d} : Steps{count, end};
}

}  // namespace

double combineVectorElements(samples x) {
    return blockedSum(x.size(), [p = x.data()](std::size_t i) { return p[i]; });
}

creal_T sum(const complex_row& x) {
    return blockedSum(static_cast<std::size_t>(x.numel()), [p = x.data()](std::size_t i) { return p[i]; });
}

double mean(samples x) {
    return combineVectorElements(x) / static_cast<double>(x.size());
}

void weighCentred(samples x, samples w, double* out) {
    assert(x.size() == w.size());
    weigh(x.data(), mean(x), w.data(), x.size(), out);
}

void maximum(samples x, double* value, int* index) {
    store(x, extremeIndex(x, 1.0), value, index);
}

void minimum(samples x, double* value, int* index) {
    store(x, extremeIndex(x, -1.0), value, index);
}

double maximum(samples x) {
    return x[extremeIndex(x, 1.0)];
}

double peak2peak(samples x) {
    return maximum(x) - x[extremeIndex(x, -1.0)];
}

void diff(const column& x, column& y) {
    const int n = std::max(x.numel() - 1, 0);
    y.set_size(n);
    for (int k = 0; k < n; ++k) {
        y[k] = x[k + 1] - x[k];
    }
}

void eml_float_colon(double a, double d, double b, row& y, int most) {
    if (std::isnan(b - a) || !std::isfinite(d)) {
        y.set_size(1, 1);
        y[0] = rtNaN;
        return;
    }
    const Steps steps = d == 0.0 ? Steps{-1.0, a} : stepsBetween(a, d, b);
    if (steps.count >= std::numeric_limits<int>::max()) {
        throw std::bad_array_new_length();
    }
    const int last = steps.count < 0.0 ? -1 : static_cast<int>(steps.count);
    const int made = std::min(last + 1, most);
    y.set_size(1, made);
    const bool whole = a == std::floor(a) && d == std::floor(d);
    const int fromStart = whole ? made : std::min(last / 2 + 1, made);
    double* const value = y.data();
    for (int k = 0; k < fromStart; ++k) {
        value[k] = a + k * d;
    }
    for (int k = fromStart; k < made; ++k) {
        value[k] = steps.end - (last - k) * d;
    }
    if (!whole && last > 0 && last % 2 == 0 && last / 2 < made) {
        value[last / 2] = (a + steps.end) / 2.0;
    }
}

void eml_float_colon(double a, double b, row& y) {
    eml_float_colon(a, 1.0, b, y);
}

void bsxfun(const column& a, const column& b, column& c) {
    const int n = expandedLength(a.numel(), b.numel());
    column result;
    result.set_size(n);
    const expanded x(a);
    const expanded y(b);
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
        result.data()[i] = x[i] * y[i];
    }
    c = std::move(result);
}

}  // namespace coder
