#ifndef RT305_4_TESTS_TOOLKIT_NOISE_H
#define RT305_4_TESTS_TOOLKIT_NOISE_H

#include <random>
#include <vector>

/// The same n normally distributed samples every time.
inline std::vector<double> noise(int n) {
    std::mt19937_64 random(static_cast<unsigned>(n));
    std::normal_distribution<double> normal;
    std::vector<double> x(static_cast<std::size_t>(n));
    for (double& value : x) {
        value = normal(random);
    }
    return x;
}

#endif
