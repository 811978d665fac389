#include "toolkit/windows.h"

#include <gtest/gtest.h>

#include "support/plain.h"
#include "toolkit/non_finite.h"

namespace {

using Points = std::vector<double>;

Points points(void (*make)(double, coder::column&), double n) {
    coder::column w;
    make(n, w);
    return {w.begin(), w.end()};
}

using Index = std::size_t;
const struct {
    const char* name;
    void (*make)(double, coder::column&);
    plain::Real (*exact)(Index k, Index n);
} windows[]{
    {"hanning", coder::hanning, [](Index k, Index n) { return plain::raisedCosine(k + 1, n + 1); }},
    {"b_hanning", coder::b_hanning, [](Index k, Index n) { return plain::raisedCosine(k, n); }},
    {"hamming", coder::hamming, [](Index k, Index n) { return (8 + 92 * plain::raisedCosine(k, n - 1)) / 100; }},
    {"kaiser", coder::kaiser, [](Index k, Index n) { return plain::kaiser(k, n, 0.5L); }},
    {"b_kaiser", coder::b_kaiser, [](Index k, Index n) { return plain::kaiser(k, n, 38); }},
};

TEST(Windows, AreWithinFourUlpsAtEveryPoint) {
    REQUIRE_EXTENDED_PRECISION();
    for (const auto& window : windows) {
        for (const Index n : {2U, 3U, 4U, 5U, 8U, 13U, 99U, 100U, 1000U, 1024U, 9999U, 10000U, 100003U}) {
            const Points w = points(window.make, static_cast<double>(n));
            ASSERT_EQ(w.size(), n);
            for (Index k = 0; k<n; k += n> 10000 ? 97 : 1) {
                ASSERT_LE(plain::ulps(w[k], window.exact(k, n)), 4.0) << window.name << ' ' << n << " at " << k;
            }
        }
    }
}

TEST(Windows, RoundTheirLength) {
    for (const auto& window : windows) {
        for (const auto& [n, length] : {std::pair(2.5, 3U), {2.4999, 2U}, {0.4, 0U}, {-3.0, 0U}, {rtNaN, 0U}}) {
            EXPECT_EQ(points(window.make, n).size(), length) << window.name << ' ' << n;
        }
        EXPECT_EQ(points(window.make, 0.5), Points{1.0}) << window.name;
    }
}

}  // namespace
