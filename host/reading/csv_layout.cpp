#include "reading/csv_layout.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/limits.h"
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

/// The end of the cell at the start of a line. A quote that nothing closes is a character like any other.
std::size_t cellEnd(std::string_view line, char separator) {
    std::size_t close = 0;
    const std::size_t open = line.find_first_not_of(' ');
    if (open != std::string_view::npos && line[open] == '"') {
        close = line.find('"', open + 1);
        while (close < line.size() && line.substr(close + 1, 1) == "\"") {
            close = line.find('"', close + 2);
        }
    }
    return std::min(line.find(separator, close == std::string_view::npos ? 0 : close), line.size());
}

/// Like `split`, but without the quotes around cells, which may hold separators.
std::vector<std::string_view> splitWithQuotes(std::string_view line, char separator) {
    std::vector<std::string_view> cells;
    for (std::size_t start = 0; start <= line.size();) {
        const std::size_t length = cellEnd(line.substr(start), separator);
        cells.push_back(unquoted(trimmed(line.substr(start, length))));
        start += length + 1;
    }
    return cells;
}

bool isNumeric(std::string_view cell) {
    return parseNumber(cell, Comma::decimalSign) || parseNumber(cell, Comma::betweenGroups) ||
           (cell.find(':') != std::string_view::npos && parseTimeStamp(cell));
}

std::size_t countNumeric(const std::vector<std::string_view>& cells) {
    return static_cast<std::size_t>(std::count_if(cells.begin(), cells.end(), isNumeric));
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
        const std::size_t numeric = isComment(lines[i].text, separator) ? 0 : countNumeric(cells);
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

/// "Sequence" stands where a column of row numbers has no unit.
bool isUnitLike(std::string_view cell) {
    static constexpr std::array<std::string_view, 9> others{"", "-", "hz", "deg", "w", "var", "va", "%", "sequence"};
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
bool hasShapeOf(const std::vector<std::string_view>& cells, const std::vector<std::string_view>& model) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (isNumeric(model[i]) && !cells[i].empty() && !isNumeric(cells[i])) {
            return false;
        }
    }
    return true;
}

/// Whether a row has a unit, and no number, wherever the model has numbers.
bool hasUnitsFor(const std::vector<std::string_view>& model, const std::vector<std::string_view>& cells) {
    bool hasUnit = false;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (isNumeric(model[i])) {
            if (isNumeric(cells[i]) || !isUnitLike(cells[i])) {
                return false;
            }
            hasUnit |= cells[i].size() > 1 && cells[i] != "--";
        }
    }
    return hasUnit;
}

/// Names in the file have no quotes around them; those inside are written twice.
std::vector<std::string> namesOf(const std::vector<std::string_view>& cells) {
    std::vector<std::string> names(cells.begin(), cells.end());
    for (std::string& name : names) {
        for (std::size_t at = name.find("\"\""); at != std::string::npos; at = name.find("\"\"", at + 1)) {
            name.erase(at, 1);
        }
    }
    return names;
}

/// What the first cell of a line above the rows says that its other cells are.
enum class LineContent { other, names, units, timeUnit };

LineContent contentOf(const std::vector<std::string_view>& cells) {
    static constexpr std::pair<std::string_view, LineContent> labels[] = {
        {"label", LineContent::names},          {"labels", LineContent::names},
        {"source", LineContent::names},         {"channel names", LineContent::names},
        {"unit", LineContent::units},           {"units", LineContent::units},
        {"vertical units", LineContent::units}, {"horizontal units", LineContent::timeUnit}};
    const std::string first = cells.size() < 2 ? "" : lowerCase(cells[0]);
    const auto* const found = std::find_if(std::begin(labels), std::end(labels),
                                           [&first](const auto& label) { return label.first == first; });
    return found == std::end(labels) ? LineContent::other : found->second;
}

/// Finds out what commas in the numbers of a run are.
class CommaFinder {
public:
    void look(std::string_view cell) {
        const std::size_t comma = cell.find(',');
        if (comma == std::string_view::npos) {
            hasPoint_ |= cell.find('.') != std::string_view::npos && parseNumber(cell);
        } else if (!parseNumber(cell, Comma::betweenGroups)) {
            hasDecimalComma_ |= parseNumber(cell, Comma::decimalSign).has_value();
        } else if (!parseNumber(cell, Comma::decimalSign)) {
            hasGroups_ = true;  // a point or another comma follows
        } else {
            doubtful_ = cell;
        }
    }

