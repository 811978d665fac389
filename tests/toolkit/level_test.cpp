#include "toolkit/level.h"

#include <gtest/gtest.h>

#include <random>

#include "support/plain.h"
#include "toolkit/non_finite.h"

namespace {

using Row = std::vector<double>;

Row levels(Row x, double reference) {
    coder::toLevels(x, reference);
    return x;
}

TEST(Level, IsTwentyTimesTheLogarithm) {
    REQUIRE_EXTENDED_PRECISION();
    std::mt19937_64 random(5);
    const double edges[]{5e-324, 1e-307, 1e-20, 0.5, 0.999, 1.001, 1.42, 10.0, 1.7e308};
    for (std::size_t i = 0; i + 1 < std::size(edges); ++i) {
        std::uniform_real_distribution<double> logarithm(std::log(edges[i]), std::log(edges[i + 1]));
        Row x(4001);
        std::generate(x.begin(), x.end(), [&] { return std::exp(logarithm(random)); });
        const Row d = levels(x, 1.0);
        for (std::size_t k = 0; k < x.size(); ++k) {
            ASSERT_LE(plain::ulps(d[k], 20 * std::log10(static_cast<plain::Real>(x[k]))), 1.3) << x[k];
            ASSERT_TRUE(k > 40 || levels({x[k]}, 1.0)[0] == d[k]) << "whatever the place in the row: " << x[k];
        }
    }
}

TEST(Level, OfDecadesAndLimits) {
    EXPECT_EQ(levels({1.0, 10.0, 100.0, 0.1, 1e-5, 1e22}, 1.0), (Row{0.0, 20.0, 40.0, -20.0, -100.0, 440.0}));
    EXPECT_EQ(levels({0.0, rtInf}, 2.0), (Row{rtMinusInf, rtInf}));
    EXPECT_EQ(levels({0.0, 1.0}, rtInf), (Row{rtMinusInf, rtMinusInf}));
    for (const double reference : {5e-324, 1e-300, 3.7, 1.7e308}) {
        EXPECT_EQ(levels({reference}, reference), Row{0.0});
    }
    for (const auto& [x, reference] : {std::pair(0.0, 0.0), {rtNaN, 1.0}, {1.0, rtNaN}, {rtInf, rtInf}}) {
        EXPECT_TRUE(std::isnan(levels({x}, reference)[0])) << x << " to " << reference;
    }
}

}  // namespace
