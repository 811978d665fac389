#include "toolkit/bessel.h"

#include <array>
#include <cassert>
#include <cmath>

#include "toolkit/non_finite.h"
#include "toolkit/polynomial.h"
#include "toolkit/scalar.h"
#include "toolkit/simd.h"

namespace coder {
namespace {

constexpr int seriesEnd = 43;  // of z

/// Taylor series of I0 in powers of d = z^2 - i (i + 1), one for each i <= z < i + 1; as a function of z^2, I0 has no
/// singularity. So close to the expansion point the first term dominates the sum, and its rounding dominates the error.
/// The terms left out are below 3e-18 of the sum.
constexpr std::size_t seriesTerms = 15;
constexpr auto seriesOfPieces = [] {
    std::array<std::array<double, seriesTerms>, seriesEnd> pieces{};
    for (int i = 0; i < seriesEnd; ++i) {
        pieces[static_cast<std::size_t>(i)] =
            rounded(seriesAround<seriesTerms>(i * (i + 1.0L), 1.0L, 60, [](int k) { return 0.25L / k / k; }));
    }
    return pieces;
}();

ALWAYS_INLINE inline void besseliOfPiece(int piece, const double* square, const double* squareLow, std::size_t n,
                                         double* y) {
    const auto series = seriesOfPieces[static_cast<std::size_t>(piece)];
    const double middle = piece * (piece + 1.0);
    for (std::size_t i = 0; i < n; ++i) {
        y[i] = polynomial(series, (square[i] - middle) + squareLow[i]);
    }
}

/// exp(-z) I0(z) for z >= seriesEnd; the terms of the expansion left out are below 3e-19. z is the rounded square root
/// of square; the exact root is larger by lost / (2 z). Over that distance I0 grows by the fraction lost / (2 z + 1),
/// because its logarithm rises by 1 - 1 / (2 z) per unit of z.
double scaledForLarge(double z, double square, double squareLow) {
    static constexpr auto coefficients = [] {
        std::array<double, 14> c{0.125};
        for (std::size_t k = 1; k < c.size(); ++k) {
            const double odd = static_cast<double>(2 * k + 1);
            c[k] = c[k - 1] * odd * odd / (8.0 * static_cast<double>(k + 1));
        }
        return c;
    }();
    constexpr double perTwoPi = 0.15915494309189535;
    const double zHead = head(z);
    const double lost = (square - zHead * zHead) - (z - zHead) * (z + zHead) + squareLow;
    const double growth = lost / (2.0 * z + 1.0);
    const double leading = std::sqrt(perTwoPi / z);
    const double inverse = 1.0 / z;
    return leading + leading * (inverse * polynomial(coefficients, inverse) + growth);
}

}  // namespace

double besseli(double z) {
    const double magnitude = std::fabs(z);
    if (std::isnan(z)) {
        return rtNaN;
    }
    if (magnitude > 714.0) {
        return rtInf;
    }
    const double square = magnitude * magnitude;
    const double zHead = head(magnitude);
    const double squareLow = (zHead * zHead - square) + (magnitude - zHead) * (magnitude + zHead);
    if (magnitude > 700.0) {
        constexpr double shift = 64.0;  // exp(z) overflows before I0 does
        return std::exp(magnitude - shift) * scaledForLarge(magnitude, square, squareLow) * std::exp(shift);
    }
    double y = 0.0;
    besseliOfSquare({&square, 1}, {&squareLow, 1}, &y);
    return y;
}

void besseliOfSquare(samples square, samples squareLow, double* y) {
    assert(square.size() == squareLow.size() && y != square.data());
    for (std::size_t from = 0; from < square.size();) {
        const double z = std::sqrt(square[from]);
        if (z >= seriesEnd) {
            y[from] = std::exp(z) * scaledForLarge(z, square[from], squareLow[from]);
            ++from;
            continue;
        }
        const int piece = static_cast<int>(z);
        const double begin = piece * piece;
        const double end = (piece + 1) * (piece + 1);
        std::size_t to = from + 1;
        while (to < square.size() && square[to] >= begin && square[to] < end) {
            ++to;
        }
        vectorized<besseliOfPiece>(piece, square.data() + from, squareLow.data() + from, to - from, y + from);
        from = to;
    }
}

}  // namespace coder
