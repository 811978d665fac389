#ifndef RT305_HOST_BASE_SUM_H
#define RT305_HOST_BASE_SUM_H

#include <array>
#include <cstddef>
#include <numeric>

namespace rt305 {

/// The sum of term(0) ... term(count - 1), 0 for none. Every eighth term belongs to one of eight sums, which a
/// processor adds side by side; these are added from left to right in the end. Inlined, so that vector code can use it.
template <class Term>
[[gnu::always_inline]] inline double sumOf(std::size_t count, Term term) {
    constexpr std::size_t chains = 8;
    std::array<double, chains> sums{};
    const std::size_t whole = count / chains * chains;
    for (std::size_t k = 0; k < whole; k += chains) {
        for (std::size_t chain = 0; chain < chains; ++chain) {
            sums[chain] += term(k + chain);
        }
    }
    for (std::size_t k = whole; k < count; ++k) {
        sums[k - whole] += term(k);
    }
    return std::accumulate(sums.begin(), sums.end(), 0.0);
}

}  // namespace rt305

#endif
