#ifndef RT305_4_TOOLKIT_SUMS_H
#define RT305_4_TOOLKIT_SUMS_H

#include <algorithm>
#include <cstddef>

#include "toolkit/array.h"

namespace coder {

/// Sum of term(0) ... term(n-1); 0 for n = 0. The order is fixed bit for bit: blocks of 1024 terms (the last may be
/// shorter) are each added left to right, then the block sums are added left to right. Blocks are independent chains,
/// so `lanes` of them are summed side by side without changing the result. A shorter or missing block is filled up with
/// -0, which changes no sum.
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

/// Blocked sum divided by the count; NaN when empty.
double mean(samples x);

/// out = (x - mean(x)) w for w as long as x.
void weighCentred(samples x, samples w, double* out);

}  // namespace coder

#endif
