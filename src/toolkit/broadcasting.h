#ifndef RT305_4_TOOLKIT_BROADCASTING_H
#define RT305_4_TOOLKIT_BROADCASTING_H

#include <algorithm>
#include <cstddef>
#include <utility>

#include "toolkit/array.h"

namespace coder {

/// Length of an element-wise expression over operands of lengths na and nb (singleton expansion): an operand of length
/// 1 is repeated to the length of the other; otherwise the longer operand is cut to the shorter.
constexpr int expandedLength(int na, int nb) {
    if (nb == 1) {
        return na;
    }
    return na == 1 ? nb : std::min(na, nb);
}

/// Element access under that rule: a single element is found at every index.
class Expanded {
public:
    explicit Expanded(samples x) : data_(x.data()), step_(x.size() == 1 ? 0 : 1) {}
    double operator[](std::size_t i) const { return data_[i * step_]; }

private:
    const double* data_;
    std::size_t step_;
};

/// out[i] = op(a[i], b[i]) with singleton expansion. out may be a or b.
template <class Op>
void binary_expand_op(row& out, const row& a, const row& b, Op op) {
    const int n = expandedLength(a.numel(), b.numel());
    row result;
    result.set_size(1, n);
    const Expanded x(a);
    const Expanded y(b);
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
        result.data()[i] = op(x[i], y[i]);
    }
    out = std::move(result);
}

}  // namespace coder

#endif
