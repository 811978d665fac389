#include "page/report.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "base/text.h"
#include "base/time_stamp.h"
#include "base/version.h"
#include "output/full_document.h"
#include "output/quality_document.h"
#include "output/quality_settings.h"
#include "output/result_tables.h"
#include "output/summary.h"
#include "page/figures.h"
#include "page/html.h"
#include "page/index_page.h"
#include "page/plot_scripts.h"

namespace rt305 {

namespace {

std::string titleOf(bool areCurrents) {
    return areCurrents ? "Currents" : "Voltages";
}

std::string paragraph(std::string_view attributes, const std::string& text) {
    return text.empty() ? "" : element("p", attributes, escaped(text));
}

std::string listOf(std::string_view attributes, const std::vector<std::string>& texts) {
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

/// The table of that name; nothing when the document has none, or it is empty.
std::string resultTable(const ResultDocument& document, std::string_view name, const std::string& caption) {
    const ResultTable* const table = document.table(name);
    return table == nullptr || table->rows.empty() ? "" : htmlTable(caption, *table);
}

/// As a sentence of its own. The name of a file at its begin stays as it is.
std::string asSentence(std::string text) {
    const std::string_view word = std::string_view(text).substr(0, text.find(' '));
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z' && word.find_first_of(".:") == std::string_view::npos) {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
    return text + (text.empty() || text.back() == '.' ? "" : ".");
}

/// The remarks on a page, each of them once: beside the figures that they concern, below all of them, or with the
/// library's own figures.
struct PageRemarks {
    std::vector<Remark> caveats{};
    std::vector<std::string> warnings{};
    std::vector<std::string> others{};
    std::vector<std::string> ofLibrary{};
};

PageRemarks remarksOf(const ResultDocument& document, const std::vector<Remark>& onOffsets, const FullMeasurement& full,
                      unsigned shownTopics, const Recording& recording) {
    PageRemarks sorted;
    const auto sort = [&](const std::vector<Remark>& remarks, std::vector<std::string>& general) {
        for (const Remark& remark : remarks) {
            std::string text = asSentence(withoutFolders(remark.text, recording));
            if (remark.text == full.unsteadiness) {
                text += " The figures are averages over all that is measured.";
                sorted.caveats.insert(sorted.caveats.begin(), {std::move(text), remark.topics});
            } else if ((remark.topics & shownTopics) != 0) {
                sorted.caveats.emplace_back(std::move(text), remark.topics);
            } else {
                (remark.topics == 0 ? general : sorted.ofLibrary).push_back(std::move(text));
            }
        }
    };
    sort(document.warnings, sorted.warnings);
    sort(document.remarks, sorted.others);
    sort(onOffsets, sorted.others);
    return sorted;
}

/// The marks of the caveats that concern a row, as links to them.
std::string marksOf(const SummaryRow& row, const std::vector<Remark>& caveats) {
    std::string marks;
    for (std::size_t i = 0; i < caveats.size(); ++i) {
        if (row.needsRemarks() && (caveats[i].topics & row.topics) != 0) {
            const std::string number = std::to_string(i + 1);
            std::string link = "href=\"#caveat-";
            link.append(number).append("\" aria-label=\"remark ").append(number).append("\"");
            marks += element("a", link, number);
        }
    }
    return marks.empty() ? "" : element("sup", "", marks.substr(0, marks.size() - 1));
}

/// The cells of a row from the total on. A reason stands once for the phases that share it.
std::string figureCells(const SummaryRow& row, const SummaryTexts& texts, bool isThreePhase) {
    std::string cells;
    const std::size_t end = isThreePhase ? texts.figures.size() : 2;
    for (std::size_t i = 0, next = 0; i < end; i = next) {
        next = i + 1;
        if (row.reasons[i].empty() || !row.figures[i]) {
            cells += element("td", "", escaped(texts.figures[i]));
            continue;
        }
        while (next < end && row.reasons[next] == row.reasons[i] && row.figures[next]) {
            ++next;
        }
        // a total alone may take the room of the phases, which it does not have
        const bool takesAll = i == 0 && end > 1 && !row.figures[1];
        next = takesAll ? end : next;
        cells += element("td", R"(class="reason" colspan=")" + std::to_string(next - i) + '"',
                         "not shown: " + escaped(row.reasons[i]));
    }
    return cells;
}

std::string summaryTable(const std::vector<SummaryRow>& rows, const std::vector<Remark>& caveats, bool isThreePhase) {
    const auto heading = [](const std::string& text) { return element("th", R"(scope="col")", text); };
    std::string head = element("td", "", "") + heading("Total") + heading(isThreePhase ? "a" : "Phase");
    head += (isThreePhase ? heading("b") + heading("c") : "") + heading("Unit");
    std::string body;
    for (const SummaryRow& row : rows) {
        const SummaryTexts texts = textsOf(row);
        body += element("tr", "",
                        element("th", R"(scope="row")", escaped(row.label) + marksOf(row, caveats)) +
                            figureCells(row, texts, isThreePhase) + element("td", "", escaped(texts.unit)));
    }
    return scrollingTable("Measured", R"(class="summary with-units")",
                          element("thead", "", element("tr", "", head)) + element("tbody", "", body));
}

std::string caveatList(const std::vector<Remark>& caveats) {
    std::string items;
    for (std::size_t i = 0; i < caveats.size(); ++i) {
        items += element("li", "id=\"caveat-" + std::to_string(i + 1) + '"', escaped(caveats[i].text));
    }
    return caveats.empty() ? "" : element("ol", R"(class="caveats")", items);
}

using Facts = std::vector<std::pair<std::string, std::string>>;

/// The trigger, and how long after the first sample it is.
std::string triggerOf(const RecordingFacts& facts) {
    const auto start = parseTimeStamp(facts.start);
    const auto trigger = parseTimeStamp(facts.trigger);
    if (!start || !trigger || *trigger == *start) {
        return facts.trigger;
    }
    const double seconds = static_cast<double>(*trigger - *start) * 1e-9;
    return facts.trigger + ", " + formatNumber(std::fabs(seconds)) + " s " + (seconds > 0.0 ? "after" : "before") +
           " the start";
}

/// What was recorded, in the words that people ask with.
std::string recordedFacts(const Recording& recording, const ResultDocument& document) {
    constexpr std::size_t shortChecksum = 12;
    const RecordingFacts& facts = document.recording;
    const std::string segment = recording.segments.size() > 1 ? "segment " + std::to_string(facts.segment) + " of " +
                                                                    std::to_string(recording.segments.size()) + ", "
                                                              : "";
    const Facts shown{{"Station", facts.station},
                      {"Device", facts.recorder},
                      {"Start", facts.start},
                      {"Trigger", triggerOf(facts)},
                      {"Length", segment + formatNumber(facts.durationSeconds) + " s"},
                      {"Sample rate", formatNumber(facts.rateHz) + " Hz"},
                      {"Nominal frequency", formatNumber(facts.nominalHz, 4) + " Hz"},
                      {"Content", document.content},
                      {"File", baseNameOf(recording.source)},
                      {"SHA-256", facts.checksum.substr(0, shortChecksum)}};
    std::string items;
    for (const auto& [name, text] : shown) {
        if (!text.empty()) {
            items += element("div", "", element("dt", "", escaped(name)) + element("dd", "", escaped(text)));
        }
    }
    return element("dl", R"(class="facts")", items);
}

Facts recordingFacts(const Recording& recording) {
    Facts facts{{"Recording", baseNameOf(recording.source)}, {"Format", recording.format}};
    facts.insert(facts.end(), recording.facts.begin(), recording.facts.end());
    facts.emplace_back("Rate", recording.rateOrigin);
    for (const SourceFile& file : recording.files) {
        facts.emplace_back("SHA-256 of " + baseNameOf(file.name), file.checksum);
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

Facts settingFacts(const ResultDocument& document) {
    Facts facts{{"Handed over", counted(document.samples, "sample") + " at " + formatNumber(document.rateHz) + " Hz"},
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

/// How the figures of the summary are defined, as far as it has them.
std::string definitionsFor(const Measurement& recorded) {
    return "U, I: RMS without the mean. " +
           std::string(recorded.isCombined()
                           ? "P: mean of u i. Q1: of the fundamental, positive when the current lags. "
                             "S: U I; its total is the effective one of IEEE Std 1459. PF: P / S. "
                           : "") +
           "THD: by the library, in % of the fundamental.";
}

Section summarySection(const FullMeasurement& full, const std::vector<SummaryRow>& rows, const PageRemarks& remarks,
                       const Figures& figures) {
    const Measurement& recorded = full.asRecorded();
    const std::string table = summaryTable(rows, remarks.caveats, recorded.isThreePhase());
    return {"results", "Results",
            element("div", R"(class="beside")",
                    element("div", R"(class="answer")", table + caveatList(remarks.caveats)) +
                        (figures.phasors.empty() ? "" : element("div", R"(class="aside")", figures.phasors))) +
                listOf(R"(class="notices")", remarks.warnings) + listOf(R"(class="remarks")", remarks.others) +
                paragraph(R"(class="remark")", definitionsFor(recorded))};
}

/// The statistics that the summary does not have.
ResultTable peakTable(const std::string& name, const std::vector<SignalStatistics>& signals) {
    ResultTable table = signalTable(name, signals);
    for (std::size_t r = table.rows.size(); r-- > 0;) {
        if (table.rows[r].key == "mean" || table.rows[r].key == "rms") {
            table.rows.erase(table.rows.begin() + static_cast<std::ptrdiff_t>(r));
            table.cells.erase(table.cells.begin() + static_cast<std::ptrdiff_t>(r));
        }
    }
    return table;
}

/// What few people look for.
Section moreSection(const FullMeasurement& full, const FullResults& results, const ResultDocument& document,
                    const std::vector<std::string>& ofLibrary) {
    const std::string rate =
        full.notResampled ? ", from samples resampled to " + formatNumber(document.rateHz) + " Hz" : "";
    return {"more", "More figures",
            folded("Power by other methods, and the library's own figures",
                   element("div", R"(class="beside")",
                           resultTable(document, "parameters", "By the library" + rate) +
                               resultTable(document, "power", "Power by method" + rate)) +
                       listOf(R"(class="remarks")", ofLibrary)) +
                folded("All figures of rt305: powers, symmetrical components, angles, means",
                       resultTable(document, "derived", "Computed by rt305, from the samples as recorded")) +
                folded("Crest factors and peaks", tablesOf(results.signals, "without the mean", peakTable))};
}

Section eventSection(const std::optional<QualityResults>& quality, const Measurement& recorded,
                     const Figures& figures) {
    if (!quality) {
        const std::string obstacle = obstacleToQuality(recorded);
        return {"events", "Events",
                paragraph("", !recorded.hasVoltages() ? "Events are those of voltages, which are not recorded."
                              : !obstacle.empty()     ? "Events are not looked for: " + obstacle + "."
                                                      : "The voltages cannot be followed from cycle to cycle.")};
    }
    const auto cells = eventCells(*quality);
    const auto [factor, prefix] = metricPrefixFor(quality->settings.declaredVolts);
    const std::string caption = "Events; % of " + formatNumber(quality->settings.declaredVolts / factor, 5) + " " +
                                prefix + "V, the voltage before them; transients: of its crest";
    const std::string events = cells.empty()
                                   ? paragraph("", "There are no events.")
                                   : element("div", R"(class="beside")", htmlTexts(caption, cells) + figures.events);
    return {"events", "Events", events};
}

Section spectrumSection(const FullResults& results, const Figures& figures) {
    return {"lines", "Spectra", figures.spectra + tablesOf(results.spectra, "largest lines", spectrumTable)};
}

Section originSection(const Recording& recording, const FullMeasurement& full, const ResultDocument& document) {
    return {"origin", "Recording and settings",
            htmlFacts("Recording", recordingFacts(recording)) +
                element("div", R"(class="beside")",
                        htmlFacts("Channels", channelFacts(recording, full.measurement.assignment)) +
                            htmlFacts("Measurement", settingFacts(document))) +
                listOf(R"(class="remarks")", full.measurement.notes)};
}

std::string navigationOf(const std::vector<Section>& sections) {
    std::string links;
    for (const Section& section : sections) {
        links += section.content.empty() ? "" : element("a", "href=\"#" + std::string(section.id) + '"', section.title);
    }
    return links;
}

std::string htmlOf(const std::vector<Section>& sections) {
    std::string html;
    for (const Section& section : sections) {
        html += section.content.empty() ? ""
                                        : element("section", "id=\"" + std::string(section.id) + '"',
                                                  element("h2", "", section.title) + section.content);
    }
    return html;
}

}  // namespace

Report reportOf(const Recording& recording, FullMeasurement full, const FullResults& results, const PageTexts& texts,
                const LimitSet& limits, const std::string& pageName) {
    const ResultDocument document = fullDocument(recording, full, results);
    const auto summary = summaryOf(full, results);
    unsigned shownTopics = 0;
    for (const SummaryRow& row : summary) {
        shownTopics |= row.needsRemarks() ? row.topics : 0U;
    }
    const PageRemarks remarks =
        remarksOf(document, remarksOnOffsets(full, results.derived), full, shownTopics, recording);
    full.appendRest();
    std::optional<QualityResults> quality;
    if (const auto settings = qualitySettingsOf(recording, full)) {
        quality = analyse(full.asRecorded().samples, *settings, KeepTraces::yes);
    }
    const Figures figures = figuresOf(recording, full, results, quality, limits);
    const std::vector<Section> sections{summarySection(full, summary, remarks, figures),
                                        eventSection(quality, full.asRecorded(), figures),
                                        {"signals", "Waveforms", figures.waveforms},
                                        {"course", "RMS and frequency over time", figures.traces},
                                        {"harmonics", "Harmonics", figures.harmonics},
                                        spectrumSection(results, figures),
                                        moreSection(full, results, document, remarks.ofLibrary),
                                        originSection(recording, full, document)};
    const std::string file = baseNameOf(recording.source);
    PageTexts titled = texts;
    titled.title = texts.title.empty() ? "Measurement of " + file : texts.title;
    std::string page = htmlOf({.texts = titled,
                               .generator = std::string("rt305 ") + toolVersion + ", library " + document.library,
                               .skipLink = "<a class=\"skip\" href=\"#main\">Skip to the results</a>\n",
                               .facts = recordedFacts(recording, document) + "\n" +
                                        element("nav", R"(aria-label="Sections")", navigationOf(sections)),
                               .main = htmlOf(sections),
                               .scripts = plotScripts(figures.data) + '\n',
                               .scriptHashes = plotScriptHashes()});
    const std::string first = !remarks.caveats.empty()    ? remarks.caveats[0].text
                              : !remarks.warnings.empty() ? remarks.warnings[0]
                                                          : "";
    return {std::move(page), indexRow(pageName, file, document, summary, quality, first)};
}

}  // namespace rt305
