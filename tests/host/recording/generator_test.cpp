#include "recording/generator.h"

#include <gtest/gtest.h>

#include "base/failure.h"
#include "support/signals.h"

namespace {

TEST(Generator, HoldsTheLinesThatWereAskedFor) {
    const auto recording = rt305::generate({.durationSeconds = 0.2,
                                            .angleDegrees = 30.0,
                                            .voltageHarmonics = {{3, 10.0, -70.0}},
                                            .currentHarmonics = {{2, 50.0, 25.0}},
                                            .factors = {1.0, 0.5, 1.0, 1.0, 1.0, 1.0},
                                            .offsets = {0.0, 0.0, 1.25, 0.0, 0.0, 0.0}});
    struct {
        double rms1, degrees1, order, rms, degrees, offset;  // of sines
    } const channels[] = {{230, 0, 3, 23, -70, 0}, {115, -120, 3, 11.5, -70, 0}, {230, 120, 3, 23, -70, 1.25},
                          {5, -30, 2, 2.5, 25, 0}, {5, -150, 2, 2.5, 145, 0},    {5, 90, 2, 2.5, -95, 0}};
    for (std::size_t i = 0; i < 6; ++i) {
        const auto& c = channels[i];
        const auto phase = [](double degrees) { return (degrees - 90.0) / 360.0 * signals::twoPi; };
        const auto wanted = signals::wave(signals::Samples(2000, c.offset),
                                          {{c.rms1 * std::sqrt(2.0), 50.0, phase(c.degrees1)},
                                           {c.rms * std::sqrt(2.0), 50.0 * c.order, phase(c.degrees)}});
        for (std::size_t k = 0; k < 2000; ++k) {
            ASSERT_NEAR(recording.columns[i].samples[k], wanted[k], 1e-9) << i << " " << k;
        }
    }
}

TEST(Generator, AddsNoiseBySeedAndDropouts) {
    rt305::GeneratorSettings settings{.voltage = 100.0, .noisePercent = 2.0, .dropouts = {{3, 10, 9990}}};
    const auto found = rt305::generate(settings).columns;
    const auto clean = rt305::generate({.voltage = 100.0}).columns;
    double power = 0.0;
    for (std::size_t k = 0; k < 10000; ++k) {
        power += std::pow(found[0].samples[k] - clean[0].samples[k], 2) / 10000.0;
        EXPECT_EQ(found[3].samples[k] == 0.0, k >= 10) << k;
    }
    EXPECT_NEAR(std::sqrt(power), 2.0, 0.1);
    EXPECT_EQ(found[1].samples, rt305::generate(settings).columns[1].samples);
    settings.seed = 2;
    EXPECT_NE(found[1].samples, rt305::generate(settings).columns[1].samples);
    settings.dropouts[0].count = 9991;
    EXPECT_THROW(rt305::generate(settings), rt305::Failure);
}

}  // namespace
