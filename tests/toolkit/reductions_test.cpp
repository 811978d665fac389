#include "toolkit/reductions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <new>
#include <random>

#include "toolkit/non_finite.h"
#include "toolkit/scalar.h"

namespace {

using coder::column;
using coder::row;

/// The documented order, written as plainly as it can be.
template <class T>
T plainBlockedSum(const std::vector<T>& x) {
    std::vector<T> sums;
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (i % 1024 == 0) {
            sums.push_back(x[i]);
        } else {
            sums.back() = sums.back() + x[i];
        }
    }
    T total = sums.empty() ? T{} : sums[0];
    for (std::size_t b = 1; b < sums.size(); ++b) {
        total = total + sums[b];
    }
    return total;
}

TEST(Reductions, SumsKeepTheDocumentedOrderBitForBit) {
    std::mt19937_64 random(1);
    std::normal_distribution<double> normal(0.1, 1e3);
    for (const std::size_t n : {0U, 1U, 2U, 1023U, 1024U, 1025U, 2048U, 9215U, 9216U, 9217U, 10000U, 17408U, 50001U}) {
        std::vector<double> x(n);
        coder::complex_row z;
        z.set_size(1, static_cast<int>(n));
        std::vector<coder::creal_T> zs(n);
        for (std::size_t i = 0; i < n; ++i) {
            x[i] = normal(random);
            zs[i] = {x[i], normal(random)};
            z[static_cast<int>(i)] = zs[i];
        }
        EXPECT_EQ(coder::combineVectorElements(x), plainBlockedSum(x)) << n;
        EXPECT_EQ(coder::sum(z), plainBlockedSum(zs)) << n;
    }
    EXPECT_TRUE(std::isnan(coder::mean({})));
}

TEST(Reductions, ExtremesSkipNaNAndKeepTheFirstOfEquals) {
    struct Case {
        std::vector<double> x;
        double largest;
        int largestAt;
        double smallest;
        int smallestAt;
    };
    const std::vector<Case> cases{
        {{7.0}, 7.0, 1, 7.0, 1},
        {{1.0, 2.0}, 2.0, 2, 1.0, 1},
        {{rtNaN, 2.0}, 2.0, 2, 2.0, 2},
        {{2.0, rtNaN}, 2.0, 1, 2.0, 1},
        {{rtNaN, rtNaN, 3.0, 3.0}, 3.0, 3, 3.0, 3},
        {{1.0, 5.0, rtNaN, 5.0, 1.0}, 5.0, 2, 1.0, 1},
        {{rtNaN, rtNaN, rtNaN}, rtNaN, 1, rtNaN, 1},
        {{rtMinusInf, rtInf, 0.0}, rtInf, 2, rtMinusInf, 1},
    };
    for (const Case& c : cases) {
        double value = 0.0;
        int index = 0;
        coder::maximum(c.x, &value, &index);
        EXPECT_EQ(index, c.largestAt);
        EXPECT_TRUE(value == c.largest || (std::isnan(value) && std::isnan(c.largest)));
        coder::minimum(c.x, &value, &index);
        EXPECT_EQ(index, c.smallestAt);
        EXPECT_TRUE(value == c.smallest || (std::isnan(value) && std::isnan(c.smallest)));
        const double span = coder::peak2peak(c.x);
        EXPECT_TRUE(span == c.largest - c.smallest || std::isnan(c.largest));
    }
}

TEST(Reductions, ColonIsFilledFromBothEnds) {
    struct Case {
        double a, d, b;
        std::vector<double> y;
    };
    const std::vector<Case> cases{
        {1, 1, 4, {1, 2, 3, 4}},
        {0, 1, 2.5, {0, 1, 2}},
        {0, 1, 0, {0}},
        {0, 1, -0.4, {}},
        {3, 1, 5, {3, 4, 5}},
        {0, 2, 7, {0, 2, 4, 6}},
        {0, 0.1, 0.5, {0, 0.1, 0.2, 0.5 - 2 * 0.1, 0.5 - 0.1, 0.5}},  // not 3 * 0.1
        {0, 0.1, 0.4, {0, 0.1, 0.2, 0.4 - 0.1, 0.4}},
        {0, -0.5, -1, {0, -0.5, -1}},
        {0, 0.5, -1, {}},
        {0, 0, 1, {}},
    };
    for (const Case& c : cases) {
        row y;
        coder::eml_float_colon(c.a, c.d, c.b, y);
        EXPECT_EQ(std::vector<double>(y.begin(), y.end()), c.y) << c.a << ":" << c.d << ":" << c.b;
        for (int most = 1; most <= y.numel(); ++most) {
            row start;
            coder::eml_float_colon(c.a, c.d, c.b, start, most);
            EXPECT_EQ(std::vector<double>(start.begin(), start.end()),
                      std::vector<double>(c.y.begin(), c.y.begin() + most));
        }
        if (c.d == 1.0) {
            coder::eml_float_colon(c.a, c.b, y);
            EXPECT_EQ(std::vector<double>(y.begin(), y.end()), c.y);
        }
    }
    row y;
    struct Undefined {
        double a, d, b;
    };
    for (const Undefined& c : {Undefined{0.0, rtNaN, 1.0}, Undefined{0.0, 1.0, rtNaN}, Undefined{rtNaN, 1.0, 2.0},
                               Undefined{0.0, rtInf, rtInf}, Undefined{0.0, rtInf, 1.0}, Undefined{1.0, -rtInf, 2.0},
                               Undefined{rtInf, 1.0, rtInf}, Undefined{-rtInf, 0.5, -rtInf}}) {
        coder::eml_float_colon(c.a, c.d, c.b, y);
        ASSERT_EQ(y.numel(), 1) << c.a << ":" << c.d << ":" << c.b;
        EXPECT_TRUE(std::isnan(y[0]));
    }
    EXPECT_THROW(coder::eml_float_colon(0.0, 1.0, 1e18, y), std::bad_array_new_length);
}

