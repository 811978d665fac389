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
    double degrees = 0.0;  // where the voltage fundamental of the same phase crosses zero upwards
};

/// A run of zeros, as a converter gives them that has lost its samples.
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
    double angleDegrees = 0.0;  // by which the current lags its voltage
    std::vector<Harmonic> voltageHarmonics{};
    std::vector<Harmonic> currentHarmonics{};
    PerChannel<double> factors{1.0, 1.0, 1.0, 1.0, 1.0, 1.0};  // unbalance
    PerChannel<double> offsets{};                              // V or A
    double noisePercent = 0.0;                                 // RMS of white noise, of the fundamental's RMS
    std::uint64_t seed = 1;
    std::vector<Dropout> dropouts{};
};

/// The recording that the settings describe, round(rate * duration) samples of
///
///     x[k] = sqrt(2) * X * (sin(theta - angle) + sum_h percent_h / 100 * sin(h * theta + degrees_h)) + offset + noise
///
/// with theta = 2 pi f k / rate - 0, 120, 240 degrees for the phases a, b, c, X the RMS times the channel's factor, and
/// the angle of the currents only. Noise is Gaussian (G. Box, M. Muller, Ann. Math. Statist. 29 (1958), p. 610) from
/// mt19937_64, channel after channel, so that a seed gives the same recording everywhere. Dropouts come last.
Recording generate(const GeneratorSettings& settings);

/// Writes a generated recording as CSV with a time column. Each column has so many decimals that its largest sample
/// shows `digits` significant digits.
void writeCsv(const Recording& recording, int digits, std::ostream& out);

}  // namespace rt305

#endif
