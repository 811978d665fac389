#include "reading/csv_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "base/failure.h"
#include "base/limits.h"
#include "base/lines.h"
#include "base/text.h"
#include "base/time_stamp.h"
#include "base/units.h"
#include "reading/csv_layout.h"
#include "reading/sampling_intervals.h"
#include "signal/line_search.h"

namespace rt305 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t rowsBeforeReserving = 1000;
constexpr std::size_t fewestRounded = 3;    // steps that look like gaps, where times may be rounded instead
constexpr double exactRounding = 0.501;     // distance from a straight line, relative to the step of rounding
constexpr double largestRounding = 0.75;    // the same, where stamps are inexact
constexpr double lowestPlausibleHz = 15.0;  // fundamentals in recordings of a grid
constexpr double highestPlausibleHz = 500.0;
constexpr double largestJitter = 0.5;  // of time steps without a heading, relative to their mean

/// Words of several languages for time, the first in a name: "Time_UTC", "Zeit [ms]", "x-axis".
bool namesTime(std::string_view name) {
    static constexpr std::string_view words[] = {"t",       "time",  "timestamp", "datetime", "zeit",   "zeitstempel",
                                                 "uhrzeit", "temps", "tiempo",    "tempo",    "x-axis", "x axis"};
    const std::string lower = lowerCase(name);
    const std::string_view first = std::string_view(lower).substr(0, lower.find_first_of("_- "));
    return std::any_of(std::begin(words), std::end(words), [&](auto word) { return word == first || word == lower; });
}

bool isMissing(std::string_view cell) {
    return cell.empty() || cell == "-" || cell == "--" || lowerCase(cell) == "na" || lowerCase(cell) == "n/a";
}

/// The time column: time of each row in seconds, and its line.
struct TimeColumn {
    std::string name;
    double secondsPerUnit = 1.0;
    bool hasUnit = false;
    std::optional<std::int64_t> firstStamp{};
    std::vector<double> seconds{};
    std::vector<std::pair<std::size_t, std::size_t>>
        lines{};  // a row, and its line, where a line was skipped before it

    bool add(std::string_view cell, std::size_t line, Comma comma) {
        std::optional<double> time;
        if (cell.find(':') == std::string_view::npos) {
            time = parseNumber(cell, comma);
        } else if (const auto stamp = parseTimeStamp(cell)) {
            firstStamp = firstStamp.value_or(*stamp);
            time = static_cast<double>(*stamp - *firstStamp) * 1e-9 / secondsPerUnit;
        }
        if (!time || std::isnan(*time)) {
            return false;
        }
        add(*time, line);
        return true;
    }

    void add(double time, std::size_t line) {
        if (lines.empty() || lines.back().second + (seconds.size() - lines.back().first) != line) {
            lines.emplace_back(seconds.size(), line);
        }
        seconds.push_back(time * secondsPerUnit);
    }

    std::size_t lineOf(std::size_t row) const {
        const auto behind = std::upper_bound(lines.begin(), lines.end(), row,
                                             [](std::size_t wanted, const auto& each) { return wanted < each.first; });
        return std::prev(behind)->second + (row - std::prev(behind)->first);
    }
};

/// Whether values may be times: they increase by nearly equal steps, which are not 1 as those of row numbers.
bool advancesLikeTime(const std::vector<double>& values) {
    if (values.size() < 3) {
        return false;
    }
    const double step = (values.back() - values.front()) / static_cast<double>(values.size() - 1);
    for (std::size_t k = 1; k < values.size(); ++k) {
        if (!(std::fabs(values[k] - values[k - 1] - step) <= largestJitter * step)) {
            return false;
        }
    }
    return step != 1.0;
}

/// The smallest difference between neighbours that is not zero; infinity when there is none.
double smallestStepIn(const std::vector<double>& seconds) {
    double smallest = std::numeric_limits<double>::infinity();
    for (std::size_t k = 1; k < seconds.size(); ++k) {
        const double step = std::fabs(seconds[k] - seconds[k - 1]);
        smallest = step > 0.0 ? std::min(smallest, step) : smallest;
    }
    return smallest;
}

