#include "output/result_table.h"

#include <algorithm>
#include <cassert>
#include <limits>

#include "base/text_table.h"

namespace rt305 {

namespace {

using Line = ResultTable::Line;
using Cell = ResultTable::Cell;
using TextCells = std::vector<std::string>;

/// The figures of one row or column, with as many decimals each.
TextCells textsOf(const std::vector<Cell>& figures, int mostDecimals) {
    std::vector<double> values;
    values.reserve(figures.size());
    for (const Cell& figure : figures) {
        values.push_back(figure.value_or(std::numeric_limits<double>::quiet_NaN()));
    }
    TextCells texts = TextTable::numbers(values, mostDecimals);
    for (std::size_t i = 0; i < figures.size(); ++i) {
        texts[i] = figures[i] ? texts[i] : "";
    }
    return texts;
}

/// The texts of all figures, by row; those that share a unit have the same number of decimals.
std::vector<TextCells> bodyOf(const ResultTable& table) {
    std::vector<TextCells> body(table.rows.size());
    if (!table.unitsByColumn) {
        for (std::size_t r = 0; r < body.size(); ++r) {
            body[r] = textsOf(table.cells[r], table.rows[r].mostDecimals);
            body[r].push_back(table.rows[r].unit);
        }
        return body;
    }
    for (std::size_t c = 0; c < table.columns.size(); ++c) {
        std::vector<Cell> figures;
        for (const auto& row : table.cells) {
            figures.push_back(row[c]);
        }
        const TextCells texts = textsOf(figures, table.columns[c].mostDecimals);
        for (std::size_t r = 0; r < body.size(); ++r) {
            body[r].push_back(texts[r]);
        }
    }
    return body;
}

std::string inBold(const std::string& line, bool styled) {
    return styled ? "\033[1m" + line + "\033[0m" : line;
}

}  // namespace

void ResultTable::addRow(Line line, std::vector<Cell> figures) {
    assert(figures.size() == columns.size());
    rows.push_back(std::move(line));
    cells.push_back(std::move(figures));
}

std::vector<TextCells> cellTexts(const ResultTable& table) {
    std::vector<TextCells> texts = bodyOf(table);
    for (std::size_t r = 0; r < texts.size(); ++r) {
        texts[r].insert(texts[r].begin(), table.rows[r].label);
    }
    TextCells heading{table.corner};
    std::transform(table.columns.begin(), table.columns.end(), std::back_inserter(heading),
                   [](const Line& column) { return column.label; });
    if (!table.unitsByColumn) {
        heading.emplace_back();
    }
    texts.insert(texts.begin(), std::move(heading));
    return texts;
}

std::string textOf(const ResultTable& table, bool styled) {
    const std::string figures(table.columns.size(), 'r');
    TextTable text(table.unitsByColumn ? "r" + figures : "l" + figures + "l");
    for (const TextCells& row : cellTexts(table)) {
        text.add(row);
    }
    std::string lines = text.text();
    const std::size_t firstEnd = lines.find('\n');
    lines.replace(0, firstEnd, inBold(lines.substr(0, firstEnd), styled));
    const std::string title = table.title.empty() ? "" : inBold(table.title, styled) + '\n';
    return title + lines + (table.footnote.empty() ? "" : table.footnote + '\n');
}

}  // namespace rt305
