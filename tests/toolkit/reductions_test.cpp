#include <gtest/gtest.h>

#include <new>

#include "extras/elementwise.h"
#include "support/plain.h"
#include "support/signals.h"
#include "toolkit/non_finite.h"
#include "toolkit/ranges.h"
#include "toolkit/scalar.h"
#include "toolkit/sums.h"

namespace {

using coder::column;
using coder::creal_T;
using coder::row;
using Row = std::vector<double>;

/// The documented order, written as plainly as it can be.
template <class T>
T plainBlockedSum(const std::vector<T>& x) {
    T total{};
    for (std::size_t from = 0; from < x.size(); from += 1024) {
        T block = x[from];
        for (std::size_t i = from + 1; i < std::min(from + 1024, x.size()); ++i) {
            block = block + x[i];
        }
        total = from == 0 ? block : total + block;
    }
    return total;
}

TEST(Reductions, SumsKeepTheDocumentedOrderBitForBit) {
    for (const std::size_t n : {0U, 1U, 2U, 1023U, 1024U, 1025U, 2050U, 3000U, 4000U, 5000U, 6000U, 7000U, 8000U, 9215U,
                                9216U, 9217U, 10000U, 17408U, 50001U}) {
        const Row x = signals::noise(n, 1, 0.1, 1e3);
        const Row y = signals::noise(n, 2, 0.1, 1e3);
        std::vector<creal_T> z(n);
        std::transform(x.begin(), x.end(), y.begin(), z.begin(), [](double re, double im) { return creal_T{re, im}; });
        coder::complex_row complex;
        complex.set_size(1, static_cast<int>(n));
        std::copy(z.begin(), z.end(), complex.begin());
        EXPECT_EQ(coder::combineVectorElements(x), plainBlockedSum(x)) << n;
        EXPECT_EQ(coder::combineVectorElements<3>({x, y, x})[1], plainBlockedSum(y)) << n;
        EXPECT_EQ((coder::combineVectorElements<2>({x, {}})), (std::array{plainBlockedSum(x), 0.0})) << n;
        EXPECT_EQ(coder::sum(complex), plainBlockedSum(z)) << n;
    }
    EXPECT_TRUE(std::isnan(coder::mean({})));
    EXPECT_TRUE(std::signbit(coder::combineVectorElements(Row(2000, -0.0))));
}

TEST(Reductions, RangesAreFilledFromBothEnds) {
    const struct {
        double a, d, b;
        Row y;
    } cases[]{
        {1, 1, 4, {1, 2, 3, 4}},
        {0, 1, 2.5, {0, 1, 2}},
        {0, 1, -0.4, {}},
        {0, 2, 7, {0, 2, 4, 6}},
        {0, 0.1, 0.5, {0, 0.1, 0.2, 0.5 - 2 * 0.1, 0.5 - 0.1, 0.5}},  // not 3 * 0.1
        {0, 0.1, 0.6, {0, 0.1, 0.2, 0.6 / 2, 0.6 - 2 * 0.1, 0.6 - 0.1, 0.6}},
        {0, -0.5, -1, {0, -0.5, -1}},
        {0, 0, 1, {}},
    };
    Row y;
    for (const auto& c : cases) {
        coder::eml_float_colon(c.a, c.d, c.b, y);
        EXPECT_EQ(y, c.y) << c.a << ":" << c.d << ":" << c.b;
        for (std::ptrdiff_t most = 1; most <= std::ssize(c.y); ++most) {
            coder::eml_float_colon(c.a, c.d, c.b, y, static_cast<int>(most));
            EXPECT_EQ(y, Row(c.y.begin(), c.y.begin() + most)) << c.a << ":" << c.d << ":" << c.b;
        }
    }
    EXPECT_THROW(coder::eml_float_colon(0.0, 1.0, 1e18, y), std::bad_array_new_length);
}

TEST(Reductions, DifferencesAndProductsOfAnyLengths) {
    const auto columnOf = [](const Row& x) {
        column y;
        y.set_size(static_cast<int>(x.size()));
        std::copy(x.begin(), x.end(), y.begin());
        return y;
    };
    column y;
    const auto found = [&] { return Row(y.begin(), y.end()); };
    coder::diff(columnOf({1, 4, 2}), y);
    EXPECT_EQ(found(), (Row{3, -2}));
    coder::diff(columnOf({2}), y);
    EXPECT_EQ(found(), Row{});
    coder::bsxfun(columnOf({2}), columnOf({1, 4, 2}), y);
    EXPECT_EQ(found(), (Row{2, 8, 4})) << "a single element is repeated";
    coder::bsxfun(columnOf({1, 4, 2}), columnOf({3, 3}), y);
    EXPECT_EQ(found(), (Row{3, 12})) << "unequal lengths are cut to the shorter";
}

TEST(Scalars, FollowTheirSpecialCases) {
    const std::pair<double, double> cases[]{
        {coder::rt_hypotd_snf(3.0, 3.0), 3.0 * 1.4142135623730951},
        {coder::rt_hypotd_snf(1e300, 1e300), 1e300 * 1.4142135623730951},
        {coder::rt_hypotd_snf(rtInf, 1.0), rtInf},
        {coder::rt_hypotd_snf(rtNaN, rtInf), rtNaN},
        {coder::rt_atan2d_snf(0.0, -1e-300 * 1e-300), 0.0},
        {coder::rt_atan2d_snf(-2.0, 0.0), -coder::pi / 2},
        {coder::rt_atan2d_snf(rtMinusInf, rtMinusInf), std::atan2(-1.0, -1.0)},
        {coder::rt_atan2d_snf(1.0, rtNaN), rtNaN},
        {coder::rt_powd_snf(-1.0), 0.1},
        {coder::rt_powd_snf(0.5), 3.1622776601683795},
        {coder::rt_powd_snf(rtMinusInf), 0.0},
        {coder::iseq(5e-324, 5e-324), 1},
        {coder::iseq(0.0, 5e-324), 0},  // subnormal numbers have a spacing too
        {coder::iseq(0.1 + 0.2, 0.3), 0},
        {coder::iseq(rtInf, rtInf), 1},
        {coder::iseq(rtInf, rtMinusInf), 0},
        {coder::truncatedToInt(1e300), 2147483647},
        {coder::isLarger({0.0, 2.0}, {1.0, 0.0}), 1},
        {coder::isLarger({0.0, 1.0}, {1.0, 0.0}), 1},  // of equal magnitudes the larger angle wins
        {coder::isLarger({1.0, 0.0}, {1.0, 0.0}), 0},
        {coder::isLarger({1.7e308, 1.7e308}, {1.6e308, 1.7e308}), 1},  // magnitudes beyond the largest double
    };
    for (const auto& [found, expected] : cases) {
        EXPECT_TRUE(plain::same(found, expected)) << found << " instead of " << expected;
    }
}

}  // namespace