/// The line of a given period in the middle of the times, and the largest distance from it.
std::pair<EvenTimes, double> lineOf(double period, const std::vector<double>& seconds) {
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -lowest;
    for (std::size_t k = 0; k < seconds.size(); ++k) {
        const double start = seconds[k] - period * static_cast<double>(k);
        lowest = std::min(lowest, start);
        highest = std::max(highest, start);
    }
    return {{(lowest + highest) / 2.0, period}, (highest - lowest) / 2.0};
}

/// Evenly spaced times that became these by rounding: those with the rate of fewest digits that explains them all, else
/// those of the closest line. Nothing when that lies too far away.
std::optional<EvenTimes> evenTimesBefore(const std::vector<double>& seconds, double rounding) {
    constexpr int mostDigits = 6;
    if (seconds.size() < fewestRounded || !std::isfinite(rounding)) {
        return std::nullopt;
    }
    const double period = evenTimesOf(seconds, 0, seconds.size()).period;
    for (int digits = 1; digits <= mostDigits && period > 0.0; ++digits) {
        const auto [line, distance] =
            lineOf(1.0 / parseNumber(formatNumber(1.0 / period, digits)).value_or(0.0), seconds);
        if (distance <= exactRounding * rounding) {
            return line;
        }
    }
    const auto [line, distance] = lineOf(period, seconds);
    return period > 0.0 && distance <= largestRounding * rounding ? std::optional(line) : std::nullopt;
}

class CsvReader {
public:
    CsvReader(std::string_view text, const std::string& source, const ReadOptions& options, ReadText memory)
        : options_(options), layout_(layoutOf(text)), text_(text), lines_(text), memory_(memory) {
        recording_.source = source;
        recording_.format = "CSV";
    }

    Recording read() {
        if (layout_.firstLine == 0) {
            failInput(recording_.source + ": found no rows of numbers");
        }
        if (layout_.width > mostColumns) {
            failInput(at(layout_.firstLine) + counted(layout_.width, "cell") + "; a recording has at most " +
                      std::to_string(mostColumns) + " columns");
        }
        nameColumns();
        readRows();
        if (!layout_.doubtfulNumber.empty()) {
            recording_.warnings.emplace_back(recording_.source + ": the comma in numbers such as " +
                                             inQuotes(layout_.doubtfulNumber) + " is read as a decimal sign");
        }
        findUnnamedTime();
        rejectEmptyColumns();
        setTime();
        return std::move(recording_);
    }

private:
    [[noreturn]] void failHere(const std::string& message) const { failInput(here() + message); }
    std::string here() const { return at(lines_.number()); }
    std::string at(std::size_t line) const { return recording_.source + ":" + std::to_string(line) + ": "; }

    /// The user's names, else the file's, else numbers. Notes have none.
    std::vector<std::string> headings() const {
        const auto total = std::count(layout_.isNote.begin(), layout_.isNote.end(), false);
        options_.requireColumnTotal(static_cast<std::size_t>(total), recording_.source);
        std::vector<std::string> names(layout_.width);
        std::size_t next = 0;
        for (std::size_t i = 0; i < layout_.width; ++i) {
            if (!layout_.isNote[i]) {
                names[i] = !options_.columns.empty() ? options_.columns[next]
                           : layout_.names.empty()   ? std::to_string(next + 1)
                                                     : layout_.names[i];
                ++next;
            }
        }
        return names;
    }

    void nameColumns() {
        const auto names = headings();
        std::vector<std::pair<std::string, std::string>> columns(layout_.width);
        for (std::size_t i = 0; i < layout_.width; ++i) {
            auto [name, unit] = nameAndUnit(names[i]);
            if (name.size() == names[i].size() && endsWithPhase(names, i)) {
                unit = {};
            }
            if (!layout_.units.empty() && !layout_.units[i].empty()) {
                unit = layout_.units[i];
            }
            columns[i] = {std::string(name), std::string(unit)};
        }
        chooseTimeColumn(columns);
        for (std::size_t i = 0; i < layout_.width; ++i) {
            if (!layout_.isNote[i] && i != timeColumn_) {
                recording_.columns.push_back({columns[i].first, columns[i].second, {}, {}});
            }
        }
    }

