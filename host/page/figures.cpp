#include "page/figures.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "page/diagrams.h"
#include "page/html.h"
#include "page/plots.h"

namespace rt305 {

namespace {

// These limits keep a page at 300 kB for one second, uPlot included, and at 2 MB for the longest recording.
constexpr double waveformPointsPerSecond = 2000.0;
constexpr double mostWaveformPoints = 20000.0;
constexpr std::size_t mostSpectrumPoints = 1500;
constexpr std::size_t mostTracePoints = 4000;
constexpr double lowestLevelDb = -140.0;
constexpr double firstShownSeconds = 0.2;

std::string figure(const std::string& drawing, const std::string& caption) {
    return element("figure", "", drawing + element("figcaption", "", escaped(caption)));
}

/// The elements in which the script draws the plots.
std::string plotElements(const PlotGroup& group) {
    std::string elements;
    for (const PlotPanel& panel : group.panels) {
        elements += element("div", R"(class="plot" role="group" aria-label=")" + escaped(panel.axis) + '"', "");
    }
    return element("div", "id=\"" + group.name + '"', elements);
}

PlotPanel waveformsOf(const Measurement& recorded, std::size_t firstChannel) {
    PlotPanel panel{.axis = isCurrent(firstChannel) ? "Current, A" : "Voltage, V",
                    .start = recorded.settings.startSeconds,
                    .step = 1.0 / recorded.rateHz};
    double largest = 0.0;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const auto& samples = recorded.samples[firstChannel + phase];
        if (!samples.empty()) {
            panel.curves.push_back({std::string(channelNames[firstChannel + phase]), phase, samples});
        }
        for (const double x : samples) {
            largest = std::fmax(largest, std::fabs(x));
        }
    }
    panel.decimals = decimalsFor(largest, 4);
    return panel;
}

PlotGroup waveformPlots(const Measurement& recorded) {
    const double pairs = std::clamp(recorded.durationSeconds(), 1.0, mostWaveformPoints / waveformPointsPerSecond) *
                         waveformPointsPerSecond / 2.0;
    PlotGroup group{.name = "waveforms",
                    .axis = "Time, s",
                    .decimals = 5,
                    .mostPoints = 2 * static_cast<std::size_t>(pairs),
                    .shown = firstShownSeconds};
    for (const std::size_t first : {std::size_t{0}, phaseTotal}) {
        if (!recorded.samples[first].empty()) {
            group.panels.push_back(waveformsOf(recorded, first));
        }
    }
    return group;
}

PlotGroup spectrumPlots(const std::vector<KindResults<Spectrum>>& kinds) {
    PlotGroup group{
        .name = "spectra", .axis = "Frequency, Hz", .decimals = 2, .mostPoints = mostSpectrumPoints, .shown = 0.0};
    for (const KindResults<Spectrum>& kind : kinds) {
        const std::vector<double>& axis = kind.channels[0].frequencies;
        if (axis.size() < 2) {
            continue;
        }
        PlotPanel panel{.axis = kind.areCurrents ? "Current, dB" : "Voltage, dB",
                        .decimals = 1,
                        .start = axis[0],
                        .step = axis[1] - axis[0]};
        for (const Spectrum& spectrum : kind.channels) {
            Curve curve{spectrum.channel, panel.curves.size(), spectrum.lines};
            curve.values.resize(axis.size(), lowestLevelDb);
            for (double& level : curve.values) {
                level = std::fmax(level, lowestLevelDb);
            }
            panel.curves.push_back(std::move(curve));
        }
        group.panels.push_back(std::move(panel));
    }
    return group;
}

std::string remark(const std::string& text) {
    return element("p", R"(class="remark")", escaped(text));
}

/// Nothing when there is no steady fundamental.
std::string phasorFigure(const FullMeasurement& full, const Fundamentals& fundamentals) {
    if (fundamentals.frequencyHz == 0.0 || !full.isSteady()) {
        return {};
    }
    return figure(phasorDiagram(fundamentals),
                  "Fundamentals: voltages against the outer circle, currents (dashed) against the inner one; a lagging "
                  "phasor is turned clockwise.");
}

PlotPanel tracesOf(const QualityTraces& traces, std::size_t firstChannel) {
    PlotPanel panel{.axis = isCurrent(firstChannel) ? "Current, A" : "Voltage, V",
                    .start = traces.startSeconds,
                    .step = traces.stepSeconds};
    double largest = 0.0;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const auto& rms = traces.rms[firstChannel + phase];
        if (std::any_of(rms.begin(), rms.end(), [](double x) { return !std::isnan(x); })) {
            panel.curves.push_back({std::string(channelNames[firstChannel + phase]), phase, rms});
            largest = std::fmax(largest, largestMagnitude(rms));
        }
    }
    panel.decimals = decimalsFor(largest, 5);
    return panel;
}

