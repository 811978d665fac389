#include "toolkit/level.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "extended_precision.h"
#include "toolkit/non_finite.h"
#include "toolkit/quad.h"

namespace {

std::vector<double> levels(std::vector<double> x, double reference) {
    coder::toLevels(x, reference);
    return x;
}

/// Random magnitudes, their logarithms spread evenly.
std::vector<double> magnitudes(double from, double to) {
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> logarithm(std::log(from), std::log(to));
    std::vector<double> x(4001);
    for (double& value : x) {
        value = std::exp(logarithm(random));
    }
    return x;
}

TEST(Level, IsTheRoundedLogarithmTimesTwenty) {
    REQUIRE_EXTENDED_PRECISION();
    const double edges[] = {5e-324, 1e-307, 1e-20, 0.5, 0.999, 1.001, 1.42, 10.0, 1.7e308};
    double worst = 0.0;
    for (std::size_t i = 0; i + 1 < std::size(edges); ++i) {
        const std::vector<double> x = magnitudes(edges[i], edges[i + 1]);
        const std::vector<double> d = levels(x, 1.0);
        for (std::size_t k = 0; k < x.size(); ++k) {
            worst = std::max(worst, quad::ulps(d[k], 20 * log10q(x[k])));
        }
    }
    EXPECT_LE(worst, 1.3);
    std::printf("worst level %.2f units in the last place\n", worst);
}

TEST(Level, HasExactDecades) {
    EXPECT_EQ(levels({1.0, 10.0, 100.0, 0.1, 1e-5, 1e22}, 1.0), (std::vector{0.0, 20.0, 40.0, -20.0, -100.0, 440.0}));
    for (const double reference : {5e-324, 1e-300, 3.7, 1.7e308}) {
        EXPECT_EQ(levels({reference}, reference), std::vector{0.0});
    }
}

TEST(Level, OfLimits) {
    EXPECT_EQ(levels({0.0, rtInf}, 2.0), (std::vector{rtMinusInf, rtInf}));
    EXPECT_EQ(levels({0.0, 1.0}, rtInf), (std::vector{rtMinusInf, rtMinusInf}));
    for (const auto& [x, reference] : {std::pair{0.0, 0.0}, {rtNaN, 1.0}, {1.0, rtNaN}, {rtInf, rtInf}}) {
        EXPECT_TRUE(std::isnan(levels({x}, reference)[0])) << x << " " << reference;
    }
}

TEST(Level, DoesNotHangOnThePlaceInTheRow) {
    const std::vector<double> x = magnitudes(1e-310, 1.0);
    const std::vector<double> d = levels(x, 0.3);
    for (std::size_t k = 0; k < 40; ++k) {
        EXPECT_EQ(levels({x[k]}, 0.3)[0], d[k]);
    }
}

}  // namespace
