#include "page/figures.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <map>
#include <numbers>

#include "base/text.h"
#include "page/diagrams.h"
#include "page/html.h"
#include "page/page_files.h"
#include "page/plot_groups.h"

namespace rt305 {

namespace {

constexpr std::size_t highestOrder = 50;

std::string remark(const std::string& text) {
    return element("p", R"(class="remark")", escaped(text));
}

std::string figure(const std::string& drawing, const std::string& caption) {
    return element("figure", "", drawing + element("figcaption", "", escaped(caption)));
}

/// The elements in which the script draws the plots of a group, with a caption; empty without plots.
std::string plotElements(const PlotGroup& group, const std::string& caption) {
    if (page::plotLibrary.empty()) {
        return remark("Not plotted: this build of rt305 has no plots.");
    }
    if (group.panels.empty()) {
        return {};
    }
    std::string elements;
    for (const PlotPanel& panel : group.panels) {
        elements += element("div", R"(class="plot" role="img" aria-label=")" + escaped(panel.quantity) + '"', "");
    }
    return element("div", "id=\"" + group.name + R"(" class="plots")", elements) + remark(caption);
}

std::string waveformFigure(const PlotGroup& waveforms, const Measurement& recorded) {
    const std::string constant = constantChannels(recorded);
    return plotElements(waveforms, waveforms.panels.empty() ? ""
                                                            : "Samples as recorded, joined by straight lines. " +
                                                                  describeStretch(waveforms)) +
           (constant.empty() ? "" : remark(constant));
}

std::string traceFigure(const PlotGroup& traces, const QualitySettings& settings) {
    const bool hasLines = std::any_of(traces.panels.begin(), traces.panels.end(),
                                      [](const PlotPanel& panel) { return !panel.levels.empty(); });
    return plotElements(traces, "RMS of one cycle, refreshed each half cycle, and the frequency. " +
                                    std::string(hasLines ? "The dashed lines are shares of " : "Events refer to ") +
                                    formatFixed(settings.declaredVolts, decimalsFor(settings.declaredVolts, 5)) +
                                    " V, the RMS of the first steady part" +
                                    (hasLines ? "; events refer to it too" : "") + ". rt305 quality has more.");
}

std::string spectrumFigure(const PlotGroup& spectra, const FullResults& results) {
    return plotElements(spectra, "Of " + formatNumber(results.spectraSeconds, 4) + " s from " +
                                     formatNumber(results.spectraStart, 6) +
                                     " s on. Hann window; 0 dB is the largest line of each channel.");
}

/// An RMS value with a metric prefix.
std::string amount(double value, const char* unit) {
    const MetricPrefix prefix = metricPrefixFor(value);
    return formatFixed(value / prefix.factor, decimalsFor(value / prefix.factor, 5)) + " " + prefix.symbol + unit;
}

/// The magnitudes and angles of the phasors that are drawn, with a heading.
std::vector<std::vector<std::string>> phasorRows(const Measurement& recorded, const Fundamentals& fundamentals) {
    std::vector<std::vector<std::string>> rows{{"Fundamental", "RMS", "Angle"}};
    std::optional<double> reference;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (fundamentals.hasSignal[channel]) {
            const Phasor phasor = fundamentals.of(channel);
            reference = reference.value_or(std::arg(phasor));
            const double angle = std::arg(phasor * std::polar(1.0, -*reference)) * 180.0 / std::numbers::pi;
            rows.push_back({std::string(recorded.nameOf(channel)),
                            amount(std::abs(phasor), isCurrent(channel) ? "A" : "V"),
                            formatFixed(angle, 2) + "\u00b0"});
        }
    }
    return rows;
}

/// Nothing without a steady fundamental.
std::string phasorFigure(const FullMeasurement& full, const Fundamentals& fundamentals) {
    const auto rows = phasorRows(full.asRecorded(), fundamentals);
    if (fundamentals.frequencyHz == 0.0 || !full.obstacleToComponents().empty() || rows.size() == 1) {
        return {};
    }
    return figure(phasorDiagram(fundamentals),
                  "Fundamentals: voltages against the outer circle, currents (dashed) against the inner one; a lagging "
                  "phasor is turned clockwise.") +
           htmlTexts("Phasors", rows);
}

HarmonicChart chartOf(const FullMeasurement& full, const FullResults& results, std::size_t firstChannel,
                      const LimitSet& limits) {
    const double orders = 0.5 * full.asRecorded().rateHz / full.frequencyHz;  // infinite without a fundamental
    HarmonicChart chart{
        .channels = {},
        .orders = static_cast<std::size_t>(std::clamp(std::ceil(orders) - 1.0, 0.0, double{highestOrder}))};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (const auto& percents = results.plainHarmonics[firstChannel + phase]; !percents.empty()) {
            chart.channels.push_back({std::string(full.asRecorded().nameOf(firstChannel + phase)), phase, percents});
        }
    }
    for (const Limit& limit : limits.limits) {
        constexpr std::string_view prefix = "harmonic_";
        if (!isCurrent(firstChannel) && limit.quantity.starts_with(prefix) && limit.upper) {
            chart.limits[*parseCount(limit.quantity.substr(prefix.size()))] = *limit.upper;
        }
    }
    return chart;
}

