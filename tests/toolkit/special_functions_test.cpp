#include "toolkit/bessel.h"

#include <gtest/gtest.h>

#include <random>

#include "extras/gammaln.h"
#include "support/plain.h"
#include "toolkit/non_finite.h"

namespace {

/// Largest error over random points between neighbouring edges, in units in the last place.
template <class Function, class Reference>
double worstUlps(const std::vector<double>& edges, Function f, Reference exact) {
    std::mt19937_64 random(5);
    double worst = 0.0;
    for (std::size_t i = 0; i + 1 < edges.size(); ++i) {
        std::uniform_real_distribution<double> point(edges[i], edges[i + 1]);
        for (int k = 0; k < 4000; ++k) {
            const double x = k == 0 ? edges[i] : point(random);
            worst = std::max(worst, plain::ulps(f(x), exact(static_cast<plain::Real>(x))));
        }
    }
    return worst;
}

TEST(SpecialFunctions, AreWithinTheirBounds) {
    REQUIRE_EXTENDED_PRECISION();
    EXPECT_LE(worstUlps({0.0, 1.0, 2.0, 10.0, 21.7, 21.8, 24.0, 38.0, 100.0, 699.0, 701.0, 713.98}, coder::besseli,
                        plain::besselI0),
              4.0);
    EXPECT_LE(
        worstUlps({1e-300, 2e-16, 3e-16, 0.5, 0.68, 0.999, 1.0, 1.001, 1.5, 1.999, 2.0, 2.001, 4.0, 12.0, 101.0, 1e300},
                  coder::gammaln, [](plain::Real x) { return std::lgamma(x); }),
        1.0);
    for (int x = 1; x <= 101; ++x) {
        EXPECT_LE(plain::ulps(coder::gammaln(x), std::lgamma(static_cast<plain::Real>(x))), 1.0) << x;
    }
}

TEST(SpecialFunctions, BesselOfManySquaresInAnyOrder) {
    const std::vector<double> square{400.0, 1.0, 900.0, 10001.0, 4.0, 0.0, 5.0, 481.0};
    std::vector<double> y(square.size());
    coder::besseliOfSquare(square, std::vector<double>(square.size()), y.data());
    for (std::size_t i = 0; i < square.size(); ++i) {
        EXPECT_LE(plain::ulps(y[i], plain::besselI0(std::sqrt(static_cast<plain::Real>(square[i])))), 4.0) << square[i];
    }
}

TEST(SpecialFunctions, KeepTheirSpecialValues) {
    const struct {
        double (*f)(double);
        double x, y;
    } cases[]{
        {coder::besseli, 1e-300, 1.0},       {coder::besseli, -30.0, coder::besseli(30.0)},
        {coder::besseli, 713.99, rtInf},     {coder::besseli, 1e300, rtInf},
        {coder::besseli, rtMinusInf, rtInf}, {coder::besseli, rtNaN, rtNaN},
        {coder::gammaln, 0.0, rtInf},        {coder::gammaln, rtInf, rtInf},
        {coder::gammaln, 1e308, rtInf},      {coder::gammaln, -1.5, rtNaN},
        {coder::gammaln, rtNaN, rtNaN},      {coder::gammaln, 2.0, 0.0},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(plain::same(c.f(c.x), c.y)) << c.f(c.x) << " at " << c.x;
    }
}

}  // namespace
