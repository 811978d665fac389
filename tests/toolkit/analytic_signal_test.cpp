#include "extras/hilbert.h"

#include <gtest/gtest.h>

#include "support/plain.h"
#include "support/signals.h"

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

}  // namespace
