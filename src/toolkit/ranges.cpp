#include "toolkit/ranges.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <new>

#include "toolkit/non_finite.h"

namespace coder {
namespace {

/// The number of whole steps from a to b, and the end of the last one.
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

void eml_float_colon(double a, double d, double b, std::vector<double>& y, int most) {
    assert(most >= 1);
    if (std::isnan(b - a) || !std::isfinite(d)) {
        y.assign(1, rtNaN);
        return;
    }
    const Steps steps = d == 0.0 ? Steps{-1.0, a} : stepsBetween(a, d, b);
    if (steps.count >= std::numeric_limits<int>::max()) {
        throw std::bad_array_new_length();
    }
    const int last = steps.count < 0.0 ? -1 : static_cast<int>(steps.count);
    const int made = std::min(last + 1, most);
    y.resize(static_cast<std::size_t>(made));
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

}  // namespace coder
