#include "toolkit/gridded_dft.h"

#include <gtest/gtest.h>

#include <numeric>

#include "support/plain.h"
#include "support/signals.h"

namespace {

using coder::GriddedDft;
using signals::Samples;

TEST(GriddedDft, StaysWithinItsBound) {
    REQUIRE_EXTENDED_PRECISION();
    for (const std::size_t n : {1U, 49U, 50U, 51U, 167U, 1000U, 10000U, 250001U}) {
        Samples impulses(n);
        for (std::size_t i = 0; i < n; i += 50) {
            impulses[i] = i % 7 == 0 ? -2.0 : 1.0;
        }
        const std::pair<const char*, Samples> rows[]{
            {"noise", signals::noise(n)},
            {"constant, its energy below the lines", Samples(n, 1.0)},
            {"beyond the band by two lines", signals::cosine(n, 1.0, 602.0, 0.0, GriddedDft::period)},
            {"first alias of the last line", signals::cosine(n, 1.0, 1400.0, 0.0, GriddedDft::period)},
            {"an impulse in every block", impulses},
        };
        for (const auto& [name, x] : rows) {
            const double total =
                std::accumulate(x.begin(), x.end(), 0.0, [](double sum, double v) { return sum + std::fabs(v); });
            const int first = n % 2 == 0 ? 1 : 300;
            const GriddedDft grid(first, GriddedDft::maxLine - first + 1);
            Samples found(grid.lines());
            grid.magnitudes(x, found.data());
            for (const std::size_t from : {std::size_t{0}, grid.lines() - 2}) {
                const auto exact = plain::transform(x, GriddedDft::period, static_cast<std::size_t>(first) + from, 2);
                for (const std::size_t k : {0U, 1U}) {
                    EXPECT_LE(std::fabs(found[from + k] - std::abs(exact[k])), GriddedDft::errorBound(n) * total)
                        << name << ", n = " << n << ", line " << static_cast<std::size_t>(first) + from + k;
                }
            }
        }
    }
}

}  // namespace
