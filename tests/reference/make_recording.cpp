// Writes the recording on which the golden parameters are computed:
//
//   build/debug/tests/reference/make_recording > tests/reference/recording.csv
//
// 3000 samples at 10 kHz of an unbalanced three-phase system, seven significant digits. Whatever could be exchanged by
// mistake differs: every channel has its own amplitude, offset, noise and harmonics 2 to 13, every phase its own
// fundamental frequency and its own lag (phase b strongly lagging, phase c leading). Phase b runs outside the fixed
// frequency window, so that this window closes some gates and the control window none. Two samples are dropped.

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numbers>
#include <vector>

namespace {

struct Channel {
    const char* name;
    double frequency;  // Hz
    double amplitude;  // V or A
    double angle;      // degrees
    double offset;     // V or A
    double harmonics;  // relative to the fundamental at order 2, falling with the order
};

constexpr std::array<Channel, 6> channels{{{"Ua", 50.03, 325.3, 11.0, 1.7, 0.031},
                                           {"Ub", 50.52, 311.8, -107.0, -2.4, 0.023},
                                           {"Uc", 50.24, 337.1, 134.0, 0.6, 0.042},
                                           {"Ia", 50.03, 14.42, -17.0, 0.05, 0.11},
                                           {"Ib", 50.52, 17.97, -176.0, -0.11, 0.16},
                                           {"Ic", 50.24, 12.59, 165.0, 0.08, 0.07}}};
constexpr int sampleCount = 3000;
constexpr double sampleRate = 10000.0;  // Hz
constexpr int highestOrder = 13;

/// A reproducible uniform number in [-1, 1): the same on every machine, unlike the distributions of <random>.
/// D. E. Knuth's 64-bit linear congruential generator (MMIX), its upper 53 bits.
double uniform() {
    static std::uint64_t state = 20230616;
    state = state * 6364136223846793005U + 1442695040888963407U;
    return std::ldexp(static_cast<double>(state >> 11), -52) - 1.0;
}

/// The samples of one channel. An odd order keeps its full share, an even one a third of it.
std::vector<double> samplesOf(const Channel& channel) {
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

}  // namespace

int main() {
    std::vector<std::vector<double>> rows;
    std::printf("t");
    for (const Channel& channel : channels) {
        std::printf(",%s", channel.name);
        rows.push_back(samplesOf(channel));
    }
    rows[1][701] = 0.0;
    rows[5][1900] = 0.0;
    for (std::size_t i = 0; i < sampleCount; ++i) {
        std::printf("\n%.7g", static_cast<double>(i) / sampleRate);
        for (const std::vector<double>& row : rows) {
            std::printf(",%.7g", row[i]);
        }
    }
    std::printf("\n");
    return 0;
}
