#include "calc/frequency.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "calc/options.h"
#include "toolkit/non_finite.h"
#include "toolkit/scalar.h"

namespace calc_modul_K9_web_ns {
namespace {

constexpr double pi = 3.14159265358979323846;

std::vector<double> wave(std::size_t n, double amplitude, double frequency, double phase = 0.0) {
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        x[i] = amplitude * std::sin(2.0 * pi * frequency * static_cast<double>(i) * 1e-4 + phase);
    }
    return x;
}

struct Found {
    double frequency = 0.0;
    double amplitude = 0.0;
};

Found find(const std::vector<double>& x, double N, std::string_view option) {
    Found found;
    cal_fin_u(x, N, option, &found.frequency, &found.amplitude);
    double alone = 0.0;
    cal_fin_u(x, N, option, &alone, nullptr);
    EXPECT_EQ(alone, found.frequency) << "the frequency does not depend on whether the amplitude is wanted";
    return found;
}

/// The definition: every slot by its plain sum, then one scan.
Found plain(const std::vector<double>& x, std::string_view option) {
    const bool control = option == option::frequencyControl;
    const double lowest = control ? 10.0 : 49.6;
    const int evaluated = control ? 501 : 8;
    int best = 0;
    coder::creal_T largest{};
    for (int k = 0; k < evaluated; ++k) {
        const double f = lowest + 0.1 * k;
        coder::creal_T sum{0.0, 0.0};
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double phase = static_cast<double>(i + 1) * f * 6.283185307179586 * 0.0001;
            sum.re += x[i] * std::cos(phase);
            sum.im -= x[i] * std::sin(phase);
        }
        if (k == 0 || coder::isLarger(sum, largest)) {
            best = k;
            largest = sum;
        }
    }
    return {lowest + 0.1 * best, 2.0 * coder::rt_hypotd_snf(largest.re, largest.im) / static_cast<double>(x.size())};
}

TEST(FrequencySearch, WinnerAndAmplitudeAreThoseOfThePlainSums) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> anyFrequency(5.0, 70.0);
    std::normal_distribution<double> normal;
    for (const std::size_t n : {1U, 2U, 3U, 40U, 255U, 256U, 257U, 700U, 1024U, 2500U}) {
        for (int round = 0; round < 4; ++round) {
            std::vector<double> x = wave(n, 100.0, round == 0 ? 50.05 : anyFrequency(random), normal(random));
            for (double& v : x) {
                v += round == 3 ? 300.0 * normal(random) : normal(random);
            }
            for (const std::string_view option : {option::frequencyControl, option::frequencyFixed}) {
                const Found expected = plain(x, option);
                const Found found = find(x, static_cast<double>(n), option);
                EXPECT_EQ(found.frequency, expected.frequency) << n << " " << round;
                EXPECT_EQ(found.amplitude, expected.amplitude) << n << " " << round;
            }
        }
    }
}

TEST(FrequencySearch, TiesAndScalesFollowThePlainSums) {
    struct Case {
        const char* name;
        std::vector<double> x;
    };
    std::vector<double> impulse(300, 0.0);
    impulse[0] = 1.0;  // equal magnitudes up to rounding: the largest angle decides
    std::vector<double> tiny = wave(300, 1e-310, 50.0);
    std::vector<double> huge = wave(300, 1.6e308, 50.0);
    for (const Case& c : {Case{"impulse", impulse}, Case{"denormal", tiny}, Case{"overflowing", huge},
                          Case{"infinite", {1.0, rtInf, 2.0}}}) {
        for (const std::string_view option : {option::frequencyControl, option::frequencyFixed}) {
            EXPECT_EQ(find(c.x, static_cast<double>(c.x.size()), option).frequency, plain(c.x, option).frequency)
                << c.name;
        }
    }
}

TEST(FrequencySearch, FollowsItsGrids) {
    struct Case {
        const char* name;
        std::vector<double> x;
        double N;
        std::string_view option;
        double frequency, amplitude;
    };
    const std::vector<double> zeros(100, 0.0);
    const std::vector<double> nans(100, rtNaN);
    const std::vector<Case> cases{
        {"whole periods", wave(10000, 325.0, 50.0), 10000, "frequency_control", 50.0, 325.0},
        {"not fused: a fused 10 + 0.1 * 129 is 22.900000000000002", wave(10000, 1.0, 22.9), 10000, "frequency_control",
         22.9, 1.0},
        {"50.4 Hz is never evaluated", wave(10000, 1.0, 50.4), 10000, "frequency_fixed", 49.6 + 0.1 * 7, 0.98363},
        {"60 Hz is", wave(10000, 1.0, 60.0), 10000, "frequency_control", 60.0, 1.0},
        {"zeros", zeros, 100, "frequency_fixed", 49.6, 0.0},
        {"zeros", zeros, 100, "frequency_control", 10.0, 0.0},
        {"NaN: only the slot that was not evaluated has a value", nans, 100, "frequency_fixed", 49.6 + 0.1 * 8, 0.0},
        {"NaN", nans, 100, "frequency_control", 10.0, rtNaN},
        {"sums that are NaN, samples that are not", {rtInf, -rtInf}, 2, "frequency_fixed", 49.6 + 0.1 * 8, 0.0},
        {"sums that are NaN, samples that are not", {rtInf, -rtInf}, 2, "frequency_control", 10.0, rtNaN},
        {"NaN count", wave(100, 1.0, 50.0), rtNaN, "frequency_control", 10.0, rtNaN},
        {"one sample for all times", {2.0}, 200, "frequency_control", 10.0, 3.7419632904},
        {"no samples", {}, 0, "frequency_fixed", 49.6, rtNaN},
    };
    for (const Case& c : cases) {
        const Found found = find(c.x, c.N, c.option);
        EXPECT_EQ(found.frequency, c.frequency) << c.name;
        if (std::isnan(c.amplitude)) {
            EXPECT_TRUE(std::isnan(found.amplitude)) << c.name;
        } else {
            EXPECT_NEAR(found.amplitude, c.amplitude, 1e-2 * c.amplitude) << c.name;
        }
    }
}

}  // namespace
}  // namespace calc_modul_K9_web_ns
