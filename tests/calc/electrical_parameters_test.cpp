#include "calc/electrical_parameters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "calc/phase_difference.h"
#include "toolkit/analytic_signal.h"

namespace calc_modul_K9_web_ns {
namespace {

using coder::d_table;
using coder::Parameter;
using coder::row;

constexpr double pi = 3.14159265358979323846;

row cosine(int n, double amplitude, double frequency, double degrees) {
    row x;
    x.set_size(1, n);
    for (int i = 0; i < n; ++i) {
        x[i] = amplitude * std::cos(2.0 * pi * frequency * i * 1e-4 + degrees * pi / 180.0);
    }
    return x;
}

/// A balanced set, phase a at the given angle.
ChannelSet balanced(int n, double amplitude, double degrees, double frequency = 50.0) {
    return {cosine(n, amplitude, frequency, degrees), cosine(n, amplitude, frequency, degrees - 120.0),
            cosine(n, amplitude, frequency, degrees + 120.0)};
}

d_table measure(
    const ChannelSet& u, const ChannelSet& i, std::uint32_t flags,
    const std::function<void(MeasurementOptions&)>& change = [](MeasurementOptions&) {}) {
    d_table out;
    out.prefill();
    MeasurementOptions options(flags);
    change(options);
    ParamData_mo_305_4(u, i, u[0].numel(), options, measureHarmonics(u, i), out);
    return out;
}

constexpr std::uint32_t fourWire = 0x1;
constexpr std::uint32_t control = 0x100;
constexpr std::uint32_t threeWattmeter = 0x10000;

TEST(ElectricalParameters, WiringDecidesWhatTheVoltagesAre) {
    const ChannelSet u = balanced(5000, 100.0, 0.0);
    const ChannelSet i = balanced(5000, 5.0, -30.0);
    const double rms = 100.0 / std::sqrt(2.0);
    struct Case {
        std::string_view wiring;
        double phase, line;
    };
    for (const Case& c : {Case{"three", rms / std::sqrt(3.0), rms}, Case{"four", rms, rms * std::sqrt(3.0)},
                          Case{"fourth", 0.0, 0.0}}) {
        const d_table out = measure(u, i, 0, [&](MeasurementOptions& options) { options.wiring = c.wiring; });
        for (const Parameter p : {Parameter::Uda, Parameter::Udb, Parameter::Udc}) {
            EXPECT_NEAR(out[p], c.phase, 1e-12 * rms) << c.wiring;
        }
        for (const Parameter p : {Parameter::Udab, Parameter::Udbc, Parameter::Udca}) {
            EXPECT_NEAR(out[p], c.line, 1e-12 * rms) << c.wiring;
        }
        EXPECT_NEAR(out[Parameter::Ud0], 0.0, 1e-12);
    }
}

TEST(ElectricalParameters, VoltageGatesOfPhasesBAndCAreCrossed) {
    ChannelSet u = balanced(5000, 100.0, 0.0);
    u[2] = cosine(5000, 100.0, 65.0, 0.0);  // the mean, 55 Hz, is in range
    const d_table out = measure(u, balanced(5000, 5.0, 0.0), fourWire | control | threeWattmeter);
    EXPECT_TRUE(std::isnan(out[Parameter::THD_Vb]));
    EXPECT_TRUE(std::isnan(out[Parameter::Fb]));
    EXPECT_LT(out[Parameter::THD_Vc], 1e-3);
    EXPECT_EQ(out[Parameter::Fc], 60.0) << "the end of the grid next to 65 Hz";
    EXPECT_EQ(out[Parameter::Fa], 50.0);
    EXPECT_TRUE(std::isnan(out[Parameter::P])) << "one gate that stays shut holds back all power";
    ChannelSet i = balanced(5000, 5.0, 0.0);
    i[1] = cosine(5000, 5.0, 65.0, 0.0);
    const d_table currents = measure(balanced(5000, 100.0, 0.0), i, fourWire | control);
    EXPECT_TRUE(std::isnan(currents[Parameter::THD_Ib])) << "currents are gated by themselves";
    EXPECT_FALSE(std::isnan(currents[Parameter::THD_Ic]));
}

TEST(ElectricalParameters, OutsideTheWindowThereIsNoThdFrequencyOrPower) {
    const ChannelSet u = balanced(5000, 100.0, 0.0, 49.5);
    const ChannelSet i = balanced(5000, 5.0, 0.0, 49.5);
    const d_table outside = measure(u, i, fourWire | threeWattmeter | 0xC00);
    for (std::size_t p = 0; p < coder::parameterCount; ++p) {
        const auto which = static_cast<Parameter>(p);
        const bool given = which >= Parameter::Uda && which <= Parameter::Idc;
        EXPECT_EQ(std::isnan(outside[which]), !given) << p;
    }
    const d_table inside = measure(u, i, fourWire | threeWattmeter | control);
    EXPECT_EQ(inside[Parameter::Fa], 10.0 + 0.1 * 395);
    EXPECT_NEAR(inside[Parameter::P], 3.0 * 250.0, 1e-9);
}

TEST(ElectricalParameters, RebuiltPhaseTakesTheMeanOfTheOthersUnlessKept) {
    ChannelSet i = balanced(5000, 5.0, 0.0);
    i[0] = cosine(5000, 1.0, 50.0, 0.0);
    i[1] = cosine(5000, 2.0, 50.0, 0.0);
    const ChannelSet u = balanced(5000, 100.0, 0.0);
    const d_table plain = measure(u, i, 0);
    for (std::uint32_t choice = 0; choice < 4; ++choice) {
        const std::uint32_t flags = choice << 6U;
        EXPECT_EQ(measure(u, i, flags | 0x200)[Parameter::Ida], plain[Parameter::Ida]);
        const d_table out = measure(u, i, flags);
        for (std::uint32_t phase = 0; phase < 3; ++phase) {
            const auto at = [&](const d_table& from, std::uint32_t p) {
                return from.values[static_cast<std::size_t>(Parameter::Ida) + p % 3];
            };
            EXPECT_EQ(at(out, phase),
                      choice == phase + 1 ? (at(plain, phase + 1) + at(plain, phase + 2)) * 0.5 : at(plain, phase));
        }
    }
}

TEST(ElectricalParameters, PowerMethodsReadABalancedLoad) {
    // 100 V and 5 A amplitude: 250 VA per phase. The load's angle is 30 degrees, the current leads in the last rows.
    const double s = 250.0;
    const double c30 = s * std::cos(pi / 6);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        std::uint32_t mode;
        double degrees;  // of the current
        double p, q, total;
        double pa, qa, sa;
    };
    const std::vector<Case> cases{
        {0, -30, nan, nan, nan, nan, nan, nan},
        {1, -30, 3 * c30, 3 * s * 0.5, 3 * s, c30, s * 0.5, s},
        {1, +30, 3 * c30, 3 * s * 0.5, 3 * s, c30, s * 0.5, s},  // never negative
        {6, -30, 3 * c30, 3 * s * 0.5, 3 * s, c30, s * 0.5, s},
        {7, -30, 3 * c30, 3 * s * 0.5, 3 * s, c30, s * 0.5, s},
        {4, -30, 3 * c30, 3 * s * 0.5, 3 * s, c30, s * 0.5, s},
        {4, +30, 3 * c30, -3 * s * 0.5, 3 * s, c30, -s * 0.5, s},
        // Line voltages sqrt(3) V. Mode 3: Ub - Ua lags Ua by 150 degrees, Ub - Uc lags Ua by 90 degrees.
        {3, -30, std::sqrt(3.0) * s * (std::fabs(std::cos(2 * pi / 3)) + std::fabs(std::cos(pi))),
         std::sqrt(3.0) * s * (std::fabs(std::sin(2 * pi / 3)) + std::fabs(std::sin(pi))), 3 * s, nan, nan, nan},
        // Mode 2: the angles are Ia - Ua = -30 and Ic - Ub = 240 - 30 degrees.
        {2, -30, std::sqrt(3.0) * s * (std::cos(-pi / 6) + std::cos(7 * pi / 6)),
         std::sqrt(3.0) * s * (std::sin(-pi / 6) + std::sin(7 * pi / 6)), std::sqrt(3.0) * s, nan, nan, nan},
        {5, -30, nan, nan, nan, nan, nan, nan},
    };
    const auto expectClose = [](double actual, double expected, const Case& c) {
        EXPECT_EQ(std::isnan(actual), std::isnan(expected)) << c.mode;
        if (!std::isnan(expected)) {
            EXPECT_NEAR(actual, expected, 1e-8) << c.mode << " " << c.degrees;
        }
    };
    for (const Case& c : cases) {
        const ChannelSet u = balanced(5000, 100.0, 0.0);
        const ChannelSet i = balanced(5000, 5.0, c.degrees);
        const d_table out = measure(u, i, fourWire | c.mode << 16U);
        expectClose(out[Parameter::P], c.p, c);
        expectClose(out[Parameter::Q], c.q, c);
        expectClose(out[Parameter::S], c.total, c);
        expectClose(out[Parameter::Pa], c.pa, c);
        expectClose(out[Parameter::Qb], c.qa, c);
        expectClose(out[Parameter::Sc], c.sa, c);
        EXPECT_TRUE(std::isnan(out[Parameter::Pf]));
        const d_table flipped = measure(u, i, fourWire | c.mode << 16U | 0xC00);
        expectClose(flipped[Parameter::P], -c.p, c);
        expectClose(flipped[Parameter::Q], -c.q, c);
        EXPECT_EQ(std::signbit(flipped[Parameter::P]), !std::signbit(out[Parameter::P])) << "NaN as well";
    }
}

TEST(ElectricalParameters, ChannelsOfOneSampleStandForAllOthers) {
    ChannelSet u = balanced(5000, 100.0, 0.0);
    u[1].set_size(1, 1);
    u[1][0] = 7.0;
    const d_table out = measure(u, balanced(5000, 5.0, 0.0), fourWire);
    EXPECT_NEAR(out[Parameter::Udab], std::sqrt(5000.0 + 49.0), 1e-9);
    EXPECT_NEAR(out[Parameter::Udb], 7.0 / std::sqrt(5000.0), 1e-12);
    const ChannelSet none{};
    for (const double v : measure(none, none, fourWire | control | 0x40000).values) {
        EXPECT_TRUE(std::isnan(v));
    }
}

TEST(PhaseDifference, IsThatOfTheDominantLinesOfAnyLength) {
    for (const int n : {200, 400, 997, 1000, 1001, 2000, 4093}) {
        const double whole = 1e4 / n * std::round(50.0 * n / 1e4);  // a whole number of periods in n samples
        for (const double degrees : {-90.0, 0.0, 28.6, 160.0}) {
            row x = cosine(n, 3.0, whole, 10.0);
            row y = cosine(n, 0.1, whole, 10.0 + degrees);
            for (int i = 0; i < n; ++i) {
                x[i] += 1000.0;
            }
            EXPECT_NEAR(phdiffmeasure(x, y), degrees * pi / 180.0, 1e-9) << n;
            EXPECT_NEAR(phdiffmeasure(y, x), -degrees * pi / 180.0, 1e-9) << n;
        }
    }
    EXPECT_NEAR(phdiffmeasure(cosine(1000, 1.0, 50.0, 0.0), cosine(600, 1.0, 150.0, 40.0)), 40.0 * pi / 180.0, 1e-9)
        << "each signal has its own dominant line and length";
    EXPECT_TRUE(std::isnan(phdiffmeasure(row(), row())));
}

TEST(AnalyticPower, IsTheSumOverTheAnalyticSignals) {
    for (const int n : {1, 2, 3, 64, 101, 500}) {
        const row a = cosine(n, 3.0, 170.0, 10.0);
        row b = cosine(n, 2.0, 170.0, -50.0);
        for (int i = 0; i < n; ++i) {
            b[i] += 0.25 * (i % 7);
        }
        coder::complex_row A;
        coder::complex_row B;
        coder::hilbert(a, A);
        coder::hilbert(b, B);
        coder::creal_T expected{};
        for (int i = 0; i < n; ++i) {
            expected.re += A[i].re * B[i].re + A[i].im * B[i].im;
            expected.im += A[i].im * B[i].re - A[i].re * B[i].im;
        }
        const coder::creal_T sum = coder::analyticProductSum(a, b);
        EXPECT_NEAR(sum.re, expected.re, 1e-12 * n) << n;
        EXPECT_NEAR(sum.im, expected.im, 1e-12 * n) << n;
    }
}

}  // namespace
}  // namespace calc_modul_K9_web_ns
