#include "toolkit/gridded_dft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <random>

#include "toolkit/scalar.h"

namespace coder {
namespace {

/// cos and sin of every whole part of one turn of the period.
struct Turn {
    Turn() {
        for (int i = 0; i < GriddedDft::period; ++i) {
            cosines.push_back(std::cos(2.0L * piL * i / GriddedDft::period));
            sines.push_back(std::sin(2.0L * piL * i / GriddedDft::period));
        }
    }
    std::vector<long double> cosines;
    std::vector<long double> sines;
};

/// The magnitude by its definition, in extended precision.
long double plainMagnitude(const std::vector<double>& x, int line) {
    static const Turn turn;
    long double re = 0.0L;
    long double im = 0.0L;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const std::size_t at = static_cast<std::size_t>(line) * i % GriddedDft::period;
        re += static_cast<long double>(x[i]) * turn.cosines[at];
        im -= static_cast<long double>(x[i]) * turn.sines[at];
    }
    return std::sqrt(re * re + im * im);
}

struct Signal {
    const char* name;
    double (*at)(std::size_t i, double noise);
};
constexpr Signal signals[] = {
    {"noise", [](std::size_t, double noise) { return noise; }},
    {"constant, whose energy lies below the lines", [](std::size_t, double) { return 1.0; }},
    {"next line but one beyond the band",
     [](std::size_t i, double) { return std::cos(2e-5 * pi * 602.0 * double(i)); }},
    {"first alias of the last line", [](std::size_t i, double) { return std::cos(2e-5 * pi * 1400.0 * double(i)); }},
    {"an impulse at every thinned point", [](std::size_t i, double noise) { return i % 50 == 0 ? noise : 0.0; }},
};

TEST(GriddedDft, StaysWithinItsBound) {
    std::mt19937_64 random(11);
    std::normal_distribution<double> normal;
    for (const std::size_t n : {1U, 49U, 50U, 51U, 167U, 1000U, 10000U, 99999U, 100150U, 250001U}) {
        for (const Signal& signal : signals) {
            std::vector<double> x(n);
            for (std::size_t i = 0; i < n; ++i) {
                x[i] = signal.at(i, normal(random));
            }
            const double total =
                std::accumulate(x.begin(), x.end(), 0.0, [](double sum, double v) { return sum + std::fabs(v); });
            const int first = n % 2 == 0 ? 1 : 300;
            const GriddedDft grid(first, GriddedDft::maxLine - first + 1);
            std::vector<double> magnitudes(grid.lines());
            grid.magnitudes(x, magnitudes.data());
            for (const int line : {first, 500, 599, 600}) {
                const double found = magnitudes[static_cast<std::size_t>(line - first)];
                EXPECT_LE(std::fabs(found - static_cast<double>(plainMagnitude(x, line))),
                          GriddedDft::errorBound(n) * total)
                    << signal.name << " " << n << " " << line;
            }
        }
    }
}

}  // namespace
}  // namespace coder
