#include "toolkit/zoom_spectrum.h"

#include <gtest/gtest.h>

#include "support/plain.h"
#include "support/signals.h"
#include "toolkit/non_finite.h"

namespace {

using coder::ZoomSpectrum;
using signals::Samples;

Samples line(std::size_t n, double cyclesPerSample) {
    return signals::cosine(n, 1.0, cyclesPerSample, 0.0, 1.0);
}

Samples hann(std::size_t n) {
    Samples w(n);
    for (std::size_t k = 0; k < n; ++k) {
        w[k] = static_cast<double>(plain::raisedCosine(k + 1, n + 1));
    }
    return w;
}

Samples magnitudes(const ZoomSpectrum& zoom, int count) {
    Samples result(static_cast<std::size_t>(count));
    zoom.magnitudes(count, result.data());
    return result;
}

/// All magnitudes of a row.
Samples magnitudes(ZoomSpectrum& zoom, const Samples& x) {
    zoom.load(x);
    return magnitudes(zoom, zoom.bins());
}

struct Zoom : testing::TestWithParam<int> {
    const int factor = GetParam();
    ZoomSpectrum make(const Samples& window) const { return {static_cast<int>(window.size()), factor, window}; }
};
INSTANTIATE_TEST_SUITE_P(By, Zoom, testing::Values(2, 4, 16), testing::PrintToStringParamName());

/// Largest error of any bin, relative to the largest bin.
double errorOf(ZoomSpectrum& zoom, int factor, const Samples& x, const Samples& window) {
    const Samples found = magnitudes(zoom, x);
    std::vector<plain::Real> weighted(x.begin(), x.end());
    std::transform(window.begin(), window.end(), weighted.begin(), weighted.begin(), std::multiplies<plain::Real>());
    const auto exact = plain::halfSpectrum(weighted, x.size() * static_cast<std::size_t>(factor));
    EXPECT_EQ(found.size(), exact.size());
    plain::Real largest = 0;
    plain::Real error = 0;
    for (std::size_t k = 0; k < exact.size(); ++k) {
        largest = std::max(largest, std::abs(exact[k]));
        error = std::max(error, std::fabs(found[k] - std::abs(exact[k])));
    }
    return static_cast<double>(error / largest);
}

TEST_P(Zoom, IsWithinItsErrorBoundOfThePaddedTransform) {
    REQUIRE_EXTENDED_PRECISION();
    for (const std::size_t n : {1U, 2U, 3U, 4U, 5U, 8U, 15U, 17U, 33U, 100U, 997U, 4096U, 5000U}) {
        for (const Samples& window : {Samples(n, 1.0), hann(n)}) {
            ZoomSpectrum zoom = make(window);
            for (const Samples& x : {signals::noise(n), line(n, 0.1234), line(n, 0.25), line(n, 0.499)}) {
                EXPECT_LE(errorOf(zoom, factor, x, window), n < 100 ? 1e-14 : 2e-15) << n;
            }
            for (const std::size_t at : {std::size_t{0}, (n - 1) / 2, n - 1}) {
                Samples impulse(n);
                impulse[at] = 1.0;
                EXPECT_LE(errorOf(zoom, factor, impulse, window), 1e-14) << "impulse at " << at << " of " << n;
            }
        }
    }
}

TEST_P(Zoom, FirstBinsAreIndependentOfTheirCount) {
    ZoomSpectrum zoom = make(hann(1500));
    const Samples all = magnitudes(zoom, signals::noise(1500));
    for (const int count : {0, 1, 2, factor, 513, 1025, zoom.bins() - 1}) {
        EXPECT_EQ(magnitudes(zoom, count), Samples(all.begin(), all.begin() + count)) << count;
    }
}

TEST_P(Zoom, FindsTheLargestBinGivenTheFirst) {
    ZoomSpectrum zoom = make(Samples(400, 1.0));
    for (const double frequency : {0.0, 0.05, 0.3, 0.5}) {
        const Samples all = magnitudes(zoom, line(400, frequency));
        for (const int count : {0, 1, 2, zoom.bins() / 2, zoom.bins()}) {
            Samples known = magnitudes(zoom, count);
            EXPECT_EQ(zoom.largest(known), *std::max_element(all.begin(), all.end())) << frequency << ' ' << count;
            known.insert(known.end(), {4000.0, rtNaN});
            EXPECT_EQ(zoom.largest(known), 4000.0) << "no bin can be larger";
        }
    }
}

TEST_P(Zoom, HugeAndTinyRowsKeepTheirDigits) {
    for (const std::size_t n : {2U, 3U, 100U}) {
        ZoomSpectrum zoom = make(Samples(n, 1.0));
        for (const Samples& x : {Samples(n, 1.0), line(n, 0.5), signals::noise(n)}) {
            const Samples once = magnitudes(zoom, x);
            // A power of two that lifts the largest bin to just below half the largest double, and a small one.
            for (const int exponent : {1022 - std::ilogb(*std::max_element(once.begin(), once.end())), -600}) {
                const auto scaled = [exponent](Samples row) {
                    std::for_each(row.begin(), row.end(), [=](double& v) { v = std::ldexp(v, exponent); });
                    return row;
                };
                EXPECT_EQ(magnitudes(zoom, scaled(x)), scaled(once)) << n << " times 2^" << exponent;
            }
        }
    }
}

TEST(ZoomSpectrum, RefusesLengthsBeyondACount) {
    EXPECT_THROW(ZoomSpectrum(1 << 27, 16, {}), std::bad_array_new_length);
}

}  // namespace
