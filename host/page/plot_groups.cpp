#include "page/plot_groups.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <string_view>

#include "base/text.h"
#include "base/time_stamp.h"
#include "output/quality_document.h"

namespace rt305 {

namespace {

/// What bounds the size of a page: how many values of a curve it has one by one, how many of these before the place of
/// interest, and in how many bands all values.
struct Bound {
    std::size_t values;
    std::size_t before;
    std::size_t bands;
};
constexpr Bound waveformBound{.values = 10'000, .before = 2400, .bands = 2400};
constexpr Bound traceBound{.values = 3000, .before = 600, .bands = 1500};
constexpr Bound spectrumBound{.values = 4200, .before = 0, .bands = 500};

constexpr std::size_t mostMarks = 200;
constexpr double shownCycles = 10.0;
constexpr double cyclesBefore = 2.0;
constexpr double lowestLevelDb = -140.0;

void bound(PlotPanel& panel, const Bound& most, double placeOfInterest) {
    const std::size_t count = panel.curves[0].values.size();
    panel.stretch = {0, std::min(count, most.values)};
    if (count > most.values) {
        const double index = (placeOfInterest - panel.start) / panel.step - static_cast<double>(most.before);
        panel.stretch.first =
            static_cast<std::size_t>(std::clamp(index, 0.0, static_cast<double>(count - most.values)));
        panel.bands = most.bands;
    }
}

double largestOf(std::span<const double> values) {
    return std::transform_reduce(
        values.begin(), values.end(), 0.0, [](double x, double y) { return std::fmax(x, y); },
        [](double x) { return std::fabs(x); });
}

/// The largest magnitude in the part of a curve where it is smallest, of those with more than zeros; 0 without any.
double smallestPart(std::span<const double> values, std::size_t length) {
    double smallest = 0.0;
    for (std::size_t first = 0; first + length <= values.size(); first += length) {
        const double largest = largestOf(values.subspan(first, length));
        smallest = largest > 0.0 && (smallest == 0.0 || largest < smallest) ? largest : smallest;
    }
    return smallest;
}

/// Unit by the largest magnitude in V or A. Decimals for as many digits of it, and for one digit less of the smallest
/// part of `length` values of a curve: a load current before a fault has its form too. At most two digits more.
void scaleFor(PlotPanel& panel, const char* unit, int digits, std::size_t length) {
    constexpr int mostMore = 2;
    double largest = 0.0;
    for (const Curve& curve : panel.curves) {
        largest = std::fmax(largest, largestOf(curve.values));
    }
    const MetricPrefix prefix = metricPrefixFor(largest);
    panel.unit = std::string(prefix.symbol) + unit;
    panel.factor = prefix.factor;
    const int decimals = decimalsFor(largest / prefix.factor, digits);
    for (Curve& curve : panel.curves) {
        const double smallest = smallestPart(curve.values, length);
        curve.decimals = std::clamp(smallest > 0.0 ? decimalsFor(smallest / prefix.factor, digits - 1) : 0, decimals,
                                    decimals + mostMore);
    }
}

bool isConstant(const std::vector<double>& samples) {
    return std::all_of(samples.begin(), samples.end(), [&](double x) { return x == samples[0] || std::isnan(x); });
}

/// A time stamp that has a date.
std::optional<std::int64_t> withDate(std::optional<std::int64_t> stamp) {
    return stamp && !isoTime(*stamp).empty() ? stamp : std::nullopt;
}

PlotPanel waveformsOf(const Measurement& recorded, std::size_t firstChannel) {
    PlotPanel panel{.quantity = isCurrent(firstChannel) ? "Current" : "Voltage",
                    .start = recorded.settings.startSeconds,
                    .step = 1.0 / recorded.rateHz};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const auto& samples = recorded.samples[firstChannel + phase];
        if (!samples.empty() && !isConstant(samples)) {
            panel.curves.push_back({std::string(recorded.nameOf(firstChannel + phase)), phase, samples});
        }
    }
    scaleFor(panel, isCurrent(firstChannel) ? "A" : "V", 4,
             static_cast<std::size_t>(recorded.rateHz / recorded.nominalHz) + 1);
    return panel;
}

/// "dip of Ua to 40.0 %"
std::string shortly(const std::string& event) {
    return event.substr(0, event.rfind(" for "));
}

std::vector<PlotMark> eventMarks(const std::optional<QualityResults>& quality) {
    std::vector<PlotMark> marks;
    for (std::size_t i = 0; quality && i < std::min(quality->events.size(), mostMarks); ++i) {
        const Event& event = quality->events[i];
        marks.push_back({event.startSeconds, event.startSeconds + event.durationSeconds, shortly(describe(event))});
    }
    return marks;
}

PlotPanel tracesOf(const QualityTraces& traces, std::size_t firstChannel) {
    PlotPanel panel{.quantity = isCurrent(firstChannel) ? "Current" : "Voltage",
                    .start = traces.startSeconds,
                    .step = traces.stepSeconds};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const auto& rms = traces.rms[firstChannel + phase];
        if (std::any_of(rms.begin(), rms.end(), [](double x) { return x > 0.0; })) {
            panel.curves.push_back({std::string(channelNames[firstChannel + phase]), phase, rms});
        }
    }
    scaleFor(panel, isCurrent(firstChannel) ? "A" : "V", 5, 1);
    return panel;
}

/// The limits of voltage, and the thresholds of events that differ from them and that the curves reach.
std::vector<PlotLevel> voltageLevels(const PlotPanel& panel, const QualitySettings& settings, const LimitSet& limits) {
    std::map<double, bool> wanted;  // by percent
    double lowest = std::numeric_limits<double>::infinity();
    double highest = 0.0;
    for (const Curve& curve : panel.curves) {
        for (const double x : curve.values) {
            lowest = std::fmin(lowest, x);
            highest = std::fmax(highest, x);
        }
    }
    if (lowest < settings.dipPercent / 100.0 * settings.declaredVolts) {
        wanted[settings.dipPercent] = false;
    }
    if (highest > settings.swellPercent / 100.0 * settings.declaredVolts) {
        wanted[settings.swellPercent] = false;
    }
    for (const Limit& limit : limits.limits) {
        for (const auto& edge : {limit.lower, limit.upper}) {
            if (limit.quantity == "voltage" && edge) {
                wanted[100.0 + *edge] = true;
            }
        }
    }
    std::vector<PlotLevel> levels;
    levels.reserve(wanted.size());
    for (const auto& [percent, isWanted] : wanted) {
        levels.push_back({formatNumber(percent) + " %", percent / 100.0 * settings.declaredVolts, isWanted});
    }
    return levels;
}

}  // namespace

