#include "page/report.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "base/text.h"
#include "base/text_encoding.h"
#include "output/result_tables.h"
#include "page/checksum.h"
#include "page/diagrams.h"
#include "page/html.h"
#include "page/page_files.h"
#include "page/plots.h"
#include "recording/channel_assignment.h"

namespace rt305 {

namespace {

// What a page may cost: 300 kB for a second, uPlot included, and 2 MB for the longest recording.
constexpr double waveformPointsPerSecond = 2000.0;
constexpr double mostWaveformPoints = 20000.0;
constexpr std::size_t mostSpectrumPoints = 1500;
constexpr double lowestLevelDb = -140.0;
constexpr double firstShownSeconds = 0.2;
constexpr std::uint32_t spectrumFlags = RT305_4_SPECTRUM_WINDOW_HANN | RT305_4_SPECTRUM_LEVEL_DB;

/// The results of one operation by kind, the kinds that were measured only.
template <class Channel>
struct Kind {
    bool isCurrent;
    std::vector<Channel> channels;

    std::string name() const { return isCurrent ? "Currents" : "Voltages"; }
};

template <class Read>
auto readKinds(const ResultTexts& texts, Read read) {
    using Channel = typename decltype(read(std::string()))::value_type;
    std::vector<Kind<Channel>> kinds;
    for (const auto& [text, isCurrent] : {std::pair{texts.voltages, false}, {texts.currents, true}}) {
        if (!text.empty()) {
            kinds.push_back({isCurrent, read(text)});
        }
    }
    return kinds;
}

template <class Channel>
std::vector<Channel> allOf(const std::vector<Kind<Channel>>& kinds) {
    std::vector<Channel> all;
    for (const auto& kind : kinds) {
        all.insert(all.end(), kind.channels.begin(), kind.channels.end());
    }
    return all;
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
std::string tablesOf(const std::vector<Kind<Channel>>& kinds, const std::string& title,
                     ResultTable (*tabulate)(const std::string&, const std::vector<Channel>&)) {
    std::string tables;
    for (const Kind<Channel>& kind : kinds) {
        tables += htmlTable(kind.name() + ": " + title, tabulate("", kind.channels));
    }
    return element("div", R"(class="beside")", tables);
}

std::string placesOf(const PlotGroup& group) {
    std::string places;
    for (const PlotPanel& panel : group.panels) {
        places += element("div", R"(class="plot" role="group" aria-label=")" + escaped(panel.axis) + '"', "");
    }
    return element("div", "id=\"" + group.name + '"', places);
}

PlotPanel waveformsOf(const Measurement& recorded, std::size_t firstChannel) {
    PlotPanel panel{isCurrent(firstChannel) ? "Current, A" : "Voltage, V",
                    0,
                    recorded.settings.startSeconds,
                    1.0 / recorded.rateHz,
                    {}};
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
    const double seconds = static_cast<double>(recorded.length) / recorded.rateHz;
    const double pairs =
        std::clamp(seconds, 1.0, mostWaveformPoints / waveformPointsPerSecond) * waveformPointsPerSecond / 2.0;
    PlotGroup group{"waveforms", "Time, s", 5, 2 * static_cast<std::size_t>(pairs), firstShownSeconds, {}};
    for (const std::size_t first : {std::size_t{0}, phaseTotal}) {
        if (!recorded.samples[first].empty()) {
            group.panels.push_back(waveformsOf(recorded, first));
        }
    }
    return group;
}

PlotGroup spectrumPlots(const std::vector<Kind<Spectrum>>& kinds) {
    PlotGroup group{"spectra", "Frequency, Hz", 2, mostSpectrumPoints, 0.0, {}};
    for (const Kind<Spectrum>& kind : kinds) {
        const std::vector<double>& axis = kind.channels[0].frequencies;
        if (axis.size() < 2) {
            continue;
        }
        PlotPanel panel{kind.isCurrent ? "Current, dB" : "Voltage, dB", 1, axis[0], axis[1] - axis[0], {}};
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

std::string harmonicSection(const std::vector<Kind<Harmonics>>& kinds) {
    std::string content;
    for (const Kind<Harmonics>& kind : kinds) {
        content += element("h3", "", kind.name()) +
                   element("div", R"(class="scroll" role="region" tabindex="0" aria-label=")" + kind.name() + '"',
                           figure(harmonicBars(kind.channels),
                                  "Percent of the fundamental; phases a, b and c from left "
                                  "to right at each order."));
    }
    return content + tablesOf(kinds, "all harmonics", harmonicTable) +
           paragraph(R"(class="remark")", "0 dB is 1 V or 1 A RMS; % is of the fundamental.");
}

/// Nothing when there is no fundamental.
std::string phasorSection(const Measurement& measurement, const std::vector<Harmonics>& harmonics) {
    const Fundamentals fundamentals = fundamentalsOf(measurement, harmonics);
    if (*std::max_element(fundamentals.frequencies.begin(), fundamentals.frequencies.end()) == 0.0) {
        return {};
    }
    return figure(phasorDiagram(fundamentals),
                  "Fundamentals: voltages against the outer circle, currents (dashed) against the inner one; a lagging "
                  "phasor is turned clockwise.");
}

/// The tables of a document that have rows, from one to another, beside each other where there is room.
std::string resultTables(const ResultDocument& document, std::size_t first, std::size_t end,
                         const std::string& behind) {
    std::string content;
    for (std::size_t i = first; i < std::min(end, document.tables.size()); ++i) {
        const ResultTable& table = document.tables[i];
        content += table.rows.empty() ? "" : htmlTable(table.title.empty() ? "Measured" : table.title, table);
    }
    return element("div", R"(class="beside")", content + behind);
}

std::string baseName(const std::string& path) {
    return toUtf8(std::filesystem::path(path).filename().string(), "");
}

/// Messages that name the file by its path name it as the page does.
std::vector<std::string> withoutFolder(std::vector<std::string> messages, const Recording& recording) {
    for (std::string& message : messages) {
        for (const std::string& file : recording.files) {
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
    for (const std::string& file : recording.files) {
        facts.emplace_back("SHA-256 of " + baseName(file), checksumOfFile(file));
    }
    if (recording.files.empty()) {
        facts.emplace_back("SHA-256", "none: read from stdin");
    }
    return facts;
}

Facts channelFacts(const Recording& recording, const PerChannel<std::string>& chosen) {
    const Assignment assignment = assignColumns(recording, chosen);
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
        {"Tool", "rt305 " RT305_4_PROJECT_VERSION},
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

std::string reportPage(const Recording& recording, const FullMeasurement& overview, const Library& library) {
    const Measurement& recorded = overview.asRecorded;
    Measurement measured = overview.measurement;
    measured.settings.spectrumFlags = spectrumFlags;
    const ResultDocument document = measureAll(recording, overview, library);
    const auto signals = readKinds(library.measure(recorded, RT305_4_OPERATION_SIGNALS), readSignals);
    const auto spectra = readKinds(library.measure(measured, RT305_4_OPERATION_SPECTRUM), readSpectra);
    const auto harmonics = readKinds(library.measure(measured, RT305_4_OPERATION_DISTORTION), readHarmonics);
    const PlotGroup waveforms = waveformPlots(recorded);
    const PlotGroup lines = spectrumPlots(spectra);

    const std::vector<Section> sections{
        {"overview", "FullMeasurement",
         notices(R"(class="notices")", withoutFolder(document.warnings, recording)) +
             resultTables(document, 0, 1, phasorSection(measured, allOf(harmonics)))},
        {"signals", "Waveforms",
         placesOf(waveforms) +
             paragraph(R"(class="remark on-screen")",
                       "As recorded, at first " + formatNumber(firstShownSeconds) +
                           " s of it. Drag across a plot to zoom into both, double-click to see all. Long recordings "
                           "are thinned; no peak is lost.") +
             (measured.isCombined() ? tablesOf(signals, "statistics without the offset", signalTable) : "")},
        {"results", "Results", resultTables(document, 1, document.tables.size(), "") + notices("", document.remarks)},
        {"lines", "Spectra",
         placesOf(lines) + paragraph(R"(class="remark")", "Hann window; 0 dB is the largest line of each channel.") +
             tablesOf(spectra, "largest lines", spectrumTable)},
        {"harmonics", "Harmonics", harmonicSection(harmonics)},
        {"origin", "Recording and settings",
         htmlFacts("Recording", recordingFacts(recording, recorded)) +
             htmlFacts("Channels", channelFacts(recording, measured.settings.columns)) +
             htmlFacts("Measurement", settingFacts(document, recorded)) + notices("", overview.measurement.notes)},
    };
    const std::string seconds = formatNumber(static_cast<double>(recorded.length) / recorded.rateHz);
    return filled(
        page::html,
        {{"title", escaped("Measurement of " + baseName(recording.source))},
         {"summary", escaped(seconds + " s at " + formatNumber(recorded.rateHz) + " Hz, " + document.content)},
         {"generator", escaped("rt305 " RT305_4_PROJECT_VERSION ", library " + document.library)},
         {"navigation", navigationOf(sections)},
         {"sections", htmlOf(sections)},
         {"data", plotData({waveforms, lines})},
         {"style", std::string(page::style)},
         {"script", std::string(page::script)},
         {"plot-library", std::string(page::plotLibrary)},
         {"style-hash", policyHashOf(page::style)},
         {"script-hashes", policyHashOf(page::plotLibrary) + " " + policyHashOf(page::script)}});
}

}  // namespace rt305
