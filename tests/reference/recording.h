#ifndef RT305_4_TESTS_REFERENCE_RECORDING_H
#define RT305_4_TESTS_REFERENCE_RECORDING_H

// The recording that the golden parameters are computed from, the same on every machine: 3000 samples at 10 kHz of an
// unbalanced three-phase system, seven significant digits. Whatever could be exchanged by mistake differs: every
// channel has its own amplitude, offset, noise and harmonics, every phase its own frequency and lag (phase b strongly
// lagging, phase c leading). Phase b runs outside the fixed frequency window, which so closes some gates; the control
// window closes none. Two samples are dropped.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <vector>

namespace recording {

struct Channel {
    double frequency;  // Hz
    double amplitude;  // V or A
    double angle;      // degrees
    double offset;     // V or A
    double harmonics;  // relative to the fundamental at order 2, falling with the order
};

inline constexpr std::array<Channel, 6> channels{{{50.03, 325.3, 11.0, 1.7, 0.031},
                                                  {50.52, 311.8, -107.0, -2.4, 0.023},
                                                  {50.24, 337.1, 134.0, 0.6, 0.042},
                                                  {50.03, 14.42, -17.0, 0.05, 0.11},
                                                  {50.52, 17.97, -176.0, -0.11, 0.16},
                                                  {50.24, 12.59, 165.0, 0.08, 0.07}}};
inline constexpr int sampleCount = 3000;
inline constexpr double sampleRate = 10000.0;  // Hz
inline constexpr int highestOrder = 13;

/// Reproducible uniform numbers in [-1, 1), unlike the distributions of <random>.
/// D. E. Knuth's 64-bit linear congruential generator (MMIX), its upper 53 bits.
class Uniform {
public:
    double operator()() {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return std::ldexp(static_cast<double>(state_ >> 11), -52) - 1.0;
    }

private:
    std::uint64_t state_ = 20230616;
};

/// To seven significant digits, so that the last places of sine and cosine on a machine do not matter.
inline double rounded(double value) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%.7g", value);
    return std::strtod(digits, nullptr);
}

/// The samples of one channel. An odd order keeps its full share, an even one a third of it.
inline std::vector<double> samplesOf(const Channel& channel, Uniform& uniform) {
    constexpr double turn = 2.0 * std::numbers::pi;
    std::vector<double> x(sampleCount);
    for (int order = 1; order <= highestOrder; ++order) {
        const double share = order == 1       ? 1.0
                             : order % 2 == 1 ? channel.harmonics * 2.0 / order
                                              : channel.harmonics * 2.0 / (3 * order);
        const double phase = order == 1 ? channel.angle * turn / 360.0 : uniform() * turn;
        for (int i = 0; i < sampleCount; ++i) {
            const double angle = turn * order * channel.frequency * (i / sampleRate) + phase;
            x[static_cast<std::size_t>(i)] += channel.amplitude * share * std::cos(angle);
        }
    }
    for (double& value : x) {
        value += channel.offset + channel.amplitude * 1e-3 * uniform();
    }
    return x;
}

/// Ua, Ub, Uc in V and Ia, Ib, Ic in A.
inline std::array<std::vector<double>, 6> samples() {
    Uniform uniform;
    std::array<std::vector<double>, 6> all;
    for (std::size_t c = 0; c < all.size(); ++c) {
        all[c] = samplesOf(channels[c], uniform);
    }
    all[1][701] = 0.0;
    all[5][1900] = 0.0;
    for (std::vector<double>& x : all) {
        std::transform(x.begin(), x.end(), x.begin(), rounded);
    }
    return all;
}

}  // namespace recording

#endif
