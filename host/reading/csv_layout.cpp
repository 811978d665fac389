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

/// Consecutive lines that look like rows: from `first` up to `end`.
struct Run {
    char separator = ',';
    std::size_t first = 0;
    std::size_t end = 0;
    std::size_t width = 0;
    double numericShare = 0.0;  // of the cells in the last line

    std::size_t length() const { return end - first; }
};

/// The longest run of lines of equal width, at least `narrowest` cells, with a number in each line.
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

/// The longest run with any separator; of equally long ones, the one with more numbers. A single column is found only
/// when no separator gives two.
Run findRun(const std::vector<Line>& lines) {
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

std::string_view withoutBrackets(std::string_view cell) {
    const bool inBrackets = cell.size() > 2 && (cell.front() == '(' || cell.front() == '[');
    return inBrackets ? cell.substr(1, cell.size() - 2) : cell;
}

bool isUnitLike(std::string_view cell) {
    static constexpr std::array<std::string_view, 8> others{"", "-", "hz", "deg", "w", "var", "va", "%"};
    const std::string_view unit = withoutBrackets(cell);
    return std::find(others.begin(), others.end(), lowerCase(unit)) != others.end() ||
           unitOf(unit).quantity != Quantity::other;
}

std::vector<std::string> unitsOf(const std::vector<std::string_view>& cells) {
    std::vector<std::string> units(cells.size());
    std::transform(cells.begin(), cells.end(), units.begin(),
                   [](std::string_view cell) { return cell == "-" ? "" : withoutBrackets(cell); });
    return units;
}

/// Whether a row has numbers, or nothing, wherever the model has numbers.
bool hasShapeOf(const std::vector<std::string_view>& cells, const std::vector<std::string_view>& model,
                char separator) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (isNumeric(model[i], separator) && !cells[i].empty() && !isNumeric(cells[i], separator)) {
            return false;
        }
    }
    return true;
}

/// Words in front of a rate in Hz, or of the time between samples in s.
struct RateWords {
    std::string_view words;  // in lower case
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

/// The words after `start` in a line; separators and punctuation count as blanks.
std::string valueText(std::string_view line, std::size_t start, char separator) {
    std::string text(line.substr(start));
    std::replace_if(
        text.begin(), text.end(),
        [separator](char c) {
            return c == separator || std::string_view("\t:=;\"()[]").find(c) != std::string_view::npos;
        },
        ' ');
    return text;
}

/// The first number in the words, and the factor of the unit before or after it: "10 kHz", "us 100", "12.8kHz".
struct RateValue {
    std::optional<double> number{};
    double factor = 1.0;
};

RateValue rateValueIn(std::string_view words, bool isInterval) {
    RateValue value;
    for (std::string_view word : cellsOf(trimmed(words), ' ')) {
        const std::size_t unitStart = std::min(word.find_first_not_of("0123456789.,+-eE"), word.size());
        if (const auto number = parseNumber(word.substr(0, unitStart), true); number && !value.number) {
            value.number = number;
            word.remove_prefix(unitStart);
        }
        if (isInterval && unitOf(word).quantity == Quantity::time) {
            value.factor = unitOf(word).factor;
        } else if (!isInterval) {
            value.factor = factorOfRateUnit(lowerCase(word)).value_or(value.factor);
        }
    }
    return value;
}

/// The rate given by a line such as "Sample rate: 10 kHz" or "Sampling interval [us];100".
std::optional<double> rateIn(std::string_view line, char separator) {
    std::string lower = lowerCase(line);
    std::replace(lower.begin(), lower.end(), '_', ' ');
    const auto* const found =
        std::find_if(std::begin(rateWords), std::end(rateWords),
                     [&lower](const RateWords& known) { return lower.find(known.words) != std::string::npos; });
    if (found == std::end(rateWords)) {
        return std::nullopt;
    }
    const std::string words = valueText(line, lower.find(found->words) + found->words.size(), separator);
    const auto [number, factor] = rateValueIn(words, found->isInterval);
    if (!number || !(*number * factor > 0.0)) {
        return std::nullopt;
    }
    return found->isInterval ? 1.0 / (*number * factor) : *number * factor;
}

/// Finds the layout of a text whose rows of numbers are known to be among its first lines.
class LayoutFinder {
public:
    LayoutFinder(const std::vector<Line>& lines, const Run& run)
        : lines_(lines), run_(run), lastRow_(cellsAt(run.end - 1)), width_(run.width - (endsWithSeparator() ? 1 : 0)) {}

