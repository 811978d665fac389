#include "signal/spectral_lines.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rt305 {

namespace {

using std::numbers::pi;

constexpr double leastShare = 1e-4;  // of the largest line
constexpr double safety = 1.25;

/// beta, sinh(beta) / beta and I0(beta) of the Kaiser window; of the rectangular one, which is that of beta = 0.
struct KaiserFigures {
    double beta;
    double sinhQuotient;
    double bessel;
};
KaiserFigures kaiserFigures(WindowShape shape) {
    return shape == WindowShape::kaiser ? KaiserFigures{0.5, 1.0421906109874948, 1.0634833707413236}
                                        : KaiserFigures{0.0, 1.0, 1.0};
}

bool isCosine(WindowShape shape) {
    return shape == WindowShape::hann || shape == WindowShape::hamming;
}

/// a - (1 - a) cos(...).
double constantTermOf(WindowShape shape) {
    return shape == WindowShape::hann ? 0.5 : 0.54;
}

/// What makes the transform of a cosine window out of that of a rectangular one.
double cosineFactor(WindowShape shape, double bins) {
    const double a = constantTermOf(shape);
    const double square = bins * bins;
    return std::fabs(square - 1.0) < 1e-9 ? 0.0 : (a - (2.0 * a - 1.0) * square) / (a * (1.0 - square));
}

/// The window's transform inside its main lobe, relative to the centre.
double mainLobe(WindowShape shape, double bins) {
    if (bins < 1e-6) {
        return 1.0;
    }
    if (!isCosine(shape)) {
        const auto [beta, sinhQuotient, bessel] = kaiserFigures(shape);
        const double square = pi * pi * bins * bins - beta * beta;
        const double root = std::sqrt(std::fabs(square));
        const double quotient = root < 1e-6 ? 1.0 : (square > 0.0 ? std::sin(root) : std::sinh(root)) / root;
        return std::fabs(quotient) / sinhQuotient;
    }
    if (std::fabs(bins - 1.0) < 1e-6) {
        const double a = constantTermOf(shape);
        return (1.0 - a) / (2.0 * a);
    }
    return std::fabs(std::sin(pi * bins) / (pi * bins) * cosineFactor(shape, bins));
}

/// A bound of the side lobes from this distance on.
double sideLobes(const Window& window, double bins) {
    constexpr double highestOfHamming = 0.0075;
    const double length = static_cast<double>(window.length);
    const double reach = std::max(1.0, length * std::fabs(std::sin(pi * bins / length)));
    if (!isCosine(window.shape)) {
        const auto [beta, sinhQuotient, bessel] = kaiserFigures(window.shape);
        return 1.0 / (sinhQuotient * std::sqrt(reach * reach - beta * beta));
    }
    const double bound = std::fabs(cosineFactor(window.shape, bins)) / reach;
    return window.shape == WindowShape::hamming && bins < 4.5 ? highestOfHamming : bound;
}

/// What a line of amplitude 1 makes at most at this distance from it.
double reachOf(const Window& window, double bins, double halfStep) {
    const double firstZero = isCosine(window.shape) ? 2.0 : 1.02;
    return bins < firstZero ? mainLobe(window.shape, bins) : sideLobes(window, std::max(firstZero, bins - halfStep));
}

/// The line of a maximum of the values: the top of the parabola through the logarithms of the values around it. A sine
/// half a step from it would be `mostGain` times the maximum.
SpectralLine topOf(const SpectralLine& maximum, const std::vector<double>& amplitudes, double mostGain) {
    const auto k = static_cast<std::size_t>(maximum.place);
    const double before = std::log(amplitudes[k - 1]);
    const double at = std::log(amplitudes[k]);
    const double behind = std::log(amplitudes[k + 1]);
    const double curvature = before - 2.0 * at + behind;
    if (!std::isfinite(curvature) || !(curvature < 0.0)) {
        return maximum;
    }
    const double shift = 0.5 * (before - behind) / curvature;
    const double gain = std::exp(-0.25 * (before - behind) * shift);
    return {maximum.place + shift, maximum.amplitude * std::min(gain, mostGain)};
}

std::vector<SpectralLine> maximaOf(const std::vector<double>& amplitudes) {
    std::vector<SpectralLine> maxima;
    for (std::size_t k = 1; k + 1 < amplitudes.size(); ++k) {
        if (amplitudes[k] > amplitudes[k - 1] && amplitudes[k] >= amplitudes[k + 1]) {
            maxima.push_back({static_cast<double>(k), amplitudes[k]});
        }
    }
    std::stable_sort(maxima.begin(), maxima.end(), [](const SpectralLine& one, const SpectralLine& other) {
        return one.amplitude > other.amplitude;
    });
    return maxima;
}

}  // namespace

double gainOf(const Window& window) {
    const double length = static_cast<double>(window.length);
    switch (window.shape) {
        case WindowShape::hann:
            return 0.5 * (length + 1.0) / length;
        case WindowShape::hamming:
            return 0.54 - 0.46 / length;
        default: {
            const auto [beta, sinhQuotient, bessel] = kaiserFigures(window.shape);
            return ((length - 1.0) * sinhQuotient + 1.0) / (bessel * length);
        }
    }
}

std::vector<SpectralLine> findLines(const std::vector<double>& amplitudes, const Window& window, double binsPerValue,
                                    const LineLimits& limits) {
    std::vector<SpectralLine> lines;
    if (amplitudes.size() < 3 || limits.most == 0) {
        return lines;
    }
    const auto madeBy = [&](const SpectralLine& line, double place) {
        return line.amplitude * (reachOf(window, std::fabs(place - line.place) * binsPerValue, 0.5 * binsPerValue) +
                                 reachOf(window, (place + line.place) * binsPerValue, 0.5 * binsPerValue));
    };
    const SpectralLine offset{0.0, 0.5 * amplitudes[0]};  // what the mean of a part cycle leaves
    const auto maxima = maximaOf(amplitudes);
    const double least = limits.least.value_or(maxima.empty() ? 0.0 : leastShare * maxima[0].amplitude);
    const double mostGain = 1.0 / mainLobe(window.shape, 0.5 * binsPerValue);
    for (const SpectralLine& maximum : maxima) {
        if (lines.size() == limits.most || !(maximum.amplitude > least)) {
            break;
        }
        double made = madeBy(offset, maximum.place);
        for (const SpectralLine& larger : lines) {
            made += madeBy(larger, maximum.place);
        }
        if (maximum.amplitude > safety * made) {
            lines.push_back(topOf(maximum, amplitudes, mostGain));
        }
    }
    return lines;
}

}  // namespace rt305
