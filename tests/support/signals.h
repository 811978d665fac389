#ifndef RT305_4_TESTS_SUPPORT_SIGNALS_H
#define RT305_4_TESTS_SUPPORT_SIGNALS_H

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

/// The signals that tests measure.
namespace signals {

using Samples = std::vector<double>;
inline constexpr double twoPi = 2.0 * 3.14159265358979323846;

struct Cosine {
    double amplitude;
    double frequency;    // Hz
    double phase = 0.0;  // radians
};

/// x[i] plus amplitude * cos(2 pi frequency (i / rate) + phase) of every line.
inline Samples wave(Samples x, const std::vector<Cosine>& lines, double rate = 10000.0) {
    for (const Cosine& line : lines) {
        for (std::size_t i = 0; i < x.size(); ++i) {
            x[i] += line.amplitude * std::cos(twoPi * line.frequency * static_cast<double>(i) / rate + line.phase);
        }
    }
    return x;
}

inline Samples cosine(std::size_t n, double amplitude, double frequency, double phase = 0.0, double rate = 10000.0) {
    return wave(Samples(n), {{amplitude, frequency, phase}}, rate);
}

/// n normally distributed samples, the same for the same seed.
inline Samples noise(std::size_t n, std::uint64_t seed = 1, double mean = 0.0, double deviation = 1.0) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> normal(mean, deviation);
    Samples x(n);
    std::generate(x.begin(), x.end(), [&] { return normal(random); });
    return x;
}

}  // namespace signals

#endif
