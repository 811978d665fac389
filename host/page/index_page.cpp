#include "page/index_page.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "base/version.h"
#include "page/html.h"

namespace rt305 {

namespace {

constexpr std::array<const char*, 8> quantities{"U", "I", "f", "P", "Q1", "PF", "THD_U", "THD_I"};

/// The total of a quantity, or its phases below each other; "-" where all are missing. As HTML.
std::string figuresOf(const std::vector<SummaryRow>& summary, const char* key) {
    const auto row =
        std::find_if(summary.begin(), summary.end(), [key](const SummaryRow& known) { return known.key == key; });
    if (row == summary.end()) {
        return "";
    }
    const auto [figures, unit] = textsOf(*row);
    std::string lines;
    bool isMissing = true;
    for (std::size_t i = row->figures[0] ? 0 : 1; i < (row->figures[0] ? 1 : figures.size()); ++i) {
        isMissing = isMissing && (figures[i].empty() || figures[i] == "-");
        lines += (lines.empty() || figures[i].empty() ? "" : "<br>") + figures[i];
        lines += figures[i].empty() || unit.empty() ? "" : " " + unit;
    }
    return isMissing ? "-" : lines;
}

std::string eventsOf(const std::optional<QualityResults>& quality) {
    if (!quality) {
        return "";
    }
    return quality->events.empty() ? "none" : std::to_string(quality->events.size());
}

/// The first clause of a remark.
std::string briefly(const std::string& remark) {
    const std::size_t end = remark.find(';');
    return end == std::string::npos ? remark : remark.substr(0, end) + ".";
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
    const std::string second = document.recording.start.substr(0, document.recording.start.find('.'));
    cells += cell(document.recording.station, R"(class="text")") + cell(second, R"(class="text time")");
    cells += cell(formatNumber(document.recording.durationSeconds, 4) + " s");
    for (const char* const key : quantities) {
        cells += element("td", "", figuresOf(summary, key));
    }
    return element("tr", "", cells + cell(eventsOf(quality)) + cell(briefly(remark), R"(class="text long")"));
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
    for (const std::string_view heading : {"File", "Station", "Start", "Length", "U", "I", "f", "P", "Q1", "PF",
                                           "THD of U", "THD of I", "Events", "First remark"}) {
        const bool ofText = heading == "Station" || heading == "Start" || heading == "First remark";
        head += element("th", ofText ? R"(class="text" scope="col")" : R"(scope="col")", heading);
    }
    PageTexts titled = texts;
    titled.title = texts.title.empty() ? "Measurements" : texts.title;
    const std::string table = scrollingTable(
        "Recordings", R"(class="index")", element("thead", "", element("tr", "", head)) + element("tbody", "", rows));
    const std::string remark = element("p", R"(class="remark")",
                                       "Voltages, currents and THD are those of the phases a, b and c, powers and the "
                                       "power factor those of all. The page of a recording says what to know about "
                                       "each figure.");
    return htmlOf({.texts = titled,
                   .generator = std::string("rt305 ") + toolVersion,
                   .style = "@page { size: landscape; }\n",
                   .bodyAttributes = R"(class="wide")",
                   .main = table + remark});
}

}  // namespace rt305
