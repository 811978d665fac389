#include "page/html.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>

#include "base/text.h"
#include "base/text_encoding.h"

namespace rt305 {

namespace {

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

/// The table with a prefix for voltages, one for currents and one for powers, by the largest.
ResultTable withPrefixes(ResultTable table) {
    static constexpr std::string_view kinds[] = {" V ", " A ", " W VA var "};
    std::array<double, std::size(kinds)> largest{};
    const auto kindOf = [&table](std::size_t row) {
        const auto* const kind = std::find_if(std::begin(kinds), std::end(kinds), [&](std::string_view units) {
            return units.find(' ' + table.rows[row].unit + ' ') != std::string_view::npos;
        });
        return static_cast<std::size_t>(kind - std::begin(kinds));
    };
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        for (const ResultTable::Cell& figure : table.cells[r]) {
            if (const std::size_t kind = kindOf(r); kind < largest.size()) {
                largest[kind] = std::fmax(largest[kind], std::fabs(figure.value_or(0.0)));
            }
        }
    }
    for (std::size_t r = 0; r < table.rows.size() && !table.unitsByColumn; ++r) {
        const std::size_t kind = kindOf(r);
        const auto [factor, symbol] = kind < largest.size() ? metricPrefixFor(largest[kind]) : MetricPrefix{};
        table.rows[r].unit.insert(0, symbol);
        for (ResultTable::Cell& figure : table.cells[r]) {
            figure = figure ? ResultTable::Cell(*figure / factor) : figure;
        }
    }
    return table;
}

}  // namespace

std::string folded(const std::string& heading, const std::string& content) {
    return element("details", "", element("summary", "", escaped(heading)) + content);
}

std::string scrollingTable(const std::string& caption, std::string_view attributes, const std::string& content,
                           const std::string& footer) {
    const std::string table = element("table", attributes, element("caption", "", escaped(caption)) + content);
    const std::string scrolling =
        element("div", R"(class="scroll" role="region" tabindex="0" aria-label=")" + escaped(caption) + '"', table);
    return footer.empty() ? scrolling : element("div", "", scrolling + footer);
}

std::string escaped(std::string_view text) {
    std::string html;
    for (const char c : toUtf8(text)) {
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

std::string linkTo(std::string_view file) {
    static constexpr std::string_view plain = "-._~";
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string link = "./";  // so that no name looks like a scheme
    for (const char c : file) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = (byte < 0x80 && std::isalnum(byte) != 0) || plain.find(c) != std::string_view::npos;
        link += isPlain ? std::string(1, c) : std::string{'%', digits[byte / 16], digits[byte % 16]};
    }
    return link;
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
    const auto rows = cellTexts(withPrefixes(table));
    std::string head;
    std::string body;
    for (std::size_t r = 0; r < rows.size(); ++r) {
        (r == 0 ? head : body) += htmlRow(rows[r], r == 0);
    }
    const std::string footnote =
        table.footnote.empty() ? "" : element("p", R"(class="remark")", escaped(table.footnote));
    return scrollingTable(caption, table.unitsByColumn ? "" : R"(class="with-units")",
                          element("thead", "", head) + element("tbody", "", body), footnote);
}

std::string htmlTexts(const std::string& caption, const std::vector<std::vector<std::string>>& rows) {
    std::string body;
    for (std::size_t r = 1; r < rows.size(); ++r) {
        body += htmlRow(rows[r], false);
    }
    return scrollingTable(caption, "", element("thead", "", htmlRow(rows.at(0), true)) + element("tbody", "", body));
}

std::string htmlFacts(const std::string& caption, const std::vector<std::pair<std::string, std::string>>& facts) {
    std::string rows;
    for (const auto& [name, text] : facts) {
        rows += element("tr", "", element("th", R"(scope="row")", escaped(name)) + element("td", "", escaped(text)));
    }
    return scrollingTable(caption, R"(class="texts")", element("tbody", "", rows));
}

}  // namespace rt305
