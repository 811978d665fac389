#include "toolkit/analytic_signal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "extended_precision.h"
#include "toolkit/non_finite.h"

namespace {

/// Imaginary part of the analytic signal at m as a plain convolution: the kernel is 2/n cot(pi d / n) at odd distances
/// d for even n, and (cot(pi d / n) - (-1)^d / sin(pi d / n)) / n for odd n.
long double hilbertAt(const std::vector<double>& x, std::size_t m) {
    const long double n = static_cast<long double>(x.size());
    long double sum = 0.0L;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const long double distance = static_cast<long double>(m) - static_cast<long double>(i);
        if (distance != 0.0L) {
            const long double angle = 3.14159265358979323846L * distance / n;
            const long double sign = (m + i) % 2 == 0 ? 1.0L : -1.0L;
            const long double closing = x.size() % 2 == 0 ? std::cos(angle) : 1.0L;
            sum += (std::cos(angle) - sign * closing) / std::sin(angle) * static_cast<long double>(x[i]);
        }
    }
    return sum / n;
}

TEST(AnalyticSignal, OfARandomRowHasItsHilbertTransformAsImaginaryPart) {
    REQUIRE_EXTENDED_PRECISION();
    std::mt19937_64 random(7);
    std::normal_distribution<double> normal(3.0, 1.0);
    for (const std::size_t n : {1U, 2U, 3U, 4U, 5U, 16U, 63U, 97U, 100U, 499U}) {
        std::vector<double> x(n);
        for (double& value : x) {
            value = normal(random);
        }
        coder::complex_row y;
        coder::hilbert(x, y);
        ASSERT_EQ(y.numel(), static_cast<int>(n));
        for (std::size_t m = 0; m < n; ++m) {
            EXPECT_EQ(y[static_cast<int>(m)].re, x[m]);
            EXPECT_NEAR(y[static_cast<int>(m)].im, static_cast<double>(hilbertAt(x, m)), 2e-14) << n << " at " << m;
        }
    }
}

TEST(AnalyticSignal, OfOddRows) {
    coder::complex_row y;
    coder::hilbert(coder::samples(), y);
    EXPECT_EQ(y.numel(), 0);
    coder::hilbert(std::vector<double>{1.0, rtNaN, 2.0}, y);
    EXPECT_EQ(y[0].re, 1.0);
    EXPECT_TRUE(std::isnan(y[0].im) && std::isnan(y[2].im));
}

}  // namespace
