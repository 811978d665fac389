#ifndef RT305_4_TOOLKIT_SUMS_H
#define RT305_4_TOOLKIT_SUMS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <type_traits>

#include "toolkit/array.h"

namespace coder {

/// `count` sums over the same indices, computed together: a term of blockedSum with several values.
template <std::size_t count>
struct SideBySide {
    std::array<double, count> sums;

    friend constexpr SideBySide operator+(SideBySide a, const SideBySide& b) {
        for (std::size_t i = 0; i < count; ++i) {
            a.sums[i] += b.sums[i];
        }
        return a;
    }
    friend constexpr SideBySide operator-(SideBySide a) {
        for (double& sum : a.sums) {
            sum = -sum;
        }
        return a;
    }
};

inline constexpr std::size_t sumBlock = 1024;

/// total plus the sums of the `count` blocks from term(from) on. The last may be shorter; n is the number of all terms.
template <std::size_t count, class Value, class Term>
[[gnu::always_inline]] inline Value addBlocks(Value total, std::size_t from, std::size_t n, Term term) {
    if constexpr (count > 0) {
        Value sums[count];
        std::fill_n(sums, count, -Value{});
        const auto addTerms = [&](std::size_t begin, std::size_t end, auto lanes) __attribute__((always_inline)) {
            for (std::size_t i = begin; i < end; ++i) {
                for (std::size_t lane = 0; lane != lanes.value; ++lane) {
                    sums[lane] = sums[lane] + term(i + lane * sumBlock);
                }
            }
        };
        const std::size_t last = from + std::min(n - from - (count - 1) * sumBlock, sumBlock);
        addTerms(from, last, std::integral_constant<std::size_t, count>{});
        addTerms(last, from + sumBlock, std::integral_constant<std::size_t, count - 1>{});
        total = std::accumulate(sums, sums + count, total);
    }
    return total;
}

/// total plus the sums of the blocks from term(from) to term(n-1), at most `most`.
template <std::size_t most, class Value, class Term>
Value addLastBlocks(Value total, std::size_t from, std::size_t n, Term term) {
    if constexpr (most > 0) {
        if (n <= from + (most - 1) * sumBlock) {
            return addLastBlocks<most - 1>(total, from, n, term);
        }
    }
    return addBlocks<most>(total, from, n, term);
}

/// Number of blocks that blockedSum adds side by side.
template <class Value, std::size_t chains>
constexpr std::size_t blocksAtOnce = (chains + sizeof(Value) / sizeof(double) - 1) / (sizeof(Value) / sizeof(double));

/// blockedSum, given a few blocks at a time: termsFrom(from, count) returns the terms from ... from + count - 1,
/// counted from 0, as a function of their index.
template <std::size_t chains, class Terms>
auto blockedSumOfParts(std::size_t n, Terms termsFrom) {
    using Value = decltype(termsFrom(std::size_t{}, std::size_t{})(std::size_t{}));
    constexpr std::size_t blocks = blocksAtOnce<Value, chains>;
    constexpr std::size_t part = blocks * sumBlock;
    Value total = n == 0 ? Value{} : -Value{};
    std::size_t from = 0;
    for (; from + part <= n; from += part) {
        total = addBlocks<blocks>(total, 0, part, termsFrom(from, part));
    }
    return addLastBlocks<blocks>(total, 0, n - from, termsFrom(from, n - from));
}

/// Sum of term(0) ... term(n-1); 0 for n = 0. The order is fixed bit for bit: blocks of 1024 terms (the last may be
/// shorter) are each added left to right to -0, which changes no sum, then the block sums are added left to right.
/// Blocks are independent chains of additions, and so are the values of a term, so about `chains` of them run side by
/// side without changing the result. Fewer take less code.
template <std::size_t chains = 10, class Term>
auto blockedSum(std::size_t n, Term term) {
    return blockedSumOfParts<chains>(n, [&](std::size_t from, std::size_t) {
        return [=](std::size_t i) __attribute__((always_inline)) {
            return term(from + i);
        };
    });
}

/// Blocked sum of a row or column; 0 when empty.
double combineVectorElements(samples x);

/// Blocked sums of several rows, together if they have the same length.
template <std::size_t count>
std::array<double, count> combineVectorElements(const std::array<samples, count>& rows) {
    const std::size_t n = rows[0].size();
    if (std::all_of(rows.begin(), rows.end(), [=](samples x) { return x.size() == n; })) {
        return blockedSum(n,
                          [&](std::size_t i) {
                              SideBySide<count> terms;
                              std::transform(rows.begin(), rows.end(), terms.sums.begin(),
                                             [=](samples x) { return x[i]; });
                              return terms;
                          })
            .sums;
    }
    std::array<double, count> sums;
    std::transform(rows.begin(), rows.end(), sums.begin(), [](samples x) { return combineVectorElements(x); });
    return sums;
}

/// Sum of magnitudes, in an order of its own: for bounds.
double sumOfMagnitudes(samples x);

/// Blocked sum divided by the count; NaN when empty.
double mean(samples x);

/// x = (x - mean) w for as many numbers as w has.
void weighCentred(double* x, double mean, samples w);

}  // namespace coder

#endif