/// RMS of each cycle and the frequency over time.
PlotGroup qualityPlots(const QualityTraces& traces) {
    PlotGroup group{.name = "traces", .axis = "Time, s", .decimals = 3, .mostPoints = mostTracePoints, .shown = 0.0};
    for (const std::size_t first : {std::size_t{0}, phaseTotal}) {
        if (PlotPanel panel = tracesOf(traces, first); !panel.curves.empty()) {
            group.panels.push_back(std::move(panel));
        }
    }
    if (!group.panels.empty()) {
        group.panels.push_back({.axis = "Frequency, Hz",
                                .decimals = 3,
                                .start = traces.startSeconds,
                                .step = traces.stepSeconds,
                                .curves = {{"f", 0, traces.frequency}}});
    }
    return group;
}

std::string waveformFigure(const PlotGroup& waveforms) {
    return plotElements(waveforms) +
           element("p", R"(class="remark on-screen")",
                   escaped("As recorded; the first " + formatNumber(firstShownSeconds) +
                           " s are shown. Drag across a plot to zoom into both, double-click to show all. Long "
                           "recordings are thinned without losing peaks."));
}

std::string traceFigure(const PlotGroup& traces, const QualitySettings& settings) {
    return plotElements(traces) +
           remark("RMS of one cycle, refreshed each half cycle; percentages and thresholds refer to " +
                  formatFixed(settings.declaredVolts, decimalsFor(settings.declaredVolts, 5)) +
                  " V, the RMS of the first steady part. rt305 quality has more.");
}

std::string harmonicFigures(const std::vector<KindResults<Harmonics>>& kinds) {
    std::string content;
    for (const auto& kind : kinds) {
        const std::string title = kind.areCurrents ? "Currents" : "Voltages";
        content += element("h3", "", title) +
                   element("div", R"(class="scroll" role="region" tabindex="0" aria-label=")" + title + '"',
                           figure(harmonicBars(kind.channels),
                                  "Percent of the fundamental; phases a, b and c from left to right at each order."));
    }
    return content;
}

}  // namespace

Figures figuresOf(const FullMeasurement& full, const FullResults& results,
                  const std::optional<QualityResults>& quality) {
    const PlotGroup waveforms = waveformPlots(full.asRecorded());
    const PlotGroup traces = quality ? qualityPlots(quality->traces) : PlotGroup{};
    const PlotGroup spectra = spectrumPlots(results.spectra);
    Figures figures{.waveforms = waveformFigure(waveforms),
                    .spectra = plotElements(spectra) + remark("Hann window; 0 dB is the largest line of each channel."),
                    .phasors = phasorFigure(full, results.fundamentals),
                    .harmonics = harmonicFigures(results.harmonics),
                    .data = plotData({waveforms, traces, spectra})};
    if (quality) {
        figures.traces = traceFigure(traces, quality->settings);
    }
    if (quality && !quality->events.empty()) {
        figures.events = figure(eventDiagram(*quality),
                                "Duration and residual or largest voltage of dips, swells and interruptions.");
    }
    return figures;
}

}  // namespace rt305