PlotGroup waveformPlots(const Recording& recording, const FullMeasurement& full,
                        const std::optional<QualityResults>& quality) {
    const Measurement& recorded = full.asRecorded();
    PlotGroup group{.name = "waveforms",
                    .quantity = "Time",
                    .unit = "s",
                    .item = "sample",
                    .hasOverview = true,
                    .clock = withDate(clockOf(recording, recorded.settings.segment)),
                    .marks = eventMarks(quality)};
    const double first = recorded.settings.startSeconds;
    const double last = first + static_cast<double>(recorded.length - 1) / recorded.rateHz;
    const double cycle = 1.0 / (full.frequencyHz > 0.0 ? full.frequencyHz : recorded.nominalHz);
    const double shown = std::min(shownCycles * cycle, static_cast<double>(waveformBound.values - 1) / recorded.rateHz);
    std::optional<double> place;
    if (!group.marks.empty()) {
        place = group.marks[0].from;
    }
    const auto trigger = withDate(parseTimeStamp(recording.fact("Trigger")));
    if (group.clock && trigger) {
        const double seconds = static_cast<double>(*trigger - *group.clock) * 1e-9;
        if (first <= seconds && seconds <= last) {
            group.marks.push_back({seconds, seconds, "trigger"});
            std::stable_sort(group.marks.begin(), group.marks.end(),
                             [](const PlotMark& one, const PlotMark& other) { return one.from < other.from; });
        }
        place = first + cycle < seconds && seconds <= last ? seconds : place;
    }
    group.shownFrom =
        std::max(first, std::min(place ? *place - cyclesBefore / shownCycles * shown : first, last - shown));
    group.shownTo = std::min(last, group.shownFrom + shown);
    for (const std::size_t channel : {std::size_t{0}, phaseTotal}) {
        if (PlotPanel panel = waveformsOf(recorded, channel); !panel.curves.empty()) {
            bound(panel, waveformBound, place.value_or(first));
            group.panels.push_back(std::move(panel));
        }
    }
    return group;
}

