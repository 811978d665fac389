#include "toolkit/harmonic_distortion.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "toolkit/extremes.h"
#include "toolkit/non_finite.h"
#include "toolkit/scalar.h"
#include "toolkit/sums.h"
#include "toolkit/windows.h"

namespace coder {
namespace {

struct PowerSpectrum {
    std::span<double> power;
    samples frequency;
    double spacing;
    double noiseBandwidth;
};

/// Bins left ... right, both included.
struct Region {
    std::size_t left;
    std::size_t right;

    std::size_t count() const { return right - left + 1; }
};

struct Tone {
    double power;
    double frequency;
};

/// The bins around start down both slopes, until the density rises again.
Region regionAround(samples power, std::size_t start) {
    assert(start < power.size());
    Region region{start, start};
    while (region.left > 0 && power[region.left - 1] <= power[region.left]) {
        --region.left;
    }
    while (region.right + 1 < power.size() && power[region.right] >= power[region.right + 1]) {
        ++region.right;
    }
    return region;
}

/// Power and power-weighted mean frequency of the line whose largest bin is start. A line narrower than the noise
/// bandwidth counts as one bandwidth.
Tone toneAt(const PowerSpectrum& spectrum, std::size_t start) {
    const Region region = regionAround(spectrum.power, start);
    const samples power = spectrum.power.subspan(region.left, region.count());
    const double* const F = spectrum.frequency.data() + region.left;
    const auto [moment, total] = blockedSum(power.size(), [=, p = power.data()](std::size_t i) {
                                     return SideBySide<2>{{F[i] * p[i], p[i]}};
                                 }).sums;
    const Tone tone{total * spectrum.spacing, moment / total};
    const Tone narrow{spectrum.noiseBandwidth * spectrum.power[start], spectrum.frequency[start]};
    return narrow.power > tone.power ? narrow : tone;
}

/// NaN is less than any number.
bool isLess(double a, double b) {
    return a < b || (std::isnan(a) && !std::isnan(b));
}

std::size_t indexOfMaximum(samples x) {
    double value = 0.0;
    int index = 0;
    maximum(x, &value, &index);
    return static_cast<std::size_t>(index - 1);
}

/// The line around the target: it starts at the largest of the nearest bin and its two neighbours. NaN outside the
/// band.
Tone toneNear(const PowerSpectrum& spectrum, double target) {
    const samples F = spectrum.frequency;
    if (!(target >= F.front() && target <= F.back())) {
        return {rtNaN, rtNaN};
    }
    const std::size_t nearest = nearestBin(F, target);
    const std::size_t from = nearest == 0 ? 0 : nearest - 1;
    const std::size_t to = std::min(nearest + 1, F.size() - 1);
    const auto start = std::max_element(spectrum.power.begin() + static_cast<std::ptrdiff_t>(from),
                                        spectrum.power.begin() + static_cast<std::ptrdiff_t>(to + 1), isLess);
    return toneAt(spectrum, static_cast<std::size_t>(start - spectrum.power.begin()));
}

void clearDc(PowerSpectrum& spectrum) {
    const Region dc = regionAround(spectrum.power, nearestBin(spectrum.frequency, 0.0));
    std::fill_n(spectrum.power.begin() + static_cast<std::ptrdiff_t>(dc.left), dc.count(), 0.0);
}

column kaiserOfLength(int n) {
    column w;
    b_kaiser(n, w);
    return w;
}

}  // namespace

std::size_t nearestBin(samples F, double target) {
    assert(!F.empty());
    // The position by equal spacing; rounding may make it wrong by a bin, which the loops correct.
    const double last = static_cast<double>(F.size() - 1);
    const double place = (target - F.front()) / (F.back() - F.front()) * last + 0.5;
    auto i = static_cast<std::size_t>(place > 0.0 ? std::min(place, last) : 0.0);
    const auto distance = [&](std::size_t bin) { return std::fabs(F[bin] - target); };
    while (i + 1 < F.size() && distance(i + 1) < distance(i)) {
        ++i;
    }
    while (i > 0 && distance(i - 1) <= distance(i)) {
        --i;
    }
    return i;
}

HarmonicResult computeTHD(std::span<double> Pxx, samples F, double rbw, double nHarm) {
    assert(F.size() == Pxx.size());
    const std::size_t n = static_cast<std::size_t>(std::max(truncatedToInt(nHarm), 0));
    HarmonicResult result{rtNaN, std::vector<double>(n, rtNaN), std::vector<double>(n, rtNaN)};
    if (n == 0 || F.empty() || F.front() > 0.0 || F.back() < 0.0) {
        return result;
    }
    const double spacing = (F.back() - F.front()) / static_cast<double>(F.size() - 1);
    PowerSpectrum spectrum{Pxx, F, spacing, rbw};
    spectrum.power[0] *= 2.0;
    clearDc(spectrum);

    const Tone fundamental = toneAt(spectrum, indexOfMaximum(spectrum.power));
    double distortion = 0.0;
    for (std::size_t k = 1; k <= n; ++k) {
        const Tone tone = k == 1 ? fundamental : toneNear(spectrum, static_cast<double>(k) * fundamental.frequency);
        result.harmPow[k - 1] = tone.power;
        result.harmFreq[k - 1] = tone.frequency;
        if (k > 1 && !std::isnan(tone.power)) {
            distortion += tone.power;
        }
    }
    result.r = 10.0 * std::log10(distortion / fundamental.power);
    return result;
}

HarmonicDistortion::HarmonicDistortion(int n, const HarmonicSettings& settings)
    : periodogram_(kaiserOfLength(n), settings.rate), harmonics_(settings.harmonics) {}

HarmonicResult HarmonicDistortion::distortionOf(std::span<double> density) const {
    return computeTHD(density, periodogram_.frequencies(), periodogram_.noiseBandwidth(), harmonics_);
}

}  // namespace coder