    /// Next to "Current_B", the "A" of "Current_A" is a phase and not a unit; so is the "s" of "i_s" next to "i_r".
    static bool endsWithPhase(const std::vector<std::string>& names, std::size_t i) {
        const std::string& name = names[i];
        return std::any_of(names.begin(), names.end(), [&name](const std::string& other) {
            return name.size() > 1 && other.size() == name.size() &&
                   std::equal(name.begin(), name.end() - 1, other.begin()) &&
                   std::string_view("BbRr").find(other.back()) != std::string_view::npos;
        });
    }

    /// The first column named as time, else the first one of all if it has a unit of time or is named as one.
    void chooseTimeColumn(const std::vector<std::pair<std::string, std::string>>& columns) {
        const auto isTime = [](std::string_view unit) { return unitOf(unit).quantity == Quantity::time; };
        for (std::size_t i = 0; i < columns.size() && !timeColumn_; ++i) {
            if (!layout_.isNote[i] && namesTime(columns[i].first)) {
                timeColumn_ = i;
            }
        }
        if (!timeColumn_ && !layout_.isNote[0] && (isTime(columns[0].second) || isTime(columns[0].first))) {
            timeColumn_ = 0;
        }
        if (timeColumn_) {
            const auto& [name, unit] = columns[*timeColumn_];
            const std::string_view given = isTime(unit) ? unit : name;
            time_ = {name, isTime(given) ? unitOf(given).factor : 1.0, isTime(given)};
        }
    }

    void readRows() {
        const auto& notes = layout_.isNote;
        const bool isPlain = layout_.separator != ' ' && std::find(notes.begin(), notes.end(), true) == notes.end();
        plainRow_.resize(layout_.width);
        while (lines_.next()) {
            if (lines_.number() < layout_.firstLine) {
                continue;
            }
            if (isPlain && parsePlainRow(lines_.line())) {
                addPlainRow();
            } else if (!trimmed(lines_.line()).empty() && !isComment(lines_.line(), layout_.separator)) {
                readRow();
            }
            if (recording_.length == rowsBeforeReserving) {
                reserveRows();
            }
            memory_.release(lines_.line().data());
        }
    }

    /// Parses a row of plain numbers without anything around them, as most files have. False for any other.
    bool parsePlainRow(std::string_view line) {
        const bool allowComma = layout_.comma == Comma::decimalSign && layout_.separator != ',';
        line.remove_suffix(!line.empty() && line.back() == '\r' ? 1 : 0);
        for (std::size_t i = 0; i < plainRow_.size(); ++i) {
            const std::size_t length = parseLeadingNumber(line, allowComma, plainRow_[i]);
            if (length == 0) {
                return false;
            }
            line.remove_prefix(length);
            const bool isLast = i + 1 == plainRow_.size();
            if (line.empty() ? !isLast : line.front() != layout_.separator) {
                return false;
            }
            line.remove_prefix(line.empty() ? 0 : 1);
        }
        return line.empty();
    }

    void addPlainRow() {
        auto column = recording_.columns.begin();
        for (std::size_t i = 0; i < plainRow_.size(); ++i) {
            if (i != timeColumn_) {
                if (column->fault.empty()) {
                    column->samples.push_back(plainRow_[i]);
                }
                ++column;
            } else {
                time_.add(plainRow_[i], lines_.number());
            }
        }
        ++recording_.length;
    }

    /// Makes room for as many rows as the text may hold, by the length of the first ones.
    void reserveRows() {
        const auto read = static_cast<double>(lines_.line().data() - text_.data());
        const auto rows = static_cast<std::size_t>(1.02 * static_cast<double>(recording_.length) *
                                                   static_cast<double>(text_.size()) / read);
        for (Column& column : recording_.columns) {
            column.samples.reserve(column.fault.empty() ? rows : 0);
        }
        time_.seconds.reserve(time_.seconds.empty() ? 0 : rows);
    }

    void readRow() {
        const auto cells = cellsOfRow(lines_.line(), layout_.separator, layout_.width);
        if (cells.size() != layout_.width) {
            rejectRow(cells.size());
            return;
        }
        auto column = recording_.columns.begin();
        for (std::size_t i = 0; i < layout_.width; ++i) {
            if (layout_.isNote[i]) {
                continue;
            }
            if (i != timeColumn_) {
                addSample(*column++, cells[i]);
            } else if (!time_.add(cells[i], lines_.number(), layout_.comma) && !options_.rateHz) {
                failHere("column " + inQuotes(time_.name) + ": " + inQuotes(cells[i]) + " is not a time");
            }
        }
        ++recording_.length;
    }

