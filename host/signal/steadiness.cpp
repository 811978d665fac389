#include "signal/steadiness.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <numbers>

#include "base/sum.h"
#include "toolkit/simd.h"

namespace rt305 {

namespace {

using Trace = std::vector<Phasor>;

constexpr double leastCycles = 4.0;
constexpr double deadShare = 0.01;  // of a channel's largest magnitude

/// How a signal is followed. Windows of one cycle are rectangular, longer ones are Hann windows.
struct Windows {
    std::size_t cycles;
    std::size_t perCycle;
    double steadyShare;  // by which a steady channel may differ from the mean of the part
    std::size_t fewest;  // in a part

    std::size_t countIn(double cyclesInAll) const {
        const auto whole = static_cast<std::size_t>(cyclesInAll);
        return whole < cycles ? 0 : (whole - cycles) * perCycle + 1;
    }
};
constexpr Windows usual{2, 2, rt305::steadyShare, 2};  // one window alone may lie across a change
constexpr Windows brief{1, 8, 0.1, 3};
constexpr Windows single{1, 1, 0.0, 0};

ALWAYS_INLINE inline Phasor correlation(const double* cosine, const double* sine, const double* x, std::size_t count) {
    return {sumOf(count, [=](std::size_t k) { return cosine[k] * x[k]; }),
            sumOf(count, [=](std::size_t k) { return sine[k] * x[k]; })};
}

/// A window times the turn back of the fundamental, from its first sample on.
struct Correlator {
    std::vector<double> cosine;
    std::vector<double> sine;

    Correlator(double samplesPerCycle, const Windows& windows) {
        const auto cycles = static_cast<double>(windows.cycles);
        const auto length = static_cast<std::size_t>(std::llround(samplesPerCycle * cycles));
        const double angle = 2.0 * std::numbers::pi / samplesPerCycle;
        const double taper = windows.cycles > 1 ? 1.0 : 0.0;
        for (std::size_t k = 0; k < length; ++k) {
            const double weight = 1.0 - taper * std::cos(angle * (static_cast<double>(k) + 0.5) / cycles);
            cosine.push_back(weight * std::cos(angle * static_cast<double>(k)));
            sine.push_back(-weight * std::sin(angle * static_cast<double>(k)));
        }
    }

    Phasor operator()(std::span<const double> x) const {
        return coder::vectorized<correlation>(cosine.data(), sine.data(), x.data(), x.size());
    }

