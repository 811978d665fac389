#include "extras/hilbert.h"

#include <gtest/gtest.h>

#include <complex>

#include "support/plain.h"
#include "support/signals.h"
#include "toolkit/analytic_signal.h"

namespace {

TEST(AnalyticSignal, DoublesThePositiveFrequenciesAndDropsTheOthers) {
    for (const std::size_t n : {0U, 1U, 2U, 3U, 4U, 5U, 16U, 63U, 100U, 499U}) {
        const auto x = signals::noise(n, n, 3.0);
        auto bins = plain::transform(x, n, 0, n);
        for (std::size_t k = 1; k < n; ++k) {
            bins[k] *= 2 * k < n ? 2 : 2 * k == n ? 1 : 0;
        }
        const auto exact = plain::transform(bins, n, 0, n, +1);
        coder::complex_row y;
        coder::hilbert(x, y);
        ASSERT_EQ(y.numel(), static_cast<int>(n));
        for (std::size_t m = 0; m < n; ++m) {
            EXPECT_EQ(y.data()[m].re, x[m]);
            EXPECT_NEAR(y.data()[m].im, static_cast<double>(exact[m].imag()) / static_cast<double>(n), 2e-14) << n;
        }
    }
}

TEST(AnalyticSignal, ProductsSumOverRowsOfAnyLength) {
    const coder::RealFft shared(8);
    for (const auto& [na, nb] : {std::pair{8U, 8U}, {9U, 9U}, {8U, 1U}, {1U, 7U}, {1U, 1U}, {0U, 1U}}) {
        const auto a = signals::noise(na, 1, 3.0);
        const auto b = signals::noise(nb, 2, 3.0);
        const std::size_t n = na == 1 ? nb : na;
        const auto analytic = [n](const signals::Samples& x) {
            coder::complex_row y;
            coder::hilbert(x.size() == 1 ? signals::Samples(n, x[0]) : x, y);
            return y;
        };
        const coder::complex_row A = analytic(a);
        const coder::complex_row B = analytic(b);
        std::complex<double> expected;
        for (std::size_t k = 0; k < n; ++k) {
            expected += std::complex(A.data()[k].re, A.data()[k].im) * std::complex(B.data()[k].re, -B.data()[k].im);
        }
        const coder::creal_T sum = coder::analyticProductSum(a, b, shared);
        EXPECT_LT(std::abs(expected - std::complex(sum.re, sum.im)), 1e-12) << na << " " << nb;
    }
}

}  // namespace
