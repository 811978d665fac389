#include "quality/results.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace rt305 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t blockLength = 4096;

/// Puts the values of a cycle at its time and those before it that have none.
void addToTraces(const HalfCycle& cycle, QualityTraces& traces) {
    const double place = (cycle.seconds - traces.startSeconds) / traces.stepSeconds;
    const auto count = static_cast<std::size_t>(std::max(0.0, std::round(place))) + 1;
    traces.frequency.resize(std::max(count, traces.frequency.size()), nan);
    traces.rocof.resize(traces.frequency.size(), nan);
    traces.frequency[count - 1] = cycle.frequencyHz;
    traces.rocof[count - 1] = cycle.rocof;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        auto& rms = traces.rms[channel];
        rms.resize(traces.frequency.size(), rms.empty() ? nan : rms.back());
        rms[count - 1] = cycle.rms[channel];
    }
}

void keep(const Interval& interval, QualityResults& results) {
    if (interval.length == IntervalLength::tenMinutes) {
        results.tenMinutes.push_back(interval);
    } else if (interval.length == IntervalLength::tenSeconds) {
        results.tenSeconds.push_back(interval);
    } else if (interval.length == IntervalLength::cycles) {
        ++results.intervals;
        results.flagged += interval.isFlagged ? 1 : 0;
        for (std::size_t i = 0; i < results.values.size(); ++i) {
            results.values[i].push_back(static_cast<float>(interval.values[i]));
        }
    }
}

/// A listener that keeps what it hears and passes it on.
QualityListener keeper(QualityResults& results, KeepTraces keepTraces, const QualityListener& listener) {
    QualityListener both;
    both.event = [&](const Event& event) {
        results.events.push_back(event);
        if (listener.event) {
            listener.event(event);
        }
    };
    both.interval = [&](const Interval& interval) {
        keep(interval, results);
        if (listener.interval) {
            listener.interval(interval);
        }
    };
    both.halfCycle = listener.halfCycle;
    if (keepTraces == KeepTraces::yes) {
        both.halfCycle = [&](const HalfCycle& cycle) {
            addToTraces(cycle, results.traces);
            if (listener.halfCycle) {
                listener.halfCycle(cycle);
            }
        };
    }
    return both;
}

std::size_t lengthOf(const PerChannel<std::vector<double>>& samples) {
    std::size_t length = 0;
    for (const auto& each : samples) {
        length = std::max(length, each.size());
    }
    return length;
}

}  // namespace

Statistics statisticsOf(std::vector<float> values) {
    values.erase(std::remove_if(values.begin(), values.end(), [](float x) { return std::isnan(x); }), values.end());
    if (values.empty()) {
        return {0, nan, nan, nan, nan};
    }
    std::sort(values.begin(), values.end());
    const double count = static_cast<double>(values.size());
    const auto place = static_cast<std::size_t>(std::max(0.0, std::ceil(0.95 * count) - 1.0));
    return {values.size(), values.front(), std::accumulate(values.begin(), values.end(), 0.0) / count, values[place],
            values.back()};
}

QualityResults analyse(const PerChannel<std::vector<double>>& samples, const QualitySettings& settings,
                       KeepTraces keepTraces, const QualityListener& listener) {
    QualityResults results{.settings = settings};
    const std::size_t length = lengthOf(samples);
    results.durationSeconds = static_cast<double>(length) / settings.rateHz;
    results.traces.startSeconds = settings.startSeconds;
    results.traces.stepSeconds = 0.5 / settings.nominalHz;
    QualityAnalyser analyser(settings, keeper(results, keepTraces, listener));
    results.quantities = analyser.quantities();
    const auto& all = results.quantities;
    results.values.resize(static_cast<std::size_t>(
        std::count_if(all.begin(), all.end(), [](const Quantity& quantity) { return !quantity.isBin; })));
    for (std::size_t first = 0; first < length; first += blockLength) {
        SampleBlock block;
        for (std::size_t channel = 0; channel < channelTotal; ++channel) {
            const auto& whole = samples[channel];
            block[channel] = whole.empty() ? std::span<const double>()
                                           : std::span(whole).subspan(first, std::min(blockLength, length - first));
        }
        analyser.push(block);
    }
    analyser.finish();
    std::stable_sort(results.events.begin(), results.events.end(),
                     [](const Event& x, const Event& y) { return x.startSeconds < y.startSeconds; });
    return results;
}

}  // namespace rt305
