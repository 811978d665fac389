#include "calc/input_conditioning.h"

#include <gtest/gtest.h>

#include <cmath>

#include "calc/options.h"
#include "extras/diagnostics.h"

namespace calc_modul_K9_web_ns {
namespace {

using Samples = std::vector<double>;

/// Conditions the same samples in all three phases and returns phase a.
Samples condition(const Samples& x, double N, double coefficient = 1.0) {
    RawChannelSet raw;
    raw.fill({x, 0.0, coefficient, 0.0});
    ChannelSet out;
    data_305_4(raw, N, option::sourceSimulated, out);
    return {out[0].begin(), out[0].end()};
}

TEST(Conditioning, CountsZerosAndDropouts) {
    const struct {
        std::size_t n, zerosFrom, zeros;
        double N, zeroCount, dropouts;
    } cases[]{
        {100, 0, 64, 100, 64, 32},  // the window of samples 0..31 is never examined
        {100, 1, 64, 100, 64, 33},   {100, 20, 31, 100, 31, 0},
        {100, 60, 40, 80, 20, 9},  // zeros count up to N, dropouts to the end
        {33, 0, 33, 33, 33, 1},      {100, 20, 40, 0.5, 0, 9},
        {100, 20, 40, 1e300, 40, 9},
    };
    for (const auto& c : cases) {
        Samples x(c.n, 5.0);
        std::fill_n(x.begin() + static_cast<std::ptrdiff_t>(c.zerosFrom), c.zeros, 0.0);
        RawChannelSet raw;
        raw.fill({x});
        const ConditioningDiagnostics found = diagnose(raw, c.N);
        EXPECT_EQ(found.zeroCount[1], c.zeroCount) << c.zerosFrom << '+' << c.zeros;
        EXPECT_EQ(found.dropoutCount[2], c.dropouts) << c.zerosFrom << '+' << c.zeros;
    }
}

TEST(Conditioning, RepairsZerosUpToNAndRemovesTheOffset) {
    const struct {
        Samples x;
        double N, coefficient;
        Samples y;
    } cases[]{
        {{1, 3, 0, 0}, 4, 1, {-1, 1, 0, 0}},           // mean of the others 2, offset 2
        {{1, 3, 0, 0}, 3, 1, {-0.5, 1.5, 0.5, -1.5}},  // mean of the others 4/(3-1) at index 2 only, offset 6/4
        {{-0.0, 4, 2, 6}, 4, -2, {0, 0, 4, -4}},       // a negative zero is a zero
        {{0, 0}, 2, 1, {0, 0}},
        {{}, 4, 1, {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(condition(c.x, c.N, c.coefficient), c.y);
    }
    EXPECT_TRUE(std::isnan(condition({1, NAN, 2}, 3)[0]));
}

TEST(Conditioning, ScalesByResistanceAndGain) {
    const struct {
        const char* source;
        double resistance, gain, scale;
    } cases[]{{"real", 0.0, 0.0, 0.0049417429956896556 / 1.035},
              {"real", 24.9, 0.0, 1.0 / 24.9 * 0.000732421875 * 6.74712643678161 / 1.035},
              {"real", 127.0, 4.0, 1.0 / 127.0 * 0.000732421875 * 6.74712643678161 / (1.0 + (78.125 + 35.0) / 1000.0)},
              {"real", 100.0, 4.0, 1.0},
              {"sim", 0.0, 0.0, 1.0}};
    for (const auto& c : cases) {
        EXPECT_EQ(hardwareScale(c.source, c.resistance, c.gain), c.scale) << c.source << ' ' << c.resistance;
    }
}

}  // namespace
}  // namespace calc_modul_K9_web_ns