std::vector<std::vector<std::string>> harmonicRows(const HarmonicChart& chart, double frequencyHz) {
    std::vector<std::vector<std::string>> rows{{"Order", "Hz"}};
    for (const auto& channel : chart.channels) {
        rows[0].push_back(channel.name + ", %");
    }
    if (!chart.limits.empty()) {
        rows[0].emplace_back("Limit, %");
    }
    for (std::size_t order = 2; order <= chart.orders; ++order) {
        auto& row = rows.emplace_back(
            std::vector{std::to_string(order), formatFixed(static_cast<double>(order) * frequencyHz, 1)});
        for (const auto& channel : chart.channels) {
            row.push_back(formatFixed(channel.percents[order - 1], 2));
        }
        if (const auto limit = chart.limits.find(order); limit != chart.limits.end()) {
            row.push_back(formatNumber(limit->second));
        } else if (!chart.limits.empty()) {
            row.emplace_back();
        }
    }
    return rows;
}

/// Why a kind of channels has no harmonics, "Ia and Ib: there is hardly a fundamental"; empty where it has all.
std::string missingHarmonics(const FullMeasurement& full, const FullResults& results, std::size_t firstChannel) {
    std::map<std::string, std::vector<std::string>> byReason;
    for (std::size_t channel = firstChannel; channel < firstChannel + phaseTotal; ++channel) {
        if (full.asRecorded().measures(channel) && results.plainHarmonics[channel].empty()) {
            byReason[results.distortionDoubts[channel]].emplace_back(full.asRecorded().nameOf(channel));
        }
    }
    std::string text;
    for (const auto& [reason, names] : byReason) {
        text += (text.empty() ? "No harmonics of " : "; of ") + joined(names) + ": " + reason;
    }
    return text.empty() ? "" : text + ".";
}

std::string legendOf(const HarmonicChart& chart) {
    std::string names;
    for (const auto& channel : chart.channels) {
        names += element("span", std::string("class=\"phase-") + static_cast<char>('a' + channel.phase) + '"',
                         escaped(channel.name));
    }
    if (!chart.limits.empty()) {
        names += element("span", R"(class="limit")", "limit");
    }
    return element("p", R"(class="legend")", names);
}

std::string harmonicFigure(const FullMeasurement& full, const FullResults& results, std::size_t firstChannel,
                           const LimitSet& limits) {
    const std::string title = isCurrent(firstChannel) ? "Currents" : "Voltages";
    const std::string missing = missingHarmonics(full, results, firstChannel);
    const HarmonicChart chart = chartOf(full, results, firstChannel, limits);
    std::string content = element("h3", "", title);
    if (!chart.channels.empty() && chart.orders >= 2) {
        const std::string id = isCurrent(firstChannel) ? "log-currents" : "log-voltages";
        const std::string caption = "RMS in percent of the fundamental, " +
                                    formatNumber(results.fundamentals.frequencyHz, 6) + " Hz, each order on its own" +
                                    (chart.limits.empty() ? "." : "; the marks are the limits of " + limits.name + ".");
        content += element(
            "div", R"(class="harmonics")",
            R"(<input type="checkbox" id=")" + id + "\">" +
                element("label", "for=\"" + id + '"', "Logarithmic scale of " + lowerCase(title)) + legendOf(chart) +
                element(
                    "div",
                    R"(class="scroll" role="region" tabindex="0" aria-label="Harmonics of )" + lowerCase(title) + '"',
                    harmonicBars(chart)) +
                element("p", R"(class="figures" role="status")", "") + remark(caption) +
                element("details", "",
                        element("summary", "", "Values of " + lowerCase(title)) +
                            htmlTexts(title + " in percent of the fundamental",
                                      harmonicRows(chart, results.fundamentals.frequencyHz))));
    }
    return content + (missing.empty() ? "" : remark(missing));
}

}  // namespace

Figures figuresOf(const Recording& recording, const FullMeasurement& full, const FullResults& results,
                  const std::optional<QualityResults>& quality, const LimitSet& limits) {
    const PlotGroup waveforms = waveformPlots(recording, full, quality);
    const PlotGroup traces = quality ? tracePlots(*quality, waveforms, limits) : PlotGroup{};
    const PlotGroup spectra = spectrumPlots(results);
    Figures figures{.waveforms = waveformFigure(waveforms, full.asRecorded()),
                    .spectra = spectrumFigure(spectra, results),
                    .phasors = phasorFigure(full, results.fundamentals),
                    .data = plotData({waveforms, traces, spectra})};
    for (const std::size_t first : {std::size_t{0}, phaseTotal}) {
        if (full.asRecorded().measures(first)) {
            figures.harmonics += harmonicFigure(full, results, first, limits);
        }
    }
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
