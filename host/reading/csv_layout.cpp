#include "reading/csv_layout.h"

#include <algorithm>
#include <array>

#include "base/lines.h"
#include "base/text.h"
#include "base/time_stamp.h"
#include "base/units.h"

namespace rt305 {

namespace {

constexpr std::size_t linesLookedAt = 1000;

struct Line {
    std::string_view text;
    std::size_t number;
};

std::string_view unquoted(std::string_view cell) {
    const bool hasQuotes = cell.size() >= 2 && cell.front() == '"' && cell.back() == '"';
    return hasQuotes ? trimmed(cell.substr(1, cell.size() - 2)) : cell;
}

bool isNumeric(std::string_view cell, char separator) {
    return parseNumber(cell, separator != ',') || (cell.find(':') != std::string_view::npos && parseTimeStamp(cell));
}

std::size_t countNumeric(const std::vector<std::string_view>& cells, char separator) {
    return static_cast<std::size_t>(
        std::count_if(cells.begin(), cells.end(), [=](std::string_view cell) { return isNumeric(cell, separator); }));
}

/// Lines that look like rows, from `first` up to `end`.
struct Run {
    char separator = ',';
    std::size_t first = 0;
    std::size_t end = 0;
    std::size_t width = 0;
    double numericShare = 0.0;  // of the last line's cells

    std::size_t length() const { return end - first; }
};

/// The longest run of lines with one width of at least `narrowest` cells, each with a number.
Run longestRun(const std::vector<Line>& lines, char separator, std::size_t narrowest) {
    Run longest;
    Run run;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const auto cells = cellsOf(lines[i].text, separator);
        const std::size_t numeric = isComment(lines[i].text, separator) ? 0 : countNumeric(cells, separator);
        if (numeric == 0 || cells.size() < narrowest) {
            run = {};
            continue;
        }
        if (cells.size() != run.width) {
            run = {separator, i, i, cells.size(), 0.0};
        }
        run.end = i + 1;
        run.numericShare = static_cast<double>(numeric) / static_cast<double>(cells.size());
        longest = run.length() > longest.length() ? run : longest;
    }
    return longest;
}

Run findRows(const std::vector<Line>& lines) {
    Run best;
    for (const char separator : {';', '\t', ',', ' '}) {
        const Run run = longestRun(lines, separator, 2);
        if (run.length() > best.length() || (run.length() == best.length() && run.numericShare > best.numericShare)) {
            best = run;
        }
    }
    return best.length() > 0 ? best : longestRun(lines, ',', 1);
}

std::string_view withoutCommentMark(std::string_view line, char separator) {
    line = trimmed(line);
    if (!isComment(line, separator)) {
        return line;
    }
    return trimmed(line.substr(std::min(line.find_first_not_of("#%/;"), line.size())));
}

bool isUnitLike(std::string_view cell) {
    if (cell.size() > 2 && (cell.front() == '(' || cell.front() == '[')) {
        cell = cell.substr(1, cell.size() - 2);
    }
    static constexpr std::array<std::string_view, 8> others{"", "-", "hz", "deg", "w", "var", "va", "%"};
    return std::find(others.begin(), others.end(), lowerCase(cell)) != others.end() ||
           unitOf(cell).quantity != Quantity::other;
}

std::vector<std::string> unitsOf(const std::vector<std::string_view>& cells) {
    std::vector<std::string> units;
    for (const std::string_view cell : cells) {
        const bool inBrackets = cell.size() > 2 && (cell.front() == '(' || cell.front() == '[');
        units.emplace_back(inBrackets ? cell.substr(1, cell.size() - 2) : cell == "-" ? "" : cell);
    }
    return units;
}

/// Whether each cell is empty, a number or a text as the model's is.
bool hasShapeOf(const std::vector<std::string_view>& cells, const std::vector<std::string_view>& model,
                char separator) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (isNumeric(model[i], separator) && !cells[i].empty() && !isNumeric(cells[i], separator)) {
            return false;
        }
    }
    return true;
}

/// Above the rows: what the columns are named, and their units.
class Header {
public:
    Header(const std::vector<Line>& lines, CsvLayout& layout) : lines_(lines), layout_(layout) {}

    /// Looks upward from the line before `end`.
    void find(std::size_t end) {
        for (std::size_t i = end; i-- > 0 && layout_.names.empty();) {
            auto cells = cellsOf(withoutCommentMark(lines_[i].text, layout_.separator), layout_.separator);
            if (cells.size() == layout_.width + 1 && cells.back().empty()) {
                cells.pop_back();
            }
            const bool fits = cells.size() == layout_.width && layout_.width > 0;
            if (fits && std::none_of(cells.begin(), cells.end(), [&](auto cell) { return isValue(cell); })) {
                take(cells);
            }
        }
        if (layout_.names.empty()) {  // a single line of units is one of names
            std::swap(layout_.names, layout_.units);
        }
    }

private:
    /// Columns may be named by numbers, but not by what looks like a sample.
    bool isValue(std::string_view cell) const { return isNumeric(cell, layout_.separator) && !parseCount(cell); }

    void take(const std::vector<std::string_view>& cells) {
        const bool unitsOnly = std::all_of(cells.begin(), cells.end(), isUnitLike);
        const bool countsOnly = std::all_of(cells.begin(), cells.end(), parseCount);
        if (unitsOnly && layout_.units.empty()) {
            layout_.units = unitsOf(cells);
        } else if (!unitsOnly && !countsOnly) {
            layout_.names.assign(cells.begin(), cells.end());
        }
    }

