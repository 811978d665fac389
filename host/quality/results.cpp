#include "quality/results.h"

#include <algorithm>
#include <cmath>
#include <limits>

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
    return {.halfCycle =
                [&results, &listener, keepTraces](const HalfCycle& cycle) {
                    if (keepTraces == KeepTraces::yes) {
                        addToTraces(cycle, results.traces);
                    }
                    listener.halfCycle(cycle);
                },
            .event =
                [&](const Event& event) {
                    results.events.push_back(event);
                    listener.event(event);
                },
            .interval =
                [&](const Interval& interval) {
                    keep(interval, results);
                    listener.interval(interval);
                }};
}

}  // namespace

QualityResults analyse(const PerChannel<std::vector<double>>& samples, const QualitySettings& settings,
                       KeepTraces keepTraces, const QualityListener& listener) {
    QualityResults results{.settings = settings};
    const std::size_t length = std::ranges::max_element(samples, {}, [](auto& each) { return each.size(); })->size();
    results.durationSeconds = static_cast<double>(length) / settings.rateHz;
    results.traces.startSeconds = settings.startSeconds;
    results.traces.stepSeconds = 0.5 / settings.nominalHz;
    QualityAnalyser analyser(settings, keeper(results, keepTraces, listener));
    results.quantities = analyser.quantities();
    const auto& all = results.quantities;
    results.values.resize(static_cast<std::size_t>(
        std::count_if(all.begin(), all.end(), [](const IntervalQuantity& quantity) { return !quantity.isBin; })));
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
