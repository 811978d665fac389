#include "calc/frequency.h"

#include <gtest/gtest.h>

#include "calc/options.h"
#include "calc/plain_search.h"
#include "extras/cal_fin_u.h"
#include "support/plain.h"
#include "support/signals.h"
#include "toolkit/non_finite.h"
#include "toolkit/scalar.h"

namespace calc_modul_K9_web_ns {
namespace {

using signals::Samples;

/// The search of one signal in both windows compared with the plain one.
void expectPlainResult(const std::string& what, const Samples& x) {
    const auto parts = [](std::complex<double> z) { return coder::creal_T{z.real(), z.imag()}; };
    const auto isLarger = [&](auto a, auto b) { return coder::isLarger(parts(a), parts(b)); };
    const auto N = static_cast<double>(x.size());
    for (const std::string_view option : {option::frequencyControl, option::frequencyFixed}) {
        const plain::Line expected = plain::searchedLine(x, N, option == option::frequencyControl, isLarger);
        double frequency = 0.0;
        double amplitude = 0.0;
        cal_fin_u(x, N, option, &frequency, &amplitude);
        EXPECT_EQ(frequency, expected.frequency) << what << ", " << x.size() << ", " << option;
        EXPECT_TRUE(plain::same(amplitude, 2.0 * coder::rt_hypotd_snf(expected.sum.real(), expected.sum.imag()) / N))
            << what << ", " << x.size() << ", " << option;
        cal_fin_u(x, N, option, &frequency, nullptr);
        EXPECT_EQ(frequency, expected.frequency) << "whether or not the amplitude is wanted";
    }
}

TEST(FrequencySearch, WinnerAndAmplitudeAreThoseOfThePlainSums) {
    for (const std::size_t n : {1U, 2U, 40U, 255U, 256U, 257U, 700U, 1024U, 2500U}) {
        const double any = 5.0 + static_cast<double>(n * 7919 % 6500) / 100.0;
        expectPlainResult("between two slots", signals::cosine(n, 100.0, 50.05, 1.0));
        expectPlainResult("any frequency", signals::wave(signals::noise(n), {{100.0, any, 2.0}}));
        expectPlainResult("mostly noise", signals::wave(signals::noise(n, n, 0.0, 300.0), {{100.0, 52.3}}));
    }
}

TEST(FrequencySearch, TiesAndScalesFollowThePlainSums) {
    Samples impulse(300);
    impulse[0] = 1.0;  // equal magnitudes up to rounding: the largest angle decides
    expectPlainResult("impulse", impulse);
    expectPlainResult("denormal", signals::cosine(300, 1e-310, 50.0));
    expectPlainResult("overflow", signals::cosine(300, 1.6e308, 50.0));
    expectPlainResult("infinite", {1.0, rtInf, 2.0});
    expectPlainResult("no valid sum", {rtInf, rtMinusInf});
    expectPlainResult("NaN", Samples(100, rtNaN));
    expectPlainResult("zeros", Samples(100));
    expectPlainResult("none", {});
}

TEST(FrequencySearch, FollowsItsGrids) {
    const struct {
        const char* name;
        Samples x;
        double N;
        std::string_view option;
        double frequency, amplitude;
    } cases[]{
        {"whole periods", signals::cosine(10000, 325.0, 50.0), 10000, "frequency_control", 50.0, 325.0},
        {"not fused: a fused 10 + 0.1 * 129 is 22.900000000000002", signals::cosine(10000, 1.0, 22.9), 10000,
         "frequency_control", 22.9, 1.0},
        {"50.4 Hz is never evaluated", signals::cosine(10000, 1.0, 50.4), 10000, "frequency_fixed", 49.6 + 0.1 * 7,
         0.98363},
        {"NaN count", signals::cosine(100, 1.0, 50.0), rtNaN, "frequency_control", 10.0, rtNaN},
        {"one sample for all times", {2.0}, 200, "frequency_control", 10.0, 3.7419632904},
    };
    for (const auto& c : cases) {
        const FrequencySearch::Found found = FrequencySearch(c.N, c.option).fundamental(c.x);
        EXPECT_EQ(found.frequency, c.frequency) << c.name;
        EXPECT_TRUE(std::isnan(c.amplitude) ? std::isnan(found.amplitude)
                                            : std::fabs(found.amplitude / c.amplitude - 1.0) < 1e-2)
            << c.name << ": " << found.amplitude;
    }
}

}  // namespace
}  // namespace calc_modul_K9_web_ns
