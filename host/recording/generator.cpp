#include "recording/generator.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <random>

#include "base/failure.h"
#include "base/text.h"

namespace rt305 {

namespace {

constexpr double twoPi = 6.283185307179586;
constexpr double mostSamples = 1e8;
constexpr int mostTimeDecimals = 9;

double radians(double degrees) {
    return degrees / 360.0 * twoPi;
}

/// Standard normal numbers, the same with every C++ library.
class Gaussian {
public:
    explicit Gaussian(std::uint64_t seed) : random_(seed) {}

    double next() {
        const double radius = std::sqrt(-2.0 * std::log(1.0 - uniform()));
        return radius * std::cos(twoPi * uniform());
    }

private:
    double uniform() { return static_cast<double>(random_() >> 11) * 0x1p-53; }  // [0, 1)

    std::mt19937_64 random_;
};

std::size_t sampleCount(const GeneratorSettings& settings) {
    const double samples = std::round(settings.rateHz * settings.durationSeconds);
    if (!(samples >= 1.0 && samples <= mostSamples)) {
        failUsage("rate times duration is " + formatNumber(samples) + " samples; choose them for 1 to 100 million");
    }
    return static_cast<std::size_t>(samples);
}

std::vector<double> waveform(const GeneratorSettings& settings, std::size_t channel, std::size_t length) {
    const bool current = isCurrent(channel);
    const double amplitude =
        std::sqrt(2.0) * (current ? settings.current : settings.voltage) * settings.factors[channel];
    const double lag = current ? radians(settings.angleDegrees) : 0.0;
    const double phase = static_cast<double>(channel % phaseTotal) / 3.0;
    const std::vector<Harmonic>& harmonics = current ? settings.currentHarmonics : settings.voltageHarmonics;
    std::vector<double> x(length);
    for (std::size_t k = 0; k < length; ++k) {
        const double turns = settings.frequencyHz * static_cast<double>(k) / settings.rateHz - phase;
        const double theta = twoPi * (turns - std::floor(turns));
        double sum = std::sin(theta - lag);
        for (const Harmonic& h : harmonics) {
            sum += h.percent / 100.0 * std::sin(h.order * theta + radians(h.degrees));
        }
        x[k] = amplitude * sum + settings.offsets[channel];
    }
    return x;
}

void cutDropouts(const GeneratorSettings& settings, Recording& recording) {
    for (const Dropout& dropout : settings.dropouts) {
        if (dropout.start > recording.length || dropout.count > recording.length - dropout.start) {
            failUsage("a dropout of " + std::string(channelNames[dropout.channel]) +
                      " ends after the recording, which has " + counted(recording.length, "sample"));
        }
        std::fill_n(recording.columns[dropout.channel].samples.begin() + static_cast<std::ptrdiff_t>(dropout.start),
                    dropout.count, 0.0);
    }
}

/// The number of decimals that makes sampling times exact, at most nine.
int timeDecimals(double rateHz) {
    int decimals = 0;
    double scale = 1.0;
    while (decimals < mostTimeDecimals && std::fmod(scale, rateHz) != 0.0) {
        ++decimals;
        scale *= 10.0;
    }
    return decimals;
}

}  // namespace

Recording generate(const GeneratorSettings& settings) {
    Recording recording;
    recording.source = "generated";
    recording.length = sampleCount(settings);
    recording.setRate(settings.rateHz, "as generated");
    Gaussian noise(settings.seed);
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        Column column{std::string(channelNames[channel]),
                      isCurrent(channel) ? "A" : "V",
                      waveform(settings, channel, recording.length),
                      {}};
        const double rms = isCurrent(channel) ? settings.current : settings.voltage;
        if (settings.noisePercent != 0.0) {
            for (double& x : column.samples) {
                x += settings.noisePercent / 100.0 * rms * noise.next();
            }
        }
        recording.columns.push_back(std::move(column));
    }
    cutDropouts(settings, recording);
    return recording;
}

void writeCsv(const Recording& recording, int digits, std::ostream& out) {
    std::vector<int> decimals;
    out << "Time(s)";
    for (const Column& column : recording.columns) {
        out << ',' << column.name << '(' << column.unit << ')';
        decimals.push_back(decimalsFor(largestMagnitude(column.samples), digits));
    }
    out << '\n';
    const double rateHz = recording.segments[0].rateHz;
    const int timeDigits = timeDecimals(rateHz);
    for (std::size_t k = 0; k < recording.length; ++k) {
        std::string row = formatFixed(static_cast<double>(k) / rateHz, timeDigits);
        for (std::size_t i = 0; i < recording.columns.size(); ++i) {
            row += ',' + formatFixed(recording.columns[i].samples[k], decimals[i]);
        }
        out << row << '\n';
    }
}

}  // namespace rt305
