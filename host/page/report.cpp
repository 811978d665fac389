#include "page/report.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>

#include "base/text.h"
#include "base/text_encoding.h"
#include "base/version.h"
#include "output/full_document.h"
#include "output/quality_document.h"
#include "output/quality_settings.h"
#include "output/result_tables.h"
#include "page/diagrams.h"
#include "page/html.h"
#include "page/page_files.h"
#include "page/plots.h"
#include "page/policy.h"

namespace rt305 {

namespace {

// These limits keep a page at 300 kB for one second, uPlot included, and at 2 MB for the longest recording.
constexpr double waveformPointsPerSecond = 2000.0;
constexpr double mostWaveformPoints = 20000.0;
constexpr std::size_t mostSpectrumPoints = 1500;
constexpr std::size_t mostTracePoints = 4000;
constexpr double lowestLevelDb = -140.0;
constexpr double firstShownSeconds = 0.2;

std::string titleOf(bool areCurrents) {
    return areCurrents ? "Currents" : "Voltages";
}

std::string paragraph(std::string_view attributes, const std::string& text) {
    return element("p", attributes, escaped(text));
}

std::string notices(std::string_view attributes, const std::vector<std::string>& texts) {
    std::string items;
    for (const std::string& text : texts) {
        items += element("li", "", escaped(text));
    }
    return texts.empty() ? "" : element("ul", attributes, items);
}

std::string figure(const std::string& drawing, const std::string& caption) {
    return element("figure", "", drawing + element("figcaption", "", escaped(caption)));
}

/// A table for each kind of channels.
template <class Channel>
std::string tablesOf(const std::vector<KindResults<Channel>>& kinds, const std::string& title,
                     ResultTable (*tabulate)(const std::string&, const std::vector<Channel>&)) {
    std::string tables;
    for (const KindResults<Channel>& kind : kinds) {
        tables += htmlTable(titleOf(kind.areCurrents) + ": " + title, tabulate("", kind.channels));
    }
    return element("div", R"(class="beside")", tables);
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

/// Nothing when there is no steady fundamental.
std::string phasorFigure(const FullMeasurement& full, const Fundamentals& fundamentals) {
    if (fundamentals.frequencyHz == 0.0 || !full.isSteady()) {
        return {};
    }
    return figure(phasorDiagram(fundamentals),
                  "Fundamentals: voltages against the outer circle, currents (dashed) against the inner one; a lagging "
                  "phasor is turned clockwise.");
}

/// The tables of these names, as far as the document has them, side by side where there is room.
std::string resultTables(const ResultDocument& document, const std::vector<std::string_view>& names,
                         const std::string& more) {
    std::string content;
    for (const std::string_view name : names) {
        if (const ResultTable* const table = document.table(name); table != nullptr && !table->rows.empty()) {
            content += htmlTable(table->title.empty() ? "Measured" : table->title, *table);
        }
    }
    return element("div", R"(class="beside")", content + more);
}

std::string baseName(const std::string& path) {
    return toUtf8(std::filesystem::path(path).filename().string(), "");
}

/// Messages with the names of files without their folders, as the page shows them.
std::vector<std::string> withoutFolder(std::vector<std::string> messages, const Recording& recording) {
    for (std::string& message : messages) {
        for (const auto& [file, checksum] : recording.files) {
            if (const std::size_t at = message.find(file); at != std::string::npos) {
                message.replace(at, file.size(), baseName(file));
            }
        }
    }
    return messages;
}

using Facts = std::vector<std::pair<std::string, std::string>>;

Facts recordingFacts(const Recording& recording, const Measurement& recorded) {
    Facts facts{{"Recording", baseName(recording.source)}, {"Format", recording.format}};
    facts.insert(facts.end(), recording.facts.begin(), recording.facts.end());
    facts.emplace_back("Rate", formatNumber(recorded.rateHz, 9) + " Hz, " + recording.rateOrigin);
    for (const SourceFile& file : recording.files) {
        facts.emplace_back("SHA-256 of " + (file.isStdin() ? "stdin" : baseName(file.name)), file.checksum);
    }
    return facts;
}

Facts channelFacts(const Recording& recording, const Assignment& assignment) {
    Facts facts;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const auto column = assignment.columns[channel];
        facts.emplace_back(channelNames[channel], column ? "column " + std::to_string(*column + 1) + ", " +
                                                               inQuotes(recording.columns[*column].name) + ": " +
                                                               assignment.reasons[channel]
                                                         : "not recorded");
    }
    return facts;
}

Facts settingFacts(const ResultDocument& document, const Measurement& recorded) {
    Facts facts{
        {"Measured", std::to_string(recorded.length) + " samples from " +
                         formatNumber(recorded.settings.startSeconds, 9) + " s on, " + document.content},
        {"Handed over", std::to_string(document.samples) + " samples at " + formatNumber(document.rateHz) + " Hz"},
        {"Spectra", "Hann window, dB below the largest line"},
        {"Tool", std::string("rt305 ") + toolVersion},
        {"Library", document.library}};
    if (!document.settings.empty()) {
        facts.emplace_back("Settings", document.settings);
    }
    return facts;
}

struct Section {
    const char* id;
    const char* title;
    std::string content;
};

Section overviewSection(const Recording& recording, const ResultDocument& document, const std::string& phasors) {
    return {"overview", "Overview",
            notices(R"(class="notices")", withoutFolder(document.warnings, recording)) +
                resultTables(document, {"parameters", "signals"}, phasors)};
}

/// Of voltages or currents alone, the overview has the statistics.
Section signalSection(const FullResults& results, const PlotGroup& waveforms, bool withStatistics) {
    return {"signals", "Waveforms",
            plotElements(waveforms) +
                paragraph(R"(class="remark on-screen")",
                          "As recorded; the first " + formatNumber(firstShownSeconds) +
                              " s are shown. Drag across a plot to zoom into both, double-click to show all. Long "
                              "recordings are thinned without losing peaks.") +
                (withStatistics ? tablesOf(results.signals, "statistics without the offset", signalTable) : "")};
}

Section resultSection(const ResultDocument& document) {
    return {"results", "Results",
            resultTables(document, {"power", "derived", "highest_harmonics"}, "") + notices("", document.remarks)};
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

/// Events and traces of cycles; nothing when there are no voltages to follow.
Section qualitySection(const std::optional<QualityResults>& quality, const PlotGroup& traces) {
    if (!quality) {
        return {"events", "Events", paragraph("", "The voltages cannot be followed from cycle to cycle.")};
    }
    const auto cells = eventCells(*quality);
    const std::string events =
        cells.empty()
            ? paragraph("", "There are no events.")
            : element("div", R"(class="beside")",
                      htmlTexts("Events", cells) +
                          figure(eventDiagram(*quality),
                                 "Duration and residual or largest voltage of dips, swells and interruptions."));
    return {"events", "Events",
            events + plotElements(traces) +
                paragraph(
                    R"(class="remark")",
                    "RMS of one cycle, refreshed each half cycle; percentages and thresholds refer to " +
                        formatFixed(quality->settings.declaredVolts, decimalsFor(quality->settings.declaredVolts, 5)) +
                        " V, the RMS of the first steady part. rt305 quality has more.")};
}

Section spectrumSection(const FullResults& results, const PlotGroup& lines) {
    return {"lines", "Spectra",
            plotElements(lines) +
                paragraph(R"(class="remark")", "Hann window; 0 dB is the largest line of each channel.") +
                tablesOf(results.spectra, "largest lines", spectrumTable)};
}

Section harmonicSection(const FullResults& results) {
    std::string content;
    for (const auto& kind : results.harmonics) {
        const std::string title = titleOf(kind.areCurrents);
        content += element("h3", "", title) +
                   element("div", R"(class="scroll" role="region" tabindex="0" aria-label=")" + title + '"',
                           figure(harmonicBars(kind.channels),
                                  "Percent of the fundamental; phases a, b and c from left to right at each order."));
    }
    return {"harmonics", "Harmonics",
            content + tablesOf(results.harmonics, "all harmonics", harmonicTable) +
                paragraph(R"(class="remark")", "0 dB is 1 V or 1 A RMS; % is of the fundamental.")};
}

Section originSection(const Recording& recording, const FullMeasurement& full, const ResultDocument& document) {
    return {"origin", "Recording and settings",
            htmlFacts("Recording", recordingFacts(recording, full.asRecorded())) +
                htmlFacts("Channels", channelFacts(recording, full.measurement.assignment)) +
                htmlFacts("Measurement", settingFacts(document, full.asRecorded())) +
                notices("", full.measurement.notes)};
}

std::string navigationOf(const std::vector<Section>& sections) {
    std::string links;
    for (const Section& section : sections) {
        links += element("a", "href=\"#" + std::string(section.id) + '"', section.title);
    }
    return links;
}

std::string htmlOf(const std::vector<Section>& sections) {
    std::string html;
    for (const Section& section : sections) {
        html += element("section", "id=\"" + std::string(section.id) + '"',
                        element("h2", "", section.title) + section.content);
    }
    return html;
}

}  // namespace

std::string reportPage(const Recording& recording, const FullMeasurement& full, const FullResults& results) {
    const Measurement& recorded = full.asRecorded();
    const ResultDocument document = fullDocument(recording, full, results);
    const PlotGroup waveforms = waveformPlots(recorded);
    const PlotGroup lines = spectrumPlots(results.spectra);
    std::optional<QualityResults> quality;
    if (const auto settings = qualitySettingsOf(recording, full)) {
        quality = analyse(recorded.samples, *settings, KeepTraces::yes);
    }
    const PlotGroup traces = quality ? qualityPlots(quality->traces) : PlotGroup{};
    const std::vector<Section> sections{overviewSection(recording, document, phasorFigure(full, results.fundamentals)),
                                        signalSection(results, waveforms, recorded.isCombined()),
                                        resultSection(document),
                                        qualitySection(quality, traces),
                                        spectrumSection(results, lines),
                                        harmonicSection(results),
                                        originSection(recording, full, document)};
    const std::string length =
        formatNumber(recorded.durationSeconds()) + " s at " + formatNumber(recorded.rateHz) + " Hz";
    return filled(page::html,
                  {{"title", escaped("Measurement of " + baseName(recording.source))},
                   {"summary", escaped(length + ", " + document.content)},
                   {"generator", escaped(std::string("rt305 ") + toolVersion + ", library " + document.library)},
                   {"navigation", navigationOf(sections)},
                   {"sections", htmlOf(sections)},
                   {"data", plotData({waveforms, traces, lines})},
                   {"style", std::string(page::style)},
                   {"script", std::string(page::script)},
                   {"plot-library", std::string(page::plotLibrary)},
                   {"style-hash", policyHashOf(page::style)},
                   {"script-hashes", policyHashOf(page::plotLibrary) + " " + policyHashOf(page::script)}});
}

}  // namespace rt305
