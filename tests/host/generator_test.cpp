#include "recording/generator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <sstream>

#include "base/failure.h"
#include "reading/csv_reader.h"
#include "signal/fundamental.h"

namespace {

using rt305::GeneratorSettings;
using rt305::Recording;

constexpr double pi = 3.14159265358979323846;

/// RMS and phase of the line at h * 50 Hz, relative to a sine, of a whole number of periods.
std::complex<double> lineOf(const std::vector<double>& x, double rateHz, int order) {
    std::complex<double> sum;
    for (std::size_t k = 0; k < x.size(); ++k) {
        sum += x[k] * std::polar(1.0, -2.0 * pi * order * 50.0 * static_cast<double>(k) / rateHz);
    }
    return sum * std::complex(0.0, std::sqrt(2.0) / static_cast<double>(x.size()));
}

TEST(Generator, HoldsTheLinesThatWereAskedFor) {
    GeneratorSettings settings;
    settings.durationSeconds = 0.2;
    settings.angleDegrees = 30.0;
    settings.voltageHarmonics = {{3, 10.0, -70.0}, {5, 4.0, 0.0}};
    settings.currentHarmonics = {{2, 50.0, 25.0}};
    settings.factors[1] = 0.5;
    settings.offsets[5] = 1.25;
    const Recording recording = rt305::generate(settings);
    struct Line {
        std::size_t channel;
        int order;
        double rms;
        double degrees;
    };
    const Line lines[] = {
        {0, 1, 230.0, 0.0},    {0, 3, 23.0, -70.0}, {0, 5, 9.2, 0.0},    {0, 2, 0.0, 0.0},
        {1, 1, 115.0, -120.0}, {1, 3, 11.5, -70.0}, {2, 5, 9.2, -120.0}, {2, 1, 230.0, 120.0},
        {3, 1, 5.0, -30.0},    {4, 1, 5.0, -150.0}, {4, 2, 2.5, 145.0},  {5, 1, 5.0, 90.0},
    };
    for (const Line& line : lines) {
        const auto found = lineOf(recording.columns[line.channel].samples, recording.segments[0].rateHz, line.order);
        EXPECT_NEAR(std::abs(found - std::polar(line.rms, line.degrees / 180.0 * pi)), 0.0, 1e-9)
            << "channel " << line.channel << " order " << line.order;
    }
    EXPECT_NEAR(lineOf(recording.columns[5].samples, recording.segments[0].rateHz, 0).imag() / std::sqrt(2.0), 1.25,
                1e-9);
}

TEST(Generator, NoiseIsWhiteAndFollowsItsSeed) {
    GeneratorSettings settings;
    settings.voltage = 100.0;
    settings.noisePercent = 2.0;
    const auto clean = rt305::generate({.voltage = 100.0}).columns[0].samples;
    const auto noisy = rt305::generate(settings).columns[0].samples;
    double power = 0.0;
    double neighbours = 0.0;
    for (std::size_t k = 1; k < clean.size(); ++k) {
        power += std::pow(noisy[k] - clean[k], 2);
        neighbours += (noisy[k] - clean[k]) * (noisy[k - 1] - clean[k - 1]);
    }
    EXPECT_NEAR(std::sqrt(power / static_cast<double>(clean.size())), 2.0, 0.1);
    EXPECT_LT(std::fabs(neighbours / power), 0.05);
    EXPECT_EQ(noisy, rt305::generate(settings).columns[0].samples);
    settings.seed = 2;
    EXPECT_NE(noisy, rt305::generate(settings).columns[0].samples);
}

TEST(Generator, DropoutsStayInsideTheRecording) {
    GeneratorSettings settings;
    settings.durationSeconds = 0.01;
    settings.offsets.fill(1000.0);
    settings.dropouts = {{3, 10, 90}};
    const Recording recording = rt305::generate(settings);
    for (std::size_t k = 0; k < recording.length; ++k) {
        EXPECT_EQ(recording.columns[3].samples[k] == 0.0, k >= 10) << k;
        EXPECT_NE(recording.columns[4].samples[k], 0.0) << k;
    }
    settings.dropouts[0].count = 91;
    EXPECT_THROW(rt305::generate(settings), rt305::Failure);
}

TEST(Generator, WritesWhatTheReaderReads) {
    for (const double rateHz : {10000.0, 50000.0, 4800.0, 0.5}) {
        GeneratorSettings settings;
        settings.rateHz = rateHz;
        settings.durationSeconds = 200.0 / rateHz;
        settings.currentHarmonics = {{5, 20.0, 10.0}};
        const Recording written = rt305::generate(settings);
        std::ostringstream text;
        rt305::writeCsv(written, 7, text);
        const Recording read = rt305::readCsv(text.str(), "rec.csv");
        EXPECT_NEAR(read.segments[0].rateHz, rateHz, 1e-5 * rateHz);
        EXPECT_TRUE(read.warnings.empty());
        ASSERT_EQ(read.columns.size(), written.columns.size());
        for (std::size_t i = 0; i < read.columns.size(); ++i) {
            EXPECT_EQ(read.columns[i].unit, written.columns[i].unit);
            for (std::size_t k = 0; k < written.length; ++k) {
                ASSERT_NEAR(read.columns[i].samples[k], written.columns[i].samples[k], i < 3 ? 5.1e-5 : 5.1e-7);
            }
        }
    }
}

TEST(Fundamental, IsFoundUnderHarmonicsNoiseAndOffset) {
    for (const double frequency : {10.7, 49.93, 60.0}) {
        GeneratorSettings settings;
        settings.frequencyHz = frequency;
        settings.voltageHarmonics = {{3, 10.0, 180.0}, {15, 5.0, 0.0}};
        settings.noisePercent = 3.0;
        settings.offsets[0] = 500.0;
        const Recording recording = rt305::generate(settings);
        const auto found = rt305::estimateFundamental(recording.columns[0].samples, recording.segments[0].rateHz);
        ASSERT_TRUE(found.has_value());
        EXPECT_NEAR(*found, frequency, 0.05);
    }
    EXPECT_FALSE(rt305::estimateFundamental(std::vector<double>(100, 3.0), 1e4));
    EXPECT_FALSE(rt305::estimateFundamental({}, 1e4));
}

}  // namespace
