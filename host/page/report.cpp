#include "page/report.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "base/text.h"
#include "base/text_encoding.h"
#include "base/version.h"
#include "output/full_document.h"
#include "output/quality_document.h"
#include "output/quality_settings.h"
#include "output/result_tables.h"
#include "page/figures.h"
#include "page/html.h"
#include "page/page_files.h"
#include "page/policy.h"

namespace rt305 {

namespace {

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
Section signalSection(const FullResults& results, const Figures& figures, bool withStatistics) {
    return {"signals", "Waveforms",
            figures.waveforms +
                (withStatistics ? tablesOf(results.signals, "statistics without the offset", signalTable) : "")};
}

Section resultSection(const ResultDocument& document) {
    return {"results", "Results",
            resultTables(document, {"power", "derived", "highest_harmonics"}, "") + notices("", document.remarks)};
}

/// Events and traces of cycles; nothing when there are no voltages to follow.
Section qualitySection(const std::optional<QualityResults>& quality, const Figures& figures) {
    if (!quality) {
        return {"events", "Events", paragraph("", "The voltages cannot be followed from cycle to cycle.")};
    }
    const auto cells = eventCells(*quality);
    const std::string events = cells.empty()
                                   ? paragraph("", "There are no events.")
                                   : element("div", R"(class="beside")", htmlTexts("Events", cells) + figures.events);
    return {"events", "Events", events + figures.traces};
}

Section spectrumSection(const FullResults& results, const Figures& figures) {
    return {"lines", "Spectra", figures.spectra + tablesOf(results.spectra, "largest lines", spectrumTable)};
}

Section harmonicSection(const FullResults& results, const Figures& figures) {
    return {"harmonics", "Harmonics",
            figures.harmonics + tablesOf(results.harmonics, "all harmonics", harmonicTable) +
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
    std::optional<QualityResults> quality;
    if (const auto settings = qualitySettingsOf(recording, full)) {
        quality = analyse(recorded.samples, *settings, KeepTraces::yes);
    }
    const Figures figures = figuresOf(full, results, quality);
    const std::vector<Section> sections{overviewSection(recording, document, figures.phasors),
                                        signalSection(results, figures, recorded.isCombined()),
                                        resultSection(document),
                                        qualitySection(quality, figures),
                                        spectrumSection(results, figures),
                                        harmonicSection(results, figures),
                                        originSection(recording, full, document)};
    const std::string length =
        formatNumber(recorded.durationSeconds()) + " s at " + formatNumber(recorded.rateHz) + " Hz";
    return filled(page::html,
                  {{"title", escaped("Measurement of " + baseName(recording.source))},
                   {"summary", escaped(length + ", " + document.content)},
                   {"generator", escaped(std::string("rt305 ") + toolVersion + ", library " + document.library)},
                   {"navigation", navigationOf(sections)},
                   {"sections", htmlOf(sections)},
                   {"data", figures.data},
                   {"style", std::string(page::style)},
                   {"script", std::string(page::script)},
                   {"plot-library", std::string(page::plotLibrary)},
                   {"style-hash", policyHashOf(page::style)},
                   {"script-hashes", policyHashOf(page::plotLibrary) + " " + policyHashOf(page::script)}});
}

}  // namespace rt305