    const std::vector<Line>& lines_;
    CsvLayout& layout_;
};

/// What a number behind these words means: a rate in Hz, or the time between samples in s.
struct RateWords {
    std::string_view words;  // in lower case, with blanks
    bool isInterval;
};

constexpr RateWords rateWords[] = {
    {"sample rate", false},        {"samplerate", false},         {"sampling rate", false},
    {"samplingrate", false},       {"sampling frequency", false}, {"sample frequency", false},
    {"samples per second", false}, {"sample interval", true},     {"sampling interval", true},
    {"sampling period", true},     {"sample period", true},       {"sampleinterval", true}};

std::optional<double> factorOfRateUnit(const std::string& word) {
    static constexpr std::pair<std::string_view, double> units[] = {{"hz", 1.0},   {"khz", 1e3},  {"mhz", 1e6},
                                                                    {"s/s", 1.0},  {"ks/s", 1e3}, {"ms/s", 1e6},
                                                                    {"sa/s", 1.0}, {"ksa/s", 1e3}};
    for (const auto& [name, factor] : units) {
        if (word == name) {
            return factor;
        }
    }
    return std::nullopt;
}

/// The rate that a line such as "Sample rate: 10 kHz" or "Sampling interval [us];100" tells.
std::optional<double> rateIn(std::string_view line, char separator) {
    std::string lower = lowerCase(line);
    std::replace(lower.begin(), lower.end(), '_', ' ');
    const auto* const found =
        std::find_if(std::begin(rateWords), std::end(rateWords),
                     [&lower](const RateWords& known) { return lower.find(known.words) != std::string::npos; });
    if (found == std::end(rateWords)) {
        return std::nullopt;
    }
    std::string rest(line.substr(lower.find(found->words) + found->words.size()));
    std::replace_if(
        rest.begin(), rest.end(),
        [separator](char c) {
            return c == separator || std::string_view("\t:=;\"()[]").find(c) != std::string_view::npos;
        },
        ' ');
    std::optional<double> number;
    double factor = 1.0;
    for (std::string_view word : cellsOf(trimmed(rest), ' ')) {
        const std::size_t unitStart = std::min(word.find_first_not_of("0123456789.,+-eE"), word.size());
        if (const auto value = parseNumber(word.substr(0, unitStart), true); value && !number) {
            number = value;
            word.remove_prefix(unitStart);
        }
        if (found->isInterval && unitOf(word).quantity == Quantity::time) {
            factor = unitOf(word).factor;
        } else if (!found->isInterval) {
            factor = factorOfRateUnit(lowerCase(word)).value_or(factor);
        }
    }
    if (!number || !(*number * factor > 0.0)) {
        return std::nullopt;
    }
    return found->isInterval ? 1.0 / (*number * factor) : *number * factor;
}

}  // namespace

std::vector<std::string_view> cellsOf(std::string_view line, char separator) {
    std::vector<std::string_view> cells = split(separator == ' ' ? trimmed(line) : line, separator);
    if (separator == ' ') {
        cells.erase(std::remove(cells.begin(), cells.end(), std::string_view{}), cells.end());
    }
    std::transform(cells.begin(), cells.end(), cells.begin(), unquoted);
    return cells;
}

bool isComment(std::string_view line, char separator) {
    line = trimmed(line);
    return line.substr(0, 1) == "#" || line.substr(0, 1) == "%" || line.substr(0, 2) == "//" ||
           (line.substr(0, 1) == ";" && separator != ';');
}

CsvLayout layoutOf(std::string_view text) {
    std::vector<Line> lines;
    for (Lines all(text); lines.size() < linesLookedAt && all.nextWithText();) {
        lines.push_back({all.line(), all.number()});
    }
    Run rows = findRows(lines);
    CsvLayout layout;
    layout.separator = rows.separator;
    layout.width = rows.width;
    if (rows.length() == 0) {
        return layout;
    }
    const auto cellsAt = [&](std::size_t i) { return cellsOf(lines[i].text, layout.separator); };
    const auto last = cellsAt(rows.end - 1);
    const auto isEmptyBelow = [&](std::size_t column) {
        return std::all_of(lines.begin() + static_cast<std::ptrdiff_t>(rows.first),
                           lines.begin() + static_cast<std::ptrdiff_t>(rows.end),
                           [&](const Line& line) { return cellsOf(line.text, layout.separator)[column].empty(); });
    };
    if (layout.width > 1 && isEmptyBelow(layout.width - 1)) {
        --layout.width;  // some loggers end every row with a separator
    }
    Header(lines, layout).find(rows.first);
    while (layout.names.empty() && rows.length() > 1 && !hasShapeOf(cellsAt(rows.first), last, layout.separator)) {
        ++rows.first;  // a line of settings that is as wide as a row
        Header(lines, layout).find(rows.first);
    }
    layout.firstLine = lines[rows.first].number;
    layout.isNote.assign(layout.width, false);
    for (std::size_t i = 0; layout.names.empty() && i < layout.width; ++i) {
        layout.isNote[i] = last[i].empty();
    }
    const bool hasNotes = std::find(layout.isNote.begin(), layout.isNote.end(), true) != layout.isNote.end();
    for (std::size_t i = 0; !layout.rateHz && i < (hasNotes ? rows.end : rows.first); ++i) {
        layout.rateHz = rateIn(lines[i].text, layout.separator);
    }
    return layout;
}

}  // namespace rt305
