#ifndef RT305_4_TOOLKIT_POLYNOMIAL_H
#define RT305_4_TOOLKIT_POLYNOMIAL_H

#include <array>
#include <cstddef>

namespace coder {

/// c[0] + c[1] x + ... + c[N-1] x^(N-1) by Horner's rule. Always inlined, so that a loop around it vectorises.
template <class Number, std::size_t N>
[[gnu::always_inline]] constexpr Number polynomial(const std::array<Number, N>& c, Number x) {
    Number p = c[N - 1];
#pragma GCC unroll 64
    for (std::size_t i = 1; i < N; ++i) {
        p = p * x + c[N - 1 - i];
    }
    return p;
}

/// The first N coefficients in powers of y of the series 1 + b(1) x + b(2) x^2 + ... at x = middle + slope y, where
/// b(k) = b(k-1) ratio(k), cut after x^terms: Horner's rule on polynomials in y.
template <std::size_t N, class Ratio>
constexpr std::array<long double, N> seriesAround(long double middle, long double slope, int terms, Ratio ratio) {
    std::array<long double, N> c{1.0L};
    for (int k = terms; k > 0; --k) {
        for (std::size_t m = N - 1; m > 0; --m) {
            c[m] = (middle * c[m] + slope * c[m - 1]) * ratio(k);
        }
        c[0] = 1.0L + middle * c[0] * ratio(k);
    }
    return c;
}

/// The coefficients rounded to double.
template <std::size_t N>
constexpr std::array<double, N> rounded(const std::array<long double, N>& c) {
    std::array<double, N> result{};
    for (std::size_t i = 0; i < N; ++i) {
        result[i] = static_cast<double>(c[i]);
    }
    return result;
}

}  // namespace coder

#endif