PlotGroup tracePlots(const QualityResults& quality, const PlotGroup& waveforms, const LimitSet& limits) {
    const QualityTraces& traces = quality.traces;
    PlotGroup group{.name = "traces",
                    .quantity = "Time",
                    .unit = "s",
                    .item = "half cycle",
                    .clock = waveforms.clock,
                    .marks = waveforms.marks};
    for (const std::size_t first : {std::size_t{0}, phaseTotal}) {
        if (PlotPanel panel = tracesOf(traces, first); !panel.curves.empty()) {
            if (!isCurrent(first)) {
                panel.levels = voltageLevels(panel, quality.settings, limits);
            }
            group.panels.push_back(std::move(panel));
        }
    }
    if (group.panels.empty()) {
        return group;
    }
    if (std::any_of(traces.frequency.begin(), traces.frequency.end(), [](double f) { return f > 0.0; })) {
        group.panels.push_back({.quantity = "Frequency",
                                .unit = "Hz",
                                .start = traces.startSeconds,
                                .step = traces.stepSeconds,
                                .curves = {{"f", 0, traces.frequency, 3}}});
    }
    for (PlotPanel& panel : group.panels) {
        bound(panel, traceBound, waveforms.shownFrom);
    }
    group.shownFrom = traces.startSeconds;
    group.shownTo =
        traces.startSeconds + traces.stepSeconds * static_cast<double>(group.panels[0].curves[0].values.size() - 1);
    return group;
}

PlotGroup spectrumPlots(const FullResults& results) {
    PlotGroup group{.name = "spectra", .quantity = "Frequency", .unit = "Hz", .item = "line"};
    for (const KindResults<Spectrum>& kind : results.spectra) {
        const std::vector<double>& axis = kind.channels[0].frequencies;
        if (axis.size() < 2) {
            continue;
        }
        PlotPanel panel{.quantity = kind.areCurrents ? "Current" : "Voltage",
                        .unit = "dB",
                        .start = axis[0],
                        .step = axis[1] - axis[0],
                        .lowest = lowestLevelDb};
        for (std::size_t phase = 0; phase < kind.channels.size(); ++phase) {
            const Spectrum& spectrum = kind.channels[phase];
            if (spectrum.lines.size() == axis.size() &&
                std::any_of(spectrum.lines.begin(), spectrum.lines.end(), [](double x) { return std::isfinite(x); })) {
                panel.curves.push_back({spectrum.channel, phase, spectrum.lines, 1});
            }
        }
        if (!panel.curves.empty()) {
            bound(panel, spectrumBound, panel.start);
            group.shownTo = panel.start + panel.step * static_cast<double>(panel.stretch.count - 1);
            group.shownFrom = panel.start;
            group.panels.push_back(std::move(panel));
        }
    }
    return group;
}

std::string constantChannels(const Measurement& recorded) {
    std::vector<std::string> names;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (recorded.measures(channel) && isConstant(recorded.samples[channel])) {
            names.push_back(std::string(recorded.nameOf(channel)) + " at " +
                            formatNumber(recorded.samples[channel][0]) + (isCurrent(channel) ? " A" : " V"));
        }
    }
    return names.empty() ? "" : "Not drawn, as the samples do not change: " + joined(names) + ".";
}

std::string describeStretch(const PlotGroup& group) {
    const PlotPanel& panel = group.panels.at(0);
    if (panel.bands == 0) {
        return "Every " + group.item + " is drawn.";
    }
    const auto at = [&](std::size_t index) {
        return formatNumber(panel.start + panel.step * static_cast<double>(index)) + " " + group.unit;
    };
    const double width =
        panel.step * static_cast<double>(panel.curves[0].values.size()) / static_cast<double>(panel.bands);
    return "Every " + group.item + " is drawn from " + at(panel.stretch.first) + " to " +
           at(panel.stretch.first + panel.stretch.count - 1) +
           "; elsewhere bands from the smallest to the largest value of " + formatNumber(width, 3) + " " + group.unit +
           " each.";
}

}  // namespace rt305
