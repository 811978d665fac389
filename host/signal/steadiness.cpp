#include "signal/steadiness.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <iterator>
#include <numbers>
#include <numeric>

namespace rt305 {

namespace {

using Trace = std::vector<std::complex<double>>;

constexpr double leastCycles = 4.0;
constexpr std::size_t cyclesPerWindow = 2;
constexpr std::size_t windowsPerCycle = 2;

/// A two-cycle Hann window times the turn back of the fundamental, from its first sample on.
struct Correlator {
    std::vector<double> cosine;
    std::vector<double> sine;

    explicit Correlator(double samplesPerCycle) {
        const auto length = static_cast<std::size_t>(std::llround(samplesPerCycle * cyclesPerWindow));
        const double angle = 2.0 * std::numbers::pi / samplesPerCycle;
        for (std::size_t k = 0; k < length; ++k) {
            const double weight = 1.0 - std::cos(angle * (static_cast<double>(k) + 0.5) / cyclesPerWindow);
            cosine.push_back(weight * std::cos(angle * static_cast<double>(k)));
            sine.push_back(-weight * std::sin(angle * static_cast<double>(k)));
        }
    }

    std::complex<double> operator()(std::span<const double> x) const {
        constexpr std::size_t chains = 4;  // sums side by side
        std::array<double, chains> real{};
        std::array<double, chains> imaginary{};
        const std::size_t last = x.size() / chains * chains;
        for (std::size_t k = 0; k < x.size(); k += chains) {
            for (std::size_t c = 0; c < (k < last ? chains : x.size() - last); ++c) {
                real[c] += cosine[k + c] * x[k + c];
                imaginary[c] += sine[k + c] * x[k + c];
            }
        }
        return {std::accumulate(real.begin(), real.end(), 0.0),
                std::accumulate(imaginary.begin(), imaginary.end(), 0.0)};
    }

    std::size_t length() const { return cosine.size(); }
};

/// The fundamental in each window; window k starts k / windowsPerCycle cycles after the first sample.
Trace traceOf(std::span<const double> x, const Correlator& correlator, double samplesPerCycle, std::size_t windows) {
    const double step = samplesPerCycle / windowsPerCycle;
    const std::size_t length = correlator.length();
    const double angle = 2.0 * std::numbers::pi / samplesPerCycle;
    Trace trace;
    trace.reserve(windows);
    for (std::size_t window = 0; window < windows; ++window) {
        const auto first =
            std::min(static_cast<std::size_t>(std::llround(static_cast<double>(window) * step)), x.size() - length);
        const std::complex<double> turn = std::polar(1.0, -angle * static_cast<double>(first));
        trace.push_back(turn * correlator(x.subspan(first, length)) * std::numbers::sqrt2 /
                        static_cast<double>(length));
    }
    return trace;
}

double largestOf(const Trace& trace) {
    double largest = 0.0;
    for (const auto& phasor : trace) {
        largest = std::max(largest, std::abs(phasor));
    }
    return largest;
}

LargestChange largestChangeOf(const std::vector<Trace>& traces, double samplesPerCycle) {
    LargestChange result;
    constexpr std::size_t separation = cyclesPerWindow * windowsPerCycle;  // windows that do not overlap
    double largest = 0.0;
    for (std::size_t channel = 0; channel < traces.size(); ++channel) {
        const Trace& trace = traces[channel];
        const double scale = largestOf(trace);
        for (std::size_t k = separation; k < trace.size(); ++k) {
            const auto before = trace[k - separation];
            const double change = std::abs(trace[k] - before);
            if (change > largest * scale && scale > 0.0) {
                largest = change / scale;
                const bool isLive = std::min(std::abs(before), std::abs(trace[k])) > 0.01 * scale;
                result = {channel, static_cast<std::size_t>(static_cast<double>(k) * samplesPerCycle / windowsPerCycle),
                          100.0 * (std::abs(trace[k]) - std::abs(before)) / scale,
                          isLive ? std::arg(trace[k] * std::conj(before)) * 180.0 / std::numbers::pi : 0.0};
            }
        }
    }
    return result;
}

/// Windows in which no channel leaves the mean of the run.
struct Run {
    std::size_t begin;
    std::size_t end;
    std::vector<std::complex<double>> means{};  // by channel

    bool admits(const std::vector<Trace>& traces, const std::vector<double>& scales) const {
        constexpr double leastScale = 0.2;  // of a channel's largest magnitude: below it changes count as at it
        for (std::size_t c = 0; c < traces.size(); ++c) {
            const double reference = std::max(std::abs(means[c]), leastScale * scales[c]);
            if (std::abs(traces[c][end] - means[c]) > steadyShare * reference) {
                return false;
            }
        }
        return true;
    }

    void extend(const std::vector<Trace>& traces) {
        ++end;
        for (std::size_t c = 0; c < traces.size(); ++c) {
            means[c] += (traces[c][end - 1] - means[c]) / static_cast<double>(end - begin);
        }
    }
};

/// The longest run from a window on.
Run runFrom(std::size_t begin, std::size_t windows, const std::vector<Trace>& traces,
            const std::vector<double>& scales) {
    Run run{begin, begin, std::vector<std::complex<double>>(traces.size())};
    do {
        run.extend(traces);
    } while (run.end < windows && run.admits(traces, scales));
    return run;
}

}  // namespace

Steadiness steadinessOf(const std::vector<std::span<const double>>& channels, double rateHz, double frequencyHz) {
    const std::size_t length = channels.empty() ? 0 : channels[0].size();
    const double samplesPerCycle = frequencyHz > 0.0 ? rateHz / frequencyHz : 0.0;
    const double cycles = samplesPerCycle > 0.0 ? static_cast<double>(length) / samplesPerCycle : 0.0;
    if (cycles < leastCycles) {
        return {{{0, length, std::vector<double>(channels.size())}}, {}, true};
    }
    const std::size_t windows = (static_cast<std::size_t>(cycles) - cyclesPerWindow) * windowsPerCycle + 1;
    const Correlator correlator(samplesPerCycle);
    std::vector<Trace> traces;
    std::transform(channels.begin(), channels.end(), std::back_inserter(traces),
                   [&](const auto& channel) { return traceOf(channel, correlator, samplesPerCycle, windows); });
    std::vector<double> scales;
    std::transform(traces.begin(), traces.end(), std::back_inserter(scales), largestOf);
    const auto sampleAt = [=](std::size_t window) {
        const double place = static_cast<double>(window) * samplesPerCycle / windowsPerCycle;
        return std::min(length, static_cast<std::size_t>(std::llround(place)));
    };

    Steadiness result{{}, largestChangeOf(traces, samplesPerCycle), false};
    for (std::size_t begin = 0; begin < windows;) {
        const Run run = runFrom(begin, windows, traces, scales);
        if (run.end - begin >= 2) {  // one window alone may lie across a change
            const std::size_t last =
                run.end == windows ? length : sampleAt(run.end - 1 + cyclesPerWindow * windowsPerCycle);
            result.parts.push_back({sampleAt(begin), last - sampleAt(begin)});
            std::transform(run.means.begin(), run.means.end(), std::back_inserter(result.parts.back().levels),
                           [](const std::complex<double>& mean) { return std::abs(mean); });
        }
        begin = run.end;
    }
    result.isSteady = result.parts.size() == 1 && result.parts[0].count == length;
    return result;
}

}  // namespace rt305
