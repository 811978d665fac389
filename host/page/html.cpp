#include "page/html.h"

#include "base/text.h"

namespace rt305 {

namespace {

/// A table that scrolls sideways when it is wide, by keyboard as well.
std::string scrollable(const std::string& caption, std::string_view classes, const std::string& content,
                       const std::string& footer = "") {
    const std::string table = element("table", classes, element("caption", "", escaped(caption)) + content);
    return element("div", R"(class="scroll" role="region" tabindex="0" aria-label=")" + escaped(caption) + '"',
                   table + footer);
}

/// A row of a table. The cells of the first row and the first cell of the other rows are headings.
std::string htmlRow(const std::vector<std::string>& row, bool isFirst) {
    std::string cells;
    for (std::size_t c = 0; c < row.size(); ++c) {
        const std::string text = escaped(trimmed(row[c]));
        const bool isName = (isFirst || c == 0) && !text.empty();
        cells += isName ? element("th", isFirst ? R"(scope="col")" : R"(scope="row")", text) : element("td", "", text);
    }
    return element("tr", "", cells);
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string html;
    for (const char c : text) {
        switch (c) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            default:
                html += c == '\t' || static_cast<unsigned char>(c) >= ' ' ? c : ' ';
        }
    }
    return html;
}

std::string element(std::string_view tag, std::string_view attributes, std::string_view content) {
    std::string html = "<" + std::string(tag);
    html.append(attributes.empty() ? "" : " ").append(attributes).append(">").append(content);
    return html.append("</").append(tag).append(">\n");
}

std::string filled(std::string_view text, const std::map<std::string_view, std::string>& values) {
    std::string result;
    for (std::size_t open; (open = text.find("{{")) != std::string_view::npos;) {
        const std::size_t close = text.find("}}", open);
        result.append(text.substr(0, open)).append(values.at(text.substr(open + 2, close - open - 2)));
        text.remove_prefix(close + 2);
    }
    return result.append(text);
}

std::string htmlTable(const std::string& caption, const ResultTable& table) {
    const auto rows = cellTexts(table);
    std::string head;
    std::string body;
    for (std::size_t r = 0; r < rows.size(); ++r) {
        (r == 0 ? head : body) += htmlRow(rows[r], r == 0);
    }
    const std::string footnote =
        table.footnote.empty() ? "" : element("p", R"(class="remark")", escaped(table.footnote));
    return scrollable(caption, table.unitsByColumn ? "" : R"(class="with-units")",
                      element("thead", "", head) + element("tbody", "", body), footnote);
}

std::string htmlTexts(const std::string& caption, const std::vector<std::vector<std::string>>& rows) {
    std::string body;
    for (std::size_t r = 1; r < rows.size(); ++r) {
        body += htmlRow(rows[r], false);
    }
    return scrollable(caption, "", element("thead", "", htmlRow(rows.at(0), true)) + element("tbody", "", body));
}

std::string htmlFacts(const std::string& caption, const std::vector<std::pair<std::string, std::string>>& facts) {
    std::string rows;
    for (const auto& [name, text] : facts) {
        rows += element("tr", "", element("th", R"(scope="row")", escaped(name)) + element("td", "", escaped(text)));
    }
    return scrollable(caption, R"(class="texts")", element("tbody", "", rows));
}

}  // namespace rt305