TEST(Reductions, DifferencesAndProducts) {
    column x;
    x.set_size(3);
    x[0] = 1.0;
    x[1] = 4.0;
    x[2] = 2.0;
    column y;
    coder::diff(x, y);
    ASSERT_EQ(y.numel(), 2);
    EXPECT_EQ(y[0], 3.0);
    EXPECT_EQ(y[1], -2.0);
    column single;
    single.set_size(1);
    single[0] = 2.0;
    coder::diff(single, y);
    EXPECT_EQ(y.numel(), 0);
    coder::bsxfun(single, x, y);
    ASSERT_EQ(y.numel(), 3);
    EXPECT_EQ(y[2], 4.0);
    column shorter;
    shorter.set_size(2);
    shorter[0] = shorter[1] = 3.0;
    coder::bsxfun(x, shorter, y);
    EXPECT_EQ(y.numel(), 2) << "unequal lengths are cut to the shorter";
}

TEST(Scalars, FollowTheirSpecialCases) {
    EXPECT_EQ(coder::rt_hypotd_snf(3.0, 3.0), 3.0 * 1.4142135623730951);
    EXPECT_EQ(coder::rt_hypotd_snf(1e300, 1e300), 1e300 * 1.4142135623730951);
    EXPECT_DOUBLE_EQ(coder::rt_hypotd_snf(-3e200, 4e200), 5e200);
    EXPECT_TRUE(std::isinf(coder::rt_hypotd_snf(rtInf, 1.0)));
    EXPECT_TRUE(std::isnan(coder::rt_hypotd_snf(rtNaN, rtInf)));
    EXPECT_EQ(coder::rt_atan2d_snf(0.0, 0.0), 0.0);
    EXPECT_EQ(coder::rt_atan2d_snf(-2.0, 0.0), -coder::pi / 2);
    EXPECT_EQ(coder::rt_atan2d_snf(rtMinusInf, rtMinusInf), std::atan2(-1.0, -1.0));
    EXPECT_TRUE(std::isnan(coder::rt_atan2d_snf(1.0, rtNaN)));
    EXPECT_EQ(coder::rt_powd_snf(-1.0), 0.1);
    EXPECT_EQ(coder::rt_powd_snf(0.5), 3.1622776601683795);
    EXPECT_EQ(coder::rt_powd_snf(rtMinusInf), 0.0);
    EXPECT_TRUE(coder::iseq(1.0, 1.0));
    EXPECT_FALSE(coder::iseq(0.1 + 0.2, 0.3));
    EXPECT_TRUE(coder::iseq(5e-324, 5e-324));
    EXPECT_FALSE(coder::iseq(0.0, 5e-324)) << "denormals have a spacing too";
    EXPECT_TRUE(coder::iseq(rtInf, rtInf));
    EXPECT_FALSE(coder::iseq(rtInf, rtMinusInf));
    EXPECT_FALSE(coder::iseq(rtNaN, rtNaN));
    EXPECT_EQ(coder::truncatedToInt(-2.9), -2);
    EXPECT_EQ(coder::truncatedToInt(1e300), 2147483647);
    EXPECT_EQ(coder::truncatedToInt(rtNaN), 0);
}

TEST(Scalars, ComplexMaximaAreOrderedByMagnitudeThenAngle) {
    EXPECT_TRUE(coder::isLarger({0.0, 2.0}, {1.0, 0.0}));
    EXPECT_TRUE(coder::isLarger({0.0, 1.0}, {1.0, 0.0})) << "equal magnitudes: the larger angle wins";
    EXPECT_FALSE(coder::isLarger({1.0, 0.0}, {1.0, 0.0}));
    EXPECT_TRUE(coder::isLarger({1.7e308, 1.7e308}, {1.6e308, 1.7e308})) << "magnitudes beyond the largest double";
}

}  // namespace
