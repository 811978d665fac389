#ifndef RT305_HOST_RECORDING_GENERATOR_H
#define RT305_HOST_RECORDING_GENERATOR_H

#include <cstdint>
#include <iosfwd>
#include <vector>

#include "recording/channels.h"
#include "recording/recording.h"

namespace rt305 {

/// One harmonic, relative to the fundamental of its own channel set.
struct Harmonic {
    int order = 0;
    double percent = 0.0;
    double degrees = 0.0;  // phase angle at the upward zero crossing of the voltage fundamental of the same phase
};

/// A run of zero samples, as from a converter that lost data.
struct Dropout {
    std::size_t channel = 0;
    std::size_t start = 0;
    std::size_t count = 0;
};

/// A three-phase recording of known content.
struct GeneratorSettings {
    double frequencyHz = 50.0;
    double rateHz = 10000.0;
    double durationSeconds = 1.0;
    double voltage = 230.0;     // RMS of the fundamental, V
    double current = 5.0;       // RMS of the fundamental, A
    double angleDegrees = 0.0;  // lag of each current behind its voltage
    std::vector<Harmonic> voltageHarmonics{};
    std::vector<Harmonic> currentHarmonics{};
    PerChannel<double> factors{1.0, 1.0, 1.0, 1.0, 1.0, 1.0};  // unbalance
    PerChannel<double> offsets{};                              // V or A
    double noisePercent = 0.0;                                 // RMS of white noise, relative to the fundamental
    std::uint64_t seed = 1;
    std::vector<Dropout> dropouts{};
};

/// Generates round(rate * duration) samples per channel:
///
///     x[k] = sqrt(2) * X * (sin(theta - angle) + sum_h percent_h / 100 * sin(h * theta + degrees_h)) + offset + noise
///
/// with theta = 2 pi f k / rate - 0, 120, 240 degrees for phases a, b, c, and X the RMS times the channel's factor. The
/// angle applies to currents only. Noise is Gaussian (G. Box, M. Muller, Ann. Math. Statist. 29 (1958), p. 610) from
/// mt19937_64, one channel after the other, so a seed gives the same recording on every system. Dropouts are applied
/// last.
Recording generate(const GeneratorSettings& settings);

/// Writes a generated recording as CSV with a time column. The decimals of a column are chosen so that its largest
/// sample shows `digits` significant digits.
void writeCsv(const Recording& recording, int digits, std::ostream& out);

}  // namespace rt305

#endif