    /// Only the last row of a file may be too short: the logger was stopped while writing it.
    void rejectRow(std::size_t cells) {
        const std::string counts = counted(cells, "cell") + ", but the rows have " + std::to_string(layout_.width);
        if (cells > layout_.width || !lines_.areAllRead()) {
            failHere(counts);
        }
        recording_.warnings.emplace_back(here() + counts + "; this last row is ignored");
    }

    void addSample(Column& column, std::string_view cell) {
        if (!column.fault.empty()) {
            return;
        }
        if (const auto sample = isMissing(cell) ? nan : parseNumber(cell, layout_.comma)) {
            column.samples.push_back(*sample);
            return;
        }
        column.samples.clear();
        column.fault = here() + "column " + inQuotes(column.name) + ": " + inQuotes(cell) + " is not a number";
    }

    /// Makes a first column without a name the time column if its values look like times.
    void findUnnamedTime() {
        auto& columns = recording_.columns;
        const bool isNamed = !options_.columns.empty() || (!layout_.names.empty() && !layout_.names[0].empty());
        if (timeColumn_ || isNamed || columns.size() < 2 || !advancesLikeTime(columns[0].samples)) {
            return;
        }
        timeColumn_ = 0;
        time_.name = columns[0].name;
        time_.seconds = std::move(columns[0].samples);
        columns.erase(columns.begin());
        for (std::size_t i = 0; layout_.names.empty() && i < columns.size(); ++i) {
            columns[i].name = std::to_string(i + 1);
        }
    }

    void rejectEmptyColumns() {
        for (Column& column : recording_.columns) {
            if (column.fault.empty() && countMissing(column.samples) == column.samples.size()) {
                column.samples.clear();
                column.fault = recording_.source + ": column " + inQuotes(column.name) + ": all samples are missing";
            }
        }
    }

    /// The file's own time, with which a given rate is compared. A given rate needs none, so doubts about it do not
    /// count.
    void setTime() {
        const auto warnings = static_cast<std::ptrdiff_t>(recording_.warnings.size());
        if (timeColumn_ && (!options_.rateHz || isTimeUsable())) {
            setTimeFromColumn();
        } else if (!timeColumn_ && layout_.rateHz) {
            recording_.setRate(*layout_.rateHz, "from the lines above the rows");
        }
        if (options_.rateHz) {
            recording_.warnings.erase(recording_.warnings.begin() + warnings, recording_.warnings.end());
        }
    }

    bool isTimeUsable() const {
        const auto& seconds = time_.seconds;
        return seconds.size() == recording_.length && seconds.back() > seconds.front();
    }

    void setTimeFromColumn() {
        chooseTimeUnit();
        auto& seconds = time_.seconds;
        std::vector<double> steps(seconds.size() - 1);
        for (std::size_t k = 0; k < steps.size(); ++k) {
            steps[k] = seconds[k + 1] - seconds[k];
        }
        SamplingIntervals intervals = samplingIntervalsOf(steps);
        if (!intervals.even || intervals.gaps.size() >= fewestRounded) {
            straightenRounded(intervals);
        }
        if (!intervals.even) {
            acceptUnevenTime();
        }
        setSegments(intervals);
        if (!intervals.gaps.empty()) {
            warnOfGaps(steps, intervals);
        }
        recording_.seconds = std::move(time_.seconds);
        recording_.rateOrigin = "from column " + inQuotes(time_.name);
        if (const std::string start = isoTime(time_.firstStamp.value_or(0)); !start.empty()) {
            recording_.facts.emplace_back("Start", start);
        }
    }

