#ifndef RT305_4_TESTS_SUPPORT_PLAIN_H
#define RT305_4_TESTS_SUPPORT_PLAIN_H

#include <fftw3.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <vector>

/// Skips a test whose reference needs long doubles of full precision: valgrind computes them as doubles.
#define REQUIRE_EXTENDED_PRECISION()                               \
    if (const volatile long double one = 1; one + 0x1p-63L == one) \
    GTEST_SKIP() << "the reference needs long doubles of full precision"

/// Plain definitions, most in extended precision, that the library is compared with. They share no code with it.
namespace plain {

using Real = long double;
using Complex = std::complex<Real>;
inline constexpr Real pi = std::numbers::pi_v<Real>;

inline bool same(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

/// |value - exact| in units in the last place of the exact value; 0 for its nearest double.
inline double ulps(double value, Real exact) {
    const int exponent = exact == 0 || !std::isfinite(exact) ? 0 : std::ilogb(exact) - 52;
    const Real error = std::fabs(value - exact) / std::ldexp(Real{1}, std::max(exponent, -1074));
    return same(value, static_cast<double>(exact)) ? 0.0 : static_cast<double>(error);
}

/// sum over i of x[i] exp(sign 2 pi j i k / length) for k = first ... first + bins - 1.
template <class Row>
std::vector<Complex> transform(const Row& x, std::size_t length, std::size_t first, std::size_t bins, int sign = -1) {
    std::vector<Complex> roots(length), result(bins);
    for (std::size_t k = 0; k < bins; ++k) {
        for (std::size_t i = 0; i < x.size(); ++i) {
            const std::size_t at = i * (first + k) % length;
            if (roots[at] == Complex()) {
                roots[at] = std::polar(Real{1}, sign * 2 * pi * static_cast<Real>(at) / static_cast<Real>(length));
            }
            result[k] += Complex(x[i]) * roots[at];
        }
    }
    return result;
}

/// The half spectrum of a row padded with zeros, by the long double build of FFTW: for rows too long for direct sums.
template <class Row>
std::vector<Complex> halfSpectrum(const Row& x, std::size_t length) {
    std::vector<Real> padded(x.begin(), x.end());
    padded.resize(length);
    std::vector<Complex> bins(length / 2 + 1);
    const auto plan = fftwl_plan_dft_r2c_1d(static_cast<int>(length), padded.data(),
                                            reinterpret_cast<fftwl_complex*>(bins.data()), FFTW_ESTIMATE);
    fftwl_execute(plan);
    fftwl_destroy_plan(plan);
    return bins;
}

/// I0(z) = sum over k of ((z / 2)^k / k!)^2. M. Abramowitz and I. A. Stegun, eq. 9.6.12.
inline Real besselI0(Real z) {
    Real term = 1, sum = 0;
    for (int k = 1; term > sum * std::numeric_limits<Real>::epsilon() / 16; ++k) {
        sum += term;
        term *= z / 2 / static_cast<Real>(k) * (z / 2 / static_cast<Real>(k));
    }
    return sum;
}

/// (1 - cos(2 pi k / period)) / 2
inline Real raisedCosine(std::size_t k, std::size_t period) {
    return std::pow(std::sin(pi * static_cast<Real>(std::min(k, period - k)) / static_cast<Real>(period)), Real{2});
}

/// Point k of a Kaiser window of n > 1 points.
inline Real kaiser(std::size_t k, std::size_t n, Real beta) {
    const auto span = static_cast<Real>(n - 1);
    const Real r = (2 * static_cast<Real>(k) - span) / span;
    return besselI0(beta * std::sqrt((1 - r) * (1 + r))) / besselI0(beta);
}

/// Positions of the `count` highest peaks above minHeight, by height or by position; every +Inf is a peak.
template <class Row>
std::vector<std::size_t> peaks(const Row& y, typename Row::value_type minHeight, int count, bool byPosition) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < y.size(); ++i) {
        std::size_t end = i + 1;
        while (end < y.size() && y[end] == y[i]) {
            ++end;
        }
        const bool highest = i > 0 && end < y.size() && y[i - 1] < y[i] && y[end] < y[i] && y[i] > minHeight;
        if (highest || (std::isinf(y[i]) && y[i] > 0)) {
            found.push_back(i);
        }
    }
    std::stable_sort(found.begin(), found.end(), [&](std::size_t a, std::size_t b) { return y[a] > y[b]; });
    found.resize(std::min(found.size(), static_cast<std::size_t>(std::max(count, 0))));
    std::sort(found.begin(), byPosition ? found.end() : found.begin());
    return found;
}

}  // namespace plain

#endif
