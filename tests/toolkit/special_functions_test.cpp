#include "toolkit/special_functions.h"

#include <gtest/gtest.h>

#include <random>

#include "extended_precision.h"
#include "toolkit/non_finite.h"
#include "toolkit/quad.h"

namespace {

/// Largest error of f against exact over random points of [from, to].
template <class Function, class Reference>
double worstUlps(double from, double to, Function f, Reference exact) {
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> point(from, to);
    double worst = 0.0;
    for (int i = 0; i < 4000; ++i) {
        const double x = point(random);
        worst = std::max(worst, quad::ulps(f(x), exact(x)));
    }
    return worst;
}

constexpr auto besseli = [](double z) { return coder::besseli(z); };

TEST(SpecialFunctions, BesselIsWithinFourUlps) {
    REQUIRE_EXTENDED_PRECISION();
    const double edges[] = {0.0, 1.0, 2.0, 10.0, 21.7, 21.8, 24.0, 38.0, 100.0, 699.0, 701.0, 713.98};
    for (std::size_t i = 0; i + 1 < std::size(edges); ++i) {
        EXPECT_LE(worstUlps(edges[i], edges[i + 1], besseli, quad::besseli), 4.0) << "up to " << edges[i + 1];
    }
}

TEST(SpecialFunctions, BesselKeepsItsSpecialValues) {
    EXPECT_EQ(besseli(0.0), 1.0);
    EXPECT_EQ(besseli(1e-300), 1.0);
    EXPECT_EQ(besseli(-30.0), besseli(30.0));
    EXPECT_EQ(besseli(713.99), rtInf);
    EXPECT_EQ(besseli(1e300), rtInf);
    EXPECT_EQ(besseli(rtMinusInf), rtInf);
    EXPECT_TRUE(std::isnan(besseli(rtNaN)));
}

TEST(SpecialFunctions, BesselOfManySquaresInAnyOrder) {
    const std::vector<double> square{400.0, 1.0, 900.0, 1e4, 4.0, 0.0, 5.0, 481.0};
    const std::vector<double> low(square.size(), 0.0);
    std::vector<double> y(square.size());
    coder::besseliOfSquare(square, low, y.data());
    for (std::size_t i = 0; i < square.size(); ++i) {
        EXPECT_LE(quad::ulps(y[i], quad::besseli(sqrtq(square[i]))), 4.0) << square[i];
    }
}

TEST(SpecialFunctions, GammalnIsWithinOneUlp) {
    REQUIRE_EXTENDED_PRECISION();
    const double edges[] = {1e-300, 2e-16, 3e-16, 0.5, 0.68, 0.999, 1.0,  1.001,
                            1.5,    1.999, 2.001, 4.0, 12.0, 101.0, 1e300};
    for (std::size_t i = 0; i + 1 < std::size(edges); ++i) {
        EXPECT_LE(worstUlps(edges[i], edges[i + 1], coder::gammaln, lgammaq), 1.0) << "up to " << edges[i + 1];
    }
    for (int x = 1; x <= 101; ++x) {
        EXPECT_LE(quad::ulps(coder::gammaln(x), lgammaq(x)), 1.0) << x;
    }
}

TEST(SpecialFunctions, GammalnKeepsItsSpecialValues) {
    EXPECT_EQ(coder::gammaln(1.0), 0.0);
    EXPECT_EQ(coder::gammaln(2.0), 0.0);
    EXPECT_EQ(coder::gammaln(0.0), rtInf);
    EXPECT_EQ(coder::gammaln(rtInf), rtInf);
    EXPECT_EQ(coder::gammaln(1e308), rtInf);
    EXPECT_TRUE(std::isnan(coder::gammaln(-1.5)));
    EXPECT_TRUE(std::isnan(coder::gammaln(rtNaN)));
}

}  // namespace