    std::size_t length() const { return cosine.size(); }
};

/// The fundamental in each window; window k starts k / perCycle cycles after the first sample.
Trace traceOf(std::span<const double> x, double samplesPerCycle, const Windows& windows) {
    const Correlator correlator(samplesPerCycle, windows);
    const double step = samplesPerCycle / static_cast<double>(windows.perCycle);
    const std::size_t length = std::min(correlator.length(), x.size());
    const double angle = 2.0 * std::numbers::pi / samplesPerCycle;
    const std::size_t count = windows.countIn((static_cast<double>(x.size()) + 0.5) / samplesPerCycle);
    Trace trace;
    trace.reserve(count);
    for (std::size_t window = 0; window < count; ++window) {
        const auto first =
            std::min(static_cast<std::size_t>(std::llround(static_cast<double>(window) * step)), x.size() - length);
        const Phasor turn = std::polar(1.0, -angle * static_cast<double>(first));
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
    constexpr std::size_t separation = usual.cycles * usual.perCycle;  // windows that do not overlap
    double largest = 0.0;
    for (std::size_t channel = 0; channel < traces.size(); ++channel) {
        const Trace& trace = traces[channel];
        const double scale = largestOf(trace);
        for (std::size_t k = separation; k < trace.size(); ++k) {
            const auto before = trace[k - separation];
            const double change = std::abs(trace[k] - before);
            if (change > largest * scale && scale > 0.0) {
                largest = change / scale;
                const bool isLive = std::min(std::abs(before), std::abs(trace[k])) > deadShare * scale;
                result = {channel, static_cast<std::size_t>(static_cast<double>(k) * samplesPerCycle / usual.perCycle),
                          100.0 * (std::abs(trace[k]) - std::abs(before)) / scale,
                          isLive ? lagDegrees(trace[k], before) : 0.0};
            }
        }
    }
    return result;
}

/// The fundamentals of all channels.
struct Traces {
    std::vector<Trace> channels;
    std::vector<double> scales;  // the largest magnitude of each
};

Traces tracesOf(const std::vector<std::span<const double>>& channels, double samplesPerCycle, const Windows& windows) {
    Traces traces;
    for (const auto& channel : channels) {
        traces.channels.push_back(traceOf(channel, samplesPerCycle, windows));
        traces.scales.push_back(largestOf(traces.channels.back()));
    }
    return traces;
}

/// Windows in which no channel leaves the mean of the run.
struct Run {
    std::size_t begin;
    std::size_t end;
    std::vector<Phasor> means{};  // by channel

    bool admits(const Traces& traces, double share) const {
        constexpr double leastScale = 0.2;  // of a channel's largest magnitude: below it changes count as at it
        for (std::size_t c = 0; c < means.size(); ++c) {
            const double reference = std::max(std::abs(means[c]), leastScale * traces.scales[c]);
            if (std::abs(traces.channels[c][end] - means[c]) > share * reference) {
                return false;
            }
        }
        return true;
    }

    void extend(const Traces& traces) {
        ++end;
        for (std::size_t c = 0; c < means.size(); ++c) {
            means[c] += (traces.channels[c][end - 1] - means[c]) / static_cast<double>(end - begin);
        }
    }

    bool hasSignal(const Traces& traces) const {
        for (std::size_t c = 0; c < means.size(); ++c) {
            if (std::abs(means[c]) >= deadShare * traces.scales[c]) {
                return true;
            }
        }
        return false;
    }
};

/// The longest run from a window on.
Run runFrom(std::size_t begin, const Traces& traces, double share) {
    Run run{begin, begin, std::vector<Phasor>(traces.channels.size())};
    do {
        run.extend(traces);
    } while (run.end < traces.channels[0].size() && run.admits(traces, share));
    return run;
}

/// The runs that are long enough and have a signal, as parts of `length` samples.
std::vector<SteadyPart> partsOf(const Traces& traces, double samplesPerCycle, std::size_t length,
                                const Windows& windows) {
    const auto sampleAt = [&](std::size_t window) {
        const double place = static_cast<double>(window) * samplesPerCycle / static_cast<double>(windows.perCycle);
        return std::min(length, static_cast<std::size_t>(std::llround(place)));
    };
    std::vector<SteadyPart> parts;
    const std::size_t count = traces.channels[0].size();
    for (std::size_t begin = 0; begin < count;) {
        const Run run = runFrom(begin, traces, windows.steadyShare);
        if (run.end - begin >= windows.fewest && run.hasSignal(traces)) {
            const std::size_t last =
                run.end == count ? length : sampleAt(run.end - 1 + windows.cycles * windows.perCycle);
            parts.push_back({sampleAt(begin), last - sampleAt(begin)});
            std::transform(run.means.begin(), run.means.end(), std::back_inserter(parts.back().levels),
                           [](const Phasor& mean) { return std::abs(mean); });
        }
        begin = run.end;
    }
    return parts;
}

/// 0 for too few to judge.
double samplesPerCycleIn(const std::vector<std::span<const double>>& channels, double rateHz, double frequencyHz) {
    const double samplesPerCycle = frequencyHz > 0.0 ? rateHz / frequencyHz : 0.0;
    const bool isEnough = samplesPerCycle > 0.0 && !channels.empty() &&
                          static_cast<double>(channels[0].size()) >= leastCycles * samplesPerCycle;
    return isEnough ? samplesPerCycle : 0.0;
}

}  // namespace

Steadiness steadinessOf(const std::vector<std::span<const double>>& channels, double rateHz, double frequencyHz) {
    const std::size_t length = channels.empty() ? 0 : channels[0].size();
    const double samplesPerCycle = samplesPerCycleIn(channels, rateHz, frequencyHz);
    if (samplesPerCycle == 0.0) {
        return {{{0, length, std::vector<double>(channels.size())}}, {}, true};
    }
    const Traces traces = tracesOf(channels, samplesPerCycle, usual);
    auto parts = partsOf(traces, samplesPerCycle, length, usual);
    const bool isSteady = parts.size() == 1 && parts[0].count == length;
    return {std::move(parts), largestChangeOf(traces.channels, samplesPerCycle), isSteady};
}

std::vector<SteadyPart> briefPartsOf(const std::vector<std::span<const double>>& channels, double rateHz,
                                     double frequencyHz) {
    const double samplesPerCycle = samplesPerCycleIn(channels, rateHz, frequencyHz);
    if (samplesPerCycle == 0.0) {
        return {};
    }
    return partsOf(tracesOf(channels, samplesPerCycle, brief), samplesPerCycle, channels[0].size(), brief);
}

std::vector<Phasor> fundamentalTrace(std::span<const double> samples, double rateHz, double frequencyHz) {
    return traceOf(samples, rateHz / frequencyHz, single);
}

}  // namespace rt305
