#include "calc/input_conditioning.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "calc/options.h"

namespace calc_modul_K9_web_ns {
namespace {

/// Conditions the same samples in all three phases and returns phase a.
std::vector<double> condition(const std::vector<double>& x, double N, ConditioningDiagnostics& found,
                              double coefficient = 1.0) {
    RawChannelSet raw;
    raw.fill({x, 0.0, coefficient, 0.0});
    ChannelSet out;
    data_305_4(raw, N, option::sourceSimulated, out, &found);
    return {out[0].begin(), out[0].end()};
}

TEST(Conditioning, CountsZerosAndDropouts) {
    struct Case {
        std::size_t n, zerosFrom, zeros;
        double N, zeroCount, dropouts;
    };
    const std::vector<Case> cases{
        {100, 0, 64, 100, 64, 32},  // the window of samples 0..31 is never examined
        {100, 1, 64, 100, 64, 33}, {100, 20, 40, 100, 40, 9},
        {100, 20, 31, 100, 31, 0}, {100, 60, 40, 80, 20, 9},  // zeros count up to N, dropouts to the end
        {32, 0, 32, 32, 32, 0},    {33, 0, 33, 33, 33, 1},
        {100, 20, 40, 0.5, 0, 9},  {100, 20, 40, 1e300, 40, 9},
    };
    for (const Case& c : cases) {
        std::vector<double> x(c.n, 5.0);
        std::fill_n(x.begin() + static_cast<std::ptrdiff_t>(c.zerosFrom), c.zeros, 0.0);
        ConditioningDiagnostics found;
        condition(x, c.N, found);
        EXPECT_EQ(found.zeroCount[1], c.zeroCount);
        EXPECT_EQ(found.dropoutCount[2], c.dropouts);
    }
}

TEST(Conditioning, RepairsZerosUpToNAndRemovesTheOffset) {
    struct Case {
        std::vector<double> x;
        double N;
        std::vector<double> y;
    };
    const std::vector<Case> cases{
        {{1, 3, 0, 0}, 4, {-1, 1, 0, 0}},           // gap mean 2, offset 2
        {{1, 3, 0, 0}, 3, {-0.5, 1.5, 0.5, -1.5}},  // gap mean 4/(3-1) at index 2 only, offset 6/4
        {{0, 0, 0, 0}, 4, {0, 0, 0, 0}},
        {{-0.0, 4, 2, 6}, 4, {0, 0, -2, 2}},  // a negative zero is a zero
        {{}, 4, {}},
    };
    for (const Case& c : cases) {
        ConditioningDiagnostics found;
        EXPECT_EQ(condition(c.x, c.N, found), c.y);
        std::vector<double> scaled = c.y;
        for (double& v : scaled) {
            v *= -2.0;
        }
        EXPECT_EQ(condition(c.x, c.N, found, -2.0), scaled);
    }
    ConditioningDiagnostics found;
    for (const double v : condition({1, std::numeric_limits<double>::quiet_NaN(), 2}, 3, found)) {
        EXPECT_TRUE(std::isnan(v));
    }
}

TEST(Conditioning, ScalesByResistanceAndGain) {
    const double unit = 1.035;  // attenuation at gain 0
    EXPECT_EQ(hardwareScale("real", 0.0, 0.0), 0.0049417429956896556 / unit);
    EXPECT_EQ(hardwareScale("real", 24.9, 0.0), 1.0 / 24.9 * 0.000732421875 * 6.74712643678161 / unit);
    EXPECT_EQ(hardwareScale("real", 127.0, 4.0),
              1.0 / 127.0 * 0.000732421875 * 6.74712643678161 / (1.0 + (19.53125 * 4.0 + 35.0) / 1000.0));
    EXPECT_EQ(hardwareScale("real", 100.0, 4.0), 1.0);
    EXPECT_EQ(hardwareScale("sim", 0.0, 0.0), 1.0);
}

}  // namespace
}  // namespace calc_modul_K9_web_ns