    CsvLayout find() const {
        CsvLayout layout;
        layout.separator = run_.separator;
        layout.width = width_;
        auto [firstRow, headings] = findTop();
        layout.names = std::move(headings.names);
        layout.units = std::move(headings.units);
        layout.firstLine = lines_[firstRow].number;
        layout.isNote.assign(width_, false);
        for (std::size_t i = 0; layout.names.empty() && i < width_; ++i) {
            layout.isNote[i] = lastRow_[i].empty();
        }
        const bool hasNotes = std::find(layout.isNote.begin(), layout.isNote.end(), true) != layout.isNote.end();
        layout.rateHz = rateAbove(hasNotes ? run_.end : firstRow);
        return layout;
    }

private:
    struct Headings {
        std::vector<std::string> names;
        std::vector<std::string> units;
    };

    struct Top {
        std::size_t firstRow;
        Headings headings;
    };

    std::vector<std::string_view> cellsAt(std::size_t i) const { return cellsOf(lines_[i].text, run_.separator); }

    /// Some loggers end every row with a separator: then the last column is empty.
    bool endsWithSeparator() const {
        for (std::size_t i = run_.first; i < run_.end; ++i) {
            if (!cellsAt(i).back().empty()) {
                return false;
            }
        }
        return run_.width > 1;
    }

    /// The headings and the first row below them. Without headings above the run, its first lines may be settings with
    /// as many cells as a row: those with text where the last row has numbers are skipped, or are the headings.
    Top findTop() const {
        Top top{run_.first, headingsAbove(run_.first)};
        while (top.headings.names.empty() && top.firstRow + 1 < run_.end &&
               !hasShapeOf(cellsAt(top.firstRow), lastRow_, run_.separator)) {
            ++top.firstRow;
            top.headings = headingsAbove(top.firstRow);
        }
        return top;
    }

    /// The last line of names before `end`, and the last line of units between it and `end`.
    Headings headingsAbove(std::size_t end) const {
        Headings headings;
        for (std::size_t i = end; i-- > 0 && headings.names.empty();) {
            const auto cells = cellsOfRow(withoutCommentMark(lines_[i].text, run_.separator), run_.separator, width_);
            if (cells.size() != width_ || std::any_of(cells.begin(), cells.end(), [&](auto c) { return isValue(c); })) {
                continue;
            }
            const bool unitsOnly = std::all_of(cells.begin(), cells.end(), isUnitLike);
            const bool countsOnly = std::all_of(cells.begin(), cells.end(), parseCount);
            if (unitsOnly && headings.units.empty()) {
                headings.units = unitsOf(cells);
            } else if (!unitsOnly && !countsOnly) {
                headings.names.assign(cells.begin(), cells.end());
            }
        }
        if (headings.names.empty()) {  // what looks like units alone, such as "V;A", are names
            std::swap(headings.names, headings.units);
        }
        return headings;
    }

    /// Whole numbers may be names of columns; any other number is a sample.
    bool isValue(std::string_view cell) const { return isNumeric(cell, run_.separator) && !parseCount(cell); }

    std::optional<double> rateAbove(std::size_t end) const {
        std::optional<double> rateHz;
        for (std::size_t i = 0; !rateHz && i < end; ++i) {
            rateHz = rateIn(lines_[i].text, run_.separator);
        }
        return rateHz;
    }

    const std::vector<Line>& lines_;
    Run run_;
    std::vector<std::string_view> lastRow_;
    std::size_t width_;  // cells of a row, without an empty one after a separator at the end
};

}  // namespace

std::vector<std::string_view> cellsOf(std::string_view line, char separator) {
    std::vector<std::string_view> cells = split(separator == ' ' ? trimmed(line) : line, separator);
    if (separator == ' ') {
        cells.erase(std::remove(cells.begin(), cells.end(), std::string_view{}), cells.end());
    }
    std::transform(cells.begin(), cells.end(), cells.begin(), unquoted);
    return cells;
}

std::vector<std::string_view> cellsOfRow(std::string_view line, char separator, std::size_t width) {
    auto cells = cellsOf(line, separator);
    if (cells.size() == width + 1 && cells.back().empty()) {
        cells.pop_back();
    }
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
    const Run run = findRun(lines);
    return run.length() == 0 ? CsvLayout{} : LayoutFinder(lines, run).find();
}

}  // namespace rt305
