#include "toolkit/zoom_spectrum.h"

#include <gtest/gtest.h>

#include <cmath>

#include "extended_precision.h"
#include "toolkit/long_double_fft.h"
#include "toolkit/noise.h"
#include "toolkit/non_finite.h"
#include "toolkit/windows.h"

namespace {

using coder::ZoomSpectrum;

std::vector<double> line(int n, double cyclesPerSample) {
    std::vector<double> x(static_cast<std::size_t>(n));
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = std::cos(6.283185307179586 * cyclesPerSample * static_cast<double>(i));
    }
    return x;
}

std::vector<double> impulseAt(int n, std::size_t i) {
    std::vector<double> x(static_cast<std::size_t>(n));
    x[i] = 1.0;
    return x;
}

std::vector<double> rectangular(int n) {
    return std::vector<double>(static_cast<std::size_t>(n), 1.0);
}

std::vector<double> hann(int n) {
    coder::column w;
    coder::hanning(n, w);
    return {w.begin(), w.end()};
}

std::vector<double> magnitudesOf(const ZoomSpectrum& zoom, int count) {
    std::vector<double> result(static_cast<std::size_t>(count));
    zoom.magnitudes(count, result.data());
    return result;
}

/// Largest error of any bin, relative to the largest bin.
double errorOf(ZoomSpectrum& zoom, LongDoubleFft& reference, const std::vector<double>& x,
               const std::vector<double>& window) {
    zoom.load(x);
    const std::vector<double> result = magnitudesOf(zoom, zoom.bins());
    std::vector<long double> weighted(x.begin(), x.end());
    std::transform(window.begin(), window.end(), weighted.begin(), weighted.begin(), std::multiplies<long double>());
    const auto& bins = reference.transform(weighted);
    EXPECT_EQ(result.size(), bins.size());
    long double largest = 0.0L;
    long double error = 0.0L;
    for (std::size_t k = 0; k < bins.size(); ++k) {
        largest = std::max(largest, std::abs(bins[k]));
        error = std::max(error, std::fabs(result[k] - std::abs(bins[k])));
    }
    return static_cast<double>(error / largest);
}

TEST(ZoomSpectrum, IsWithinItsDocumentedErrorOfThePaddedTransform) {
    REQUIRE_EXTENDED_PRECISION();
    for (const int factor : {2, 4, 16}) {
        double worst = 0.0;
        double worstOfLongRows = 0.0;
        for (const int n : {1, 2, 3, 4, 5, 7, 8, 15, 16, 17, 33, 100, 997, 4096, 5000}) {
            LongDoubleFft reference(static_cast<std::size_t>(n) * static_cast<std::size_t>(factor));
            for (const auto& window : {rectangular(n), hann(n)}) {
                ZoomSpectrum zoom(n, factor, window);
                for (const auto& x : {noise(n), line(n, 0.1234), line(n, 0.25), line(n, 0.499)}) {
                    const double error = errorOf(zoom, reference, x, window);
                    worst = std::max(worst, error);
                    worstOfLongRows = std::max(worstOfLongRows, n < 100 ? 0.0 : error);
                }
                for (const std::size_t last = window.size() - 1; const std::size_t at : {last * 0, last / 2, last}) {
                    worst = std::max(worst, errorOf(zoom, reference, impulseAt(n, at), window));
                }
            }
        }
        EXPECT_LE(worst, 1e-14) << "padded by " << factor;
        EXPECT_LE(worstOfLongRows, 2e-15) << "padded by " << factor;
        std::printf("padded by %2d: worst error of any row %.2g, of long rows %.2g\n", factor, worst, worstOfLongRows);
    }
}

TEST(ZoomSpectrum, StartsOfASpectrumDoNotHangOnTheirLength) {
    for (const int factor : {2, 4, 16}) {
        ZoomSpectrum zoom(1500, factor, hann(1500));
        zoom.load(noise(1500));
        const std::vector<double> all = magnitudesOf(zoom, zoom.bins());
        for (const int count : {0, 1, 2, factor, 513, 1025, zoom.bins() - 1}) {
            EXPECT_EQ(magnitudesOf(zoom, count), std::vector<double>(all.begin(), all.begin() + count)) << factor;
        }
    }
}

TEST(ZoomSpectrum, FindsTheLargestBinGivenTheFirst) {
    for (const int factor : {2, 4, 16}) {
        const int n = 400;
        ZoomSpectrum zoom(n, factor, rectangular(n));
        for (const double place : {0.0, 0.05, 0.3, 0.5}) {
            zoom.load(line(n, place));
            const std::vector<double> all = magnitudesOf(zoom, zoom.bins());
            const double largest = *std::max_element(all.begin(), all.end());
            for (const int count : {0, 1, 2, zoom.bins() / 2, zoom.bins() - 1, zoom.bins()}) {
                std::vector<double> known = magnitudesOf(zoom, count);
                EXPECT_EQ(zoom.largest(known), largest) << "a line at " << place << ", " << count << " bins known";
                known.push_back(10.0 * n);
                known.push_back(rtNaN);
                EXPECT_EQ(zoom.largest(known), 10.0 * n) << "no bin can be larger";
            }
        }
    }
}

TEST(ZoomSpectrum, ZeroAndNaNRows) {
    for (const int factor : {2, 4, 16}) {
        for (const int n : {1, 2, 50}) {
            ZoomSpectrum zoom(n, factor, rectangular(n));
            std::vector<double> x(static_cast<std::size_t>(n), 0.0);
            zoom.load(x);
            for (const double magnitude : magnitudesOf(zoom, zoom.bins())) {
                EXPECT_EQ(magnitude, 0.0);
            }
            x.back() = rtNaN;
            zoom.load(x);
            for (const double magnitude : magnitudesOf(zoom, zoom.bins())) {
                EXPECT_TRUE(std::isnan(magnitude));
            }
            EXPECT_EQ(zoom.largest({}), 0.0);
        }
    }
}

TEST(ZoomSpectrum, HugeAndTinyRowsKeepTheirDigits) {
    for (const int factor : {2, 4, 16}) {
        for (const int n : {2, 3, 100}) {
            ZoomSpectrum zoom(n, factor, rectangular(n));
            const std::vector<double> alternating = line(n, 0.5);
            for (const auto& x : {rectangular(n), alternating, noise(n)}) {
                zoom.load(x);
                std::vector<double> expected = magnitudesOf(zoom, zoom.bins());
                const double largest = *std::max_element(expected.begin(), expected.end());
                // A power of two that lifts the largest bin to just below half the largest double, and a small one.
                for (const int exponent : {1022 - std::ilogb(largest), -600}) {
                    std::vector<double> scaled = x;
                    for (double& sample : scaled) {
                        sample = std::ldexp(sample, exponent);
                    }
                    zoom.load(scaled);
                    const std::vector<double> result = magnitudesOf(zoom, zoom.bins());
                    for (std::size_t k = 0; k < result.size(); ++k) {
                        ASSERT_EQ(std::ldexp(result[k], -exponent), expected[k]) << n << " by " << factor;
                    }
                }
            }
        }
    }
}

TEST(ZoomSpectrum, RefusesLengthsBeyondACount) {
    EXPECT_THROW(ZoomSpectrum(1 << 27, 16, {}), std::bad_array_new_length);
}

}  // namespace
