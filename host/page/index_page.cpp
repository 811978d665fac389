#include "page/index_page.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "base/version.h"
#include "page/html.h"
#include "page/page_files.h"
#include "page/policy.h"

namespace rt305 {

namespace {

constexpr std::array<const char*, 8> quantities{"U", "I", "f", "P", "Q1", "PF", "THD_U", "THD_I"};

/// The total of a quantity, or its phases with slashes between them; "-" where all are missing.
std::string figuresOf(const std::vector<SummaryRow>& summary, const char* key) {
    const auto row =
        std::find_if(summary.begin(), summary.end(), [key](const SummaryRow& known) { return known.key == key; });
    if (row == summary.end()) {
        return "";
    }
    const auto [figures, unit] = textsOf(*row);
    if (row->figures[0]) {
        return figures[0] == "-" ? figures[0] : figures[0] + " " + unit;
    }
    std::string phases;
    bool isMissing = true;
    for (std::size_t i = 1; i < figures.size(); ++i) {
        isMissing = isMissing && (figures[i].empty() || figures[i] == "-");
        phases += (phases.empty() || figures[i].empty() ? "" : " / ") + figures[i];
    }
    return isMissing ? "-" : phases + " " + unit;
}

/// The number of events, and the kind of the first.
std::string eventsOf(const std::optional<QualityResults>& quality) {
    if (!quality) {
        return "";
    }
    return quality->events.empty() ? "none" : std::to_string(quality->events.size());
}

std::string cell(const std::string& text, std::string_view attributes = "") {
    return element("td", attributes, escaped(text));
}

}  // namespace

std::string indexRow(const std::string& pageName, const std::string& file, const ResultDocument& document,
                     const std::vector<SummaryRow>& summary, const std::optional<QualityResults>& quality,
                     const std::string& remark) {
    const std::string link = element("a", "href=\"" + escaped(linkTo(pageName)) + '"', escaped(file));
    std::string cells = element("th", R"(scope="row")", link);
    for (const std::string& text : {document.recording.station, document.recording.start}) {
        cells += cell(text, R"(class="text")");
    }
    cells += cell(formatNumber(document.recording.durationSeconds, 4) + " s");
    for (const char* const key : quantities) {
        cells += cell(figuresOf(summary, key));
    }
    return element("tr", "", cells + cell(eventsOf(quality)) + cell(remark, R"(class="text long")"));
}

std::string indexRowOfFailure(const std::string& file, const std::string& reason) {
    constexpr std::size_t otherColumns = 5 + quantities.size();
    return element(
        "tr", "",
        element("th", R"(scope="row")", escaped(file)) +
            cell("No page: " + reason, R"(class="text failure" colspan=")" + std::to_string(otherColumns) + '"'));
}

std::string indexPage(const std::string& rows, const PageTexts& texts) {
    std::string head;
    for (const char* const heading : {"File", "Station", "Start", "Length", "U", "I", "f", "P", "Q1", "PF", "THD of U",
                                      "THD of I", "Events", "First remark"}) {
        head += element("th", R"(scope="col")", heading);
    }
    const std::string title = texts.title.empty() ? "Measurements" : texts.title;
    const std::string style = styleFor(title) + "@page { size: landscape; }\n";
    return filled(
        page::index,
        {{"title", escaped(title)},
         {"texts", htmlOf(texts)},
         {"table", scrollingTable("Recordings", R"(class="index")",
                                  element("thead", "", element("tr", "", head)) + element("tbody", "", rows))},
         {"generator", escaped(std::string("rt305 ") + toolVersion)},
         {"style", style},
         {"style-hash", policyHashOf(style)}});
}

}  // namespace rt305
