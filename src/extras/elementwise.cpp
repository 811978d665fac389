#include "extras/elementwise.h"

#include <algorithm>

#include "toolkit/broadcasting.h"
#include "toolkit/extremes.h"
#include "toolkit/ranges.h"
#include "toolkit/sums.h"

namespace coder {

void diff(const column& x, column& y) {
    const int n = std::max(x.numel() - 1, 0);
    y.set_size(n);
    for (int k = 0; k < n; ++k) {
        y[k] = x[k + 1] - x[k];
    }
}

void bsxfun(const column& a, const column& b, column& c) {
    const int n = expandedLength(a.numel(), b.numel());
    column result;
    result.set_size(n);
    const Expanded x(a);
    const Expanded y(b);
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
        result.data()[i] = x[i] * y[i];
    }
    c = std::move(result);
}

bool iseq(double a, double b) {
    return a == b;
}

creal_T sum(const complex_row& x) {
    return blockedSum(static_cast<std::size_t>(x.numel()), [p = x.data()](std::size_t i) { return p[i]; });
}

void eml_float_colon(double a, double b, std::vector<double>& y) {
    eml_float_colon(a, 1.0, b, y);
}

double peak2peak(samples x) {
    double largest = 0.0;
    double smallest = 0.0;
    int position = 0;
    maximum(x, &largest, &position);
    minimum(x, &smallest, &position);
    return largest - smallest;
}

}  // namespace coder
