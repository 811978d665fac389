#include "toolkit/level.h"

#include <array>
#include <bit>
#include <cstdint>
#include <limits>

#include "toolkit/polynomial.h"
#include "toolkit/scalar.h"
#include "toolkit/simd.h"

namespace coder {
namespace {

/// R / s^2 in powers of s^2: 2/3, 2/5, 2/7 ... For |s| <= 0.172 the terms left out are below 1e-18 of f.
constexpr auto artanhSeries = [] {
    std::array<double, 10> c{};
    for (std::size_t i = 0; i < c.size(); ++i) {
        c[i] = 2.0 / static_cast<double>(2 * i + 3);
    }
    return c;
}();

// 1 / ln 10 and log10 2, each in two parts. The first parts are so short that their products with 24-bit numbers and
// with exponents are exact.
constexpr double perLnTen = 0.43429448176175356;
constexpr double perLnTenLow = 1.414982685385801e-10;
constexpr double logTwo = 0.30102999566383914;
constexpr double logTwoLow = 1.42050232272661e-13;

/// x = mantissa * 2^exponent, sqrt(1/2) <= mantissa < sqrt(2), for positive normal x.
struct Binary {
    double mantissa;
    double exponent;
};

ALWAYS_INLINE inline Binary binaryOf(double x) {
    constexpr std::uint64_t rootOfHalf = 0x3FE6A09E667F3BCDU;
    constexpr std::uint64_t one = 0x3FF0000000000000U;
    constexpr std::uint64_t fraction = 0x000FFFFFFFFFFFFFU;
    constexpr double shift = 4503599627370496.0;  // 2^52: added integers appear in the low bits
    const std::uint64_t raised = std::bit_cast<std::uint64_t>(x) + (one - rootOfHalf);
    const auto exponent = std::bit_cast<double>(raised >> 52U | std::bit_cast<std::uint64_t>(shift));
    return {std::bit_cast<double>((raised & fraction) + rootOfHalf), exponent - (shift + 1023.0)};
}

/// log10 of a positive normal x.
ALWAYS_INLINE inline double logTen(const Binary& x) {
    const double f = x.mantissa - 1.0;
    const double halfSquare = 0.5 * f * f;
    const double s = f / (2.0 + f);
    const double square = s * s;
    const double tail = s * (halfSquare + square * polynomial(artanhSeries, square));
    const double high = head(f - halfSquare);
    const double low = ((f - high) - halfSquare) + tail;
    const double main = x.exponent * logTwo;
    const double part = high * perLnTen;
    const double sum = main + part;
    return sum + (((main - sum) + part) + (x.exponent * logTwoLow + ((low + high) * perLnTenLow + low * perLnTen)));
}

ALWAYS_INLINE inline void levels(double* x, std::size_t n, double reference) {
    constexpr double smallestNormal = std::numeric_limits<double>::min();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < n; ++i) {
        const double ratio = x[i] / reference;
        const bool subnormal = ratio < smallestNormal;
        Binary binary = binaryOf(subnormal ? ratio * 0x1p54 : ratio);
        binary.exponent -= subnormal ? 54.0 : 0.0;
        const double level = 20.0 * logTen(binary);
        const double ofPositive = ratio < infinity ? level : ratio;
        x[i] = ratio == 0.0 ? -infinity : ofPositive;
    }
}

}  // namespace

void toLevels(std::span<double> x, double reference) {
    vectorized<levels>(x.data(), x.size(), reference);
}

}  // namespace coder