    /// Times without a unit are in s, unless no signal then has a plausible fundamental, and one has it in ms, us or
    /// ns.
    void chooseTimeUnit() {
        if (time_.hasUnit || time_.firstStamp || time_.seconds.size() < 2) {
            return;
        }
        const double rateHz = 1.0 / evenTimesOf(time_.seconds, 0, time_.seconds.size()).period;
        std::vector<double> fundamentals;
        for (const Column& column : recording_.columns) {
            if (const auto line = strongestLine(column.samples, rateHz, 0.0, rateHz / 3.0)) {
                fundamentals.push_back(*line);
            }
        }
        for (const auto& [unit, factor] : {std::pair{"s", 1.0}, {"ms", 1e-3}, {"us", 1e-6}, {"ns", 1e-9}}) {
            const auto plausible = std::find_if(fundamentals.begin(), fundamentals.end(), [scale = factor](double f) {
                return f / scale >= lowestPlausibleHz && f / scale <= highestPlausibleHz;
            });
            if (plausible == fundamentals.end()) {
                continue;
            }
            if (factor != 1.0) {
                recording_.warnings.emplace_back(
                    recording_.source + ": column " + inQuotes(time_.name) + " has no unit and is read as " + unit +
                    ", because as s it would give a signal of " + formatNumber(*plausible, 3) +
                    " Hz; to decide yourself, name it in --columns with its unit, or give --rate");
                std::for_each(time_.seconds.begin(), time_.seconds.end(), [scale = factor](double& t) { t *= scale; });
            }
            return;
        }
    }

    /// Replaces times that were rounded to a coarse step, but are evenly spaced otherwise, by those of a straight line.
    void straightenRounded(SamplingIntervals& intervals) {
        auto& seconds = time_.seconds;
        const double rounding = smallestStepIn(seconds);
        const auto even = evenTimesBefore(seconds, rounding);
        if (!even) {
            return;
        }
        recording_.warnings.emplace_back(recording_.source + ": column " + inQuotes(time_.name) +
                                         " is rounded to steps of " + formatNumber(rounding, 3) +
                                         " s; the samples are treated as evenly spaced");
        for (std::size_t k = 0; k < seconds.size(); ++k) {
            seconds[k] = even->start + even->period * static_cast<double>(k);
        }
        intervals = {even->period, {}, true};
    }

    void acceptUnevenTime() {
        const std::string column = recording_.source + ": column " + inQuotes(time_.name);
        if (!(time_.seconds.back() > time_.seconds.front())) {
            failInput(column +
                      " does not increase from the first row to the last, so the sample rate is unknown; give "
                      "it with --rate");
        }
        recording_.warnings.emplace_back(column + " has uneven steps; the samples are treated as evenly spaced");
    }

    /// One segment up to each gap, with the rate of the straight line through its times.
    void setSegments(const SamplingIntervals& intervals) {
        const auto& seconds = time_.seconds;
        std::vector<std::size_t> ends = intervals.gaps;
        ends.push_back(seconds.size());
        std::size_t first = 0;
        for (const std::size_t end : ends) {
            const std::size_t count = end - first;
            const double span = seconds[end - 1] - seconds[first];
            double period = count > 1 ? evenTimesOf(seconds, first, count).period : 0.0;
            if (!(period > 0.0)) {
                period = count > 1 && span > 0.0 ? span / static_cast<double>(count - 1) : intervals.usualStep;
            }
            recording_.segments.push_back({first, count, 1.0 / period});
            first = end;
        }
    }

    void warnOfGaps(const std::vector<double>& steps, const SamplingIntervals& intervals) {
        const std::size_t row = intervals.gaps[0];
        const std::string where = time_.lines.empty() ? recording_.source + ": " : at(time_.lineOf(row));
        recording_.warnings.emplace_back(where + "the time step before this row is " + formatNumber(steps[row - 1]) +
                                         " s instead of the usual " + formatNumber(intervals.usualStep) + " s (" +
                                         std::to_string(intervals.gaps.size()) + " such steps in total)");
    }

    const ReadOptions& options_;
    CsvLayout layout_;
    std::string_view text_;
    Lines lines_;
    ReadText memory_;
    std::vector<double> plainRow_{};  // the cells of a row of plain numbers
    Recording recording_;
    std::optional<std::size_t> timeColumn_;
    TimeColumn time_;
};

}  // namespace

Recording readCsv(std::string_view text, const std::string& source, const ReadOptions& options, ReadText memory) {
    return CsvReader(text, source, options, memory).read();
}

}  // namespace rt305
