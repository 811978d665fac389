#include "toolkit/fft.h"

#include <fftw3.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

using coder::creal_T;

/// The half spectrum by the long double build of FFTW.
std::vector<std::pair<long double, long double>> reference(const std::vector<double>& x) {
    const int n = static_cast<int>(x.size());
    std::vector<long double> in(x.begin(), x.end());
    std::vector<std::pair<long double, long double>> out(x.size() / 2 + 1);
    fftwl_plan plan = fftwl_plan_dft_r2c_1d(n, in.data(), reinterpret_cast<fftwl_complex*>(out.data()),
                                            FFTW_ESTIMATE | FFTW_PRESERVE_INPUT);
    fftwl_execute(plan);
    fftwl_destroy_plan(plan);
    return out;
}

TEST(Fft, EveryLengthStaysWithinTheErrorBound) {
    std::mt19937_64 random(1);
    std::normal_distribution<double> normal;
    for (int n = 1; n <= 600; ++n) {
        std::vector<double> x(static_cast<std::size_t>(n));
        for (double& v : x)
            v = normal(random);
        coder::RealFft plan(n);
        std::vector<creal_T> y(static_cast<std::size_t>(plan.bins()));
        plan.forward(x, y.data());
        const auto expected = reference(x);
        long double error = 0, power = 0;
        for (std::size_t k = 0; k < y.size(); ++k) {
            error += std::pow(y[k].re - expected[k].first, 2) + std::pow(y[k].im - expected[k].second, 2);
            power += std::pow(expected[k].first, 2) + std::pow(expected[k].second, 2);
        }
        EXPECT_LE(std::sqrt(error / power), 9 * 0x1p-53L * std::sqrt(std::max(1.0, std::log2(n)))) << n;
        std::vector<double> back(x.size());
        plan.inverse(y.data(), back.data());
        for (std::size_t i = 0; i < x.size(); ++i)
            EXPECT_NEAR(back[i], x[i], 1e-13) << n;
    }
}

}  // namespace