    void decide(CsvLayout& layout) const {
        const bool isQuoted = layout.separator == ',';
        const bool areGroups = !hasDecimalComma_ && (hasGroups_ || (isQuoted && hasPoint_));
        layout.comma = areGroups ? Comma::betweenGroups : Comma::decimalSign;
        if (isQuoted && !hasDecimalComma_ && !areGroups) {
            layout.doubtfulNumber = doubtful_;
        }
    }

private:
    bool hasPoint_ = false;
    bool hasDecimalComma_ = false;
    bool hasGroups_ = false;
    std::string_view doubtful_;  // with either kind of comma
};

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
        if (const auto number = parseNumber(word.substr(0, unitStart), Comma::decimalSign); number && !value.number) {
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
        Top top = findTop();
        layout.names = std::move(top.headings.names);
        layout.units = std::move(top.headings.units);
        layout.firstLine = lines_[top.firstRow].number;
        layout.isNote.assign(width_, false);
        for (std::size_t i = 0; i < width_; ++i) {
            layout.isNote[i] = lastRow_[i].empty() && (layout.names.empty() || !isAbsent(top.increment));
        }
        const bool hasNotes = std::find(layout.isNote.begin(), layout.isNote.end(), true) != layout.isNote.end();
        layout.rateHz = rateAbove(hasNotes ? run_.end : top.firstRow);
        if (!layout.rateHz && !isAbsent(top.increment)) {
            layout.rateHz = 1.0 / *top.increment;
        }
        CommaFinder commas;
        for (std::size_t i = top.firstRow; i < run_.end; ++i) {
            const auto cells = cellsAt(i);
            std::for_each(cells.begin(), cells.end(), [&commas](auto cell) { commas.look(cell); });
        }
        commas.decide(layout);
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
        std::optional<double> increment{};  // of time, in s
    };

    static bool isAbsent(const std::optional<double>& increment) { return !(increment.value_or(0.0) > 0.0); }

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
    /// as many cells as a row: those with text where the last row has numbers are skipped, or are the headings. The
    /// first line of the run may have units, and numbers only where the rows have none.
    Top findTop() const {
        Top top{run_.first, headingsAbove(run_.first, 0)};
        while (top.headings.names.empty() && top.firstRow + 1 < run_.end &&
               !hasShapeOf(cellsAt(top.firstRow), lastRow_)) {
            ++top.firstRow;
            // the lines above gave no names, and no units but labelled ones
            const auto units = std::exchange(top.headings, headingsAbove(top.firstRow, top.firstRow - 1)).units;
            supplement(top.headings.units, units);
        }
        const auto cells = cellsAt(top.firstRow);
        if (!top.headings.names.empty() && top.firstRow + 1 < run_.end && hasUnitsFor(lastRow_, cells)) {
            ++top.firstRow;
            top.headings.units.clear();
            for (std::size_t i = 0; i < width_; ++i) {
                top.headings.units.emplace_back(isNumeric(cells[i]) ? "" : cells[i]);
                if (lowerCase(top.headings.names[i]) == "increment") {
                    top.increment = parseNumber(cells[i], Comma::decimalSign);
                }
            }
        }
        return top;
    }

    /// The last line of names from `begin` up to `end`, and the last line of units between it and `end`, supplemented
    /// by lines that say what they hold.
    Headings headingsAbove(std::size_t end, std::size_t begin) const {
        Headings headings;
        Headings labelled;
        for (std::size_t i = end; i-- > begin;) {
            auto cells = cellsOfRow(withoutCommentMark(lines_[i].text, run_.separator), run_.separator, width_);
            if (const LineContent content = contentOf(cells); content != LineContent::other) {
                addLabelled(content, cells, labelled);
            } else if (headings.names.empty() && cells.size() == width_) {
                addHeadings(cells, headings);
            }
        }
        if (headings.names.empty() &&
            labelled.names.empty()) {  // what looks like units alone, such as "V;A", are names
            std::swap(headings.names, headings.units);
        }
        supplement(headings.names, labelled.names);
        supplement(headings.units, labelled.units);
        return headings;
    }

    void addHeadings(const std::vector<std::string_view>& cells, Headings& headings) const {
        if (std::any_of(cells.begin(), cells.end(), isValue)) {
            return;
        }
        const bool unitsOnly = std::all_of(cells.begin(), cells.end(), isUnitLike);
        const bool countsOnly = std::all_of(cells.begin(), cells.end(), parseCount);
        if (unitsOnly && headings.units.empty()) {
            headings.units = unitsOf(cells);
        } else if (!unitsOnly && !countsOnly) {
            headings.names = namesOf(cells);
        }
    }

    /// The first cell of the line says what the line holds; "horizontal" is the first column.
    void addLabelled(LineContent content, std::vector<std::string_view> cells, Headings& labelled) const {
        if (content == LineContent::timeUnit) {
            labelled.units.resize(width_);
            labelled.units[0] = cells[1];
            return;
        }
        auto& target = content == LineContent::names ? labelled.names : labelled.units;
        cells.resize(width_);
        cells[0] = target.empty() ? "" : std::string_view(target[0]);
        const auto values = content == LineContent::names ? namesOf(cells) : unitsOf(cells);
        target = values;
    }

    /// Labels replace what they are given for.
    static void supplement(std::vector<std::string>& cells, const std::vector<std::string>& labels) {
        cells.resize(std::max(cells.size(), labels.size()));
        for (std::size_t i = 0; i < labels.size(); ++i) {
            cells[i] = labels[i].empty() ? cells[i] : labels[i];
        }
    }

    /// Whole numbers may be names of columns; any other number is a sample.
    static bool isValue(std::string_view cell) { return isNumeric(cell) && !parseCount(cell); }

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
    line = separator == ' ' ? trimmed(line) : line;
    std::vector<std::string_view> cells =
        line.find('"') == std::string_view::npos ? split(line, separator) : splitWithQuotes(line, separator);
    if (separator == ' ') {
        cells.erase(std::remove(cells.begin(), cells.end(), std::string_view{}), cells.end());
    }
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
    if (run.length() == 0) {
        return {};
    }
    if (run.width > mostColumns) {
        return {.separator = run.separator, .width = run.width, .firstLine = lines[run.first].number};
    }
    return LayoutFinder(lines, run).find();
}

}  // namespace rt305
