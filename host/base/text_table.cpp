#include "base/text_table.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "base/text.h"
#include "base/text_encoding.h"

namespace rt305 {

namespace {

constexpr int shownDigits = 6;
constexpr double fixedLimit = 1e12;  // larger numbers are shown with an exponent

/// The width of a UTF-8 text in characters: all bytes except continuation bytes.
std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

}  // namespace

std::vector<std::string> TextTable::numbers(const std::vector<double>& values, int mostDecimals) {
    double largest = 0.0;
    for (const double value : values) {
        largest = std::isnan(value) ? largest : std::max(largest, std::fabs(value));
    }
    const int decimals = std::min(decimalsFor(largest, shownDigits), mostDecimals);
    std::vector<std::string> cells;
    for (const double value : values) {
        const bool fits = std::isnan(value) || largest < fixedLimit;
        cells.push_back(fits ? formatFixed(value, decimals) : formatNumber(value));
    }
    return cells;
}

void TextTable::add(const std::vector<std::string>& cells) {
    constexpr std::size_t longestCell = 400;
    std::vector<std::string>& row = rows_.emplace_back();
    for (const std::string& cell : cells) {
        row.push_back(shown(cell, longestCell));
    }
}

std::string TextTable::text() const {
    std::vector<std::size_t> widths(alignment_.size());
    for (const auto& row : rows_) {
        assert(row.size() == alignment_.size());
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], widthOf(row[i]));
        }
    }
    std::string lines;
    for (const auto& row : rows_) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string padding(widths[i] - widthOf(row[i]), ' ');
            line += i == 0 ? "" : "  ";
            line += alignment_[i] == 'r' ? padding + row[i] : row[i] + padding;
        }
        lines += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }
    return lines;
}

}  // namespace rt305
