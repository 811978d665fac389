#ifndef RT305_4_TOOLKIT_REDUCTIONS_H
#define RT305_4_TOOLKIT_REDUCTIONS_H

#include <algorithm>
#include <cstddef>
#include <limits>
#include <span>

#include "toolkit/array.h"

namespace coder {

using samples = std::span<const double>;

/// Sum of term(0) ... term(n-1); 0 for n = 0. The order is fixed bit for bit: blocks of 1024 terms (the last one may be
/// shorter) are each added left to right, then the block sums are added left to right. Blocks are independent chains,
/// so several run side by side without changing a bit of the result. Where a block is shorter, or missing, -0 stands
/// for its terms: adding that changes no sum.
template <class Term>
auto blockedSum(std::size_t n, Term term) {
    using Value = decltype(term(std::size_t{}));
    constexpr std::size_t block = 1024;
    constexpr std::size_t lanes = 10;
    constexpr Value nothing = -Value{};
    Value total = n == 0 ? Value{} : nothing;
    const auto addBlocks = [&](std::size_t from, std::size_t longest, auto termAt) {
        Value sums[lanes];
        std::fill_n(sums, lanes, nothing);
        for (std::size_t i = from; i < from + longest; ++i) {
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                sums[lane] = sums[lane] + termAt(i + lane * block);
            }
        }
        for (const Value& sum : sums) {
            total = total + sum;
        }
    };
    const std::size_t whole = n - n % (lanes * block);
    for (std::size_t from = 0; from < whole; from += lanes * block) {
        addBlocks(from, block, term);
    }
    addBlocks(whole, std::min(block, n - whole), [&](std::size_t i) { return i < n ? term(i) : nothing; });
    return total;
}

/// Blocked sum of a row or column; 0 when empty.
double combineVectorElements(samples x);

/// Blocked sum of a complex row; 0 + 0i when empty.
creal_T sum(const complex_row& x);

/// Blocked sum divided by the count; NaN when empty.
double mean(samples x);

/// out = (x - mean(x)) w for w as long as x.
void weighCentred(samples x, samples w, double* out);

/// Largest (smallest) element of a non-empty vector with its 1-based position. NaN is skipped, the first of equals
/// wins; a vector of NaN gives NaN at position 1.
void maximum(samples x, double* value, int* index);
void minimum(samples x, double* value, int* index);
double maximum(samples x);

/// Largest minus smallest element of a non-empty vector, NaN skipped; NaN when all are NaN.
double peak2peak(samples x);

/// First differences y[k] = x[k+1] - x[k], n - 1 of them; none for n <= 1.
void diff(const column& x, column& y);

/// The row a, a + d, a + 2 d, ... up to b. The end is b itself when the rounded count of steps hits it to within
/// rounding; the row is filled from both ends, so that it is symmetric. With a whole start and step element k is a + k
/// d. NaN in any, an infinite step, and ends that are the same infinity give the single value NaN; a zero step, and one
/// that leads away from b, gives an empty row. Throws std::bad_array_new_length when the count does not fit 32 bits.
/// Only the first elements are made when there are more than `most` >= 1.
void eml_float_colon(double a, double d, double b, row& y, int most = std::numeric_limits<int>::max());

/// The same with unit step.
void eml_float_colon(double a, double b, row& y);

/// Length of an element-wise expression over operands of lengths na and nb: an operand of length 1 is repeated against
/// the other, unequal lengths are cut to the shorter.
constexpr int expandedLength(int na, int nb) {
    if (nb == 1) {
        return na;
    }
    return na == 1 ? nb : std::min(na, nb);
}

/// Element access under that rule: a single element stands at every index.
class expanded {
public:
    explicit expanded(samples x) : data_(x.data()), step_(x.size() == 1 ? 0 : 1) {}
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
    const expanded x(a);
    const expanded y(b);
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
        result.data()[i] = op(x[i], y[i]);
    }
    out = std::move(result);
}

/// Element-wise product of two columns with singleton expansion.
void bsxfun(const column& a, const column& b, column& c);

}  // namespace coder

#endif
