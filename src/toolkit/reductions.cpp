#include "toolkit/reductions.h"

#include <cmath>
#include <functional>
#include <limits>
#include <new>

#include "toolkit/non_finite.h"

namespace coder {
namespace {

/// Position of the first element that is before no other under better(), NaN skipped.
template <class Better>
std::size_t extremeIndex(samples x, Better better) {
    assert(!x.empty());
    std::size_t best = 0;
    while (best < x.size() && std::isnan(x[best])) {
        ++best;
    }
    if (best == x.size()) {
        return 0;
    }
    for (std::size_t i = best + 1; i < x.size(); ++i) {
        if (better(x[i], x[best])) {
            best = i;
        }
    }
    return best;
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

void maximum(samples x, double* value, int* index) {
    store(x, extremeIndex(x, std::greater<>()), value, index);
}

void minimum(samples x, double* value, int* index) {
    store(x, extremeIndex(x, std::less<>()), value, index);
}

double maximum(samples x) {
    return x[extremeIndex(x, std::greater<>())];
}

double peak2peak(samples x) {
    return maximum(x) - x[extremeIndex(x, std::less<>())];
}

void diff(const column& x, column& y) {
    const int n = std::max(x.numel() - 1, 0);
    y.set_size(n);
    for (int k = 0; k < n; ++k) {
        y[k] = x[k + 1] - x[k];
    }
}

void eml_float_colon(double a, double d, double b, row& y) {
    if (std::isnan(b - a) || !std::isfinite(d)) {
        y.set_size(1, 1);
        y[0] = rtNaN;
        return;
    }
    const Steps steps = d == 0.0 ? Steps{-1.0, a} : stepsBetween(a, d, b);
    if (steps.count >= std::numeric_limits<int>::max()) {
        throw std::bad_array_new_length();
    }
    y.set_size(1, steps.count < 0.0 ? 0 : static_cast<int>(steps.count) + 1);
    const int last = y.numel() - 1;
    const int half = last / 2;
    const bool whole = a == std::floor(a) && d == std::floor(d);
    double* const value = y.data();
    for (int k = 0; k <= last; ++k) {
        value[k] = whole || k <= half ? a + k * d : steps.end - (last - k) * d;
    }
    if (!whole && last > 0 && 2 * half == last) {
        value[half] = (a + steps.end) / 2.0;
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
