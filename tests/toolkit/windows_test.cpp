#include "toolkit/windows.h"

#include <gtest/gtest.h>

#include "extended_precision.h"
#include "toolkit/non_finite.h"
#include "toolkit/quad.h"

namespace {

using coder::column;

std::vector<double> values(void (*window)(double, column&), double n) {
    column w;
    window(n, w);
    return {w.begin(), w.end()};
}

quad::number raisedCosine(int k, int n) {
    return (1 - cosq(8 * atanq(1) * k / n)) / 2;
}

quad::number kaiser(int k, int n, double beta, double i0OfBeta) {
    const quad::number last = n - 1;
    return quad::besseli(2 * beta / last * sqrtq(static_cast<quad::number>(k) * (n - 1 - k))) / i0OfBeta;
}

struct Window {
    const char* name;
    void (*make)(double, column&);
    quad::number (*exact)(int k, int n);
};

const Window windows[] = {
    {"hanning", coder::hanning, [](int k, int n) { return raisedCosine(k + 1, n + 1); }},
    {"b_hanning", coder::b_hanning, [](int k, int n) { return raisedCosine(k, n); }},
    {"hamming", coder::hamming, [](int k, int n) -> quad::number { return (8 + 92 * raisedCosine(k, n - 1)) / 100; }},
    {"kaiser", coder::kaiser, [](int k, int n) { return kaiser(k, n, 0.5, 1.0634833707413236); }},
    {"b_kaiser", coder::b_kaiser, [](int k, int n) { return kaiser(k, n, 38.0, 2068504714851045.0); }},
};

TEST(Windows, AreWithinFourUlpsAtEveryPoint) {
    REQUIRE_EXTENDED_PRECISION();
    for (const Window& window : windows) {
        for (const int n : {2, 3, 4, 5, 6, 7, 8, 12, 13, 99, 100, 500, 1000, 1024, 9999, 10000, 100003}) {
            const std::vector<double> w = values(window.make, n);
            ASSERT_EQ(w.size(), static_cast<std::size_t>(n));
            const int step = n > 10000 ? 97 : 1;
            for (int k = 0; k < n; k += step) {
                ASSERT_LE(quad::ulps(w[static_cast<std::size_t>(k)], window.exact(k, n)), 4.0)
                    << window.name << " " << n << " at " << k;
            }
        }
    }
}

TEST(Windows, ExactExamples) {
    using List = std::vector<double>;
    EXPECT_EQ(values(coder::hanning, 2), (List{0.75, 0.75}));
    EXPECT_EQ(values(coder::hanning, 3), (List{0.5, 1.0, 0.5}));
    EXPECT_EQ(values(coder::b_hanning, 2), (List{0.0, 1.0}));
    EXPECT_EQ(values(coder::b_hanning, 4), (List{0.0, 0.5, 1.0, 0.5}));
    EXPECT_EQ(values(coder::hamming, 3), (List{0.08, 1.0, 0.08}));
    EXPECT_EQ(values(coder::b_kaiser, 10001)[5000], 1.0);
    EXPECT_EQ(values(coder::b_kaiser, 10001)[0], 1.0 / 2068504714851045.0);
}

TEST(Windows, RoundTheirLength) {
    for (const Window& window : windows) {
        const auto length = [&](double n) { return values(window.make, n).size(); };
        EXPECT_EQ(length(2.5), 3U) << window.name;
        EXPECT_EQ(length(2.4999), 2U) << window.name;
        EXPECT_EQ(length(0.0) + length(0.4) + length(-3.0) + length(rtNaN), 0U) << window.name;
        EXPECT_EQ(values(window.make, 0.5), std::vector<double>{1.0}) << window.name;
    }
}

}  // namespace
