#include "reading/csv_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "base/failure.h"
#include "base/lines.h"
#include "base/text.h"
#include "base/time_stamp.h"
#include "base/units.h"
#include "reading/csv_layout.h"
#include "reading/sampling_intervals.h"

namespace rt305 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double largestJitter = 0.5;  // of time steps without a heading, relative to their mean

bool namesTime(std::string_view name) {
    const std::string lower = lowerCase(name);
    const std::string_view first = std::string_view(lower).substr(0, lower.find_first_of("_- "));
    return first == "t" || first == "time" || first == "timestamp" || first == "datetime";
}

bool isMissing(std::string_view cell) {
    return cell.empty() || cell == "-" || cell == "--" || lowerCase(cell) == "na" || lowerCase(cell) == "n/a";
}

/// The time column: time of each row in seconds, and its line.
struct TimeColumn {
    std::string name;
    double secondsPerUnit = 1.0;
    std::optional<std::int64_t> firstStamp{};
    std::vector<double> seconds{};
    std::vector<std::size_t> lines{};

    bool add(std::string_view cell, std::size_t line, bool decimalComma) {
        std::optional<double> time;
        if (cell.find(':') == std::string_view::npos) {
            time = parseNumber(cell, decimalComma);
        } else if (const auto stamp = parseTimeStamp(cell)) {
            firstStamp = firstStamp.value_or(*stamp);
            time = static_cast<double>(*stamp - *firstStamp) * 1e-9 / secondsPerUnit;
        }
        if (!time || std::isnan(*time)) {
            return false;
        }
        seconds.push_back(*time * secondsPerUnit);
        lines.push_back(line);
        return true;
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

class CsvReader {
public:
    CsvReader(std::string_view text, const std::string& source, const ReadOptions& options)
        : options_(options), layout_(layoutOf(text)), lines_(text) {
        recording_.source = source;
        recording_.format = "CSV";
    }

    Recording read() {
        if (layout_.firstLine == 0) {
            failInput(recording_.source + ": found no rows of numbers");
        }
        nameColumns();
        while (lines_.nextWithText()) {
            if (lines_.number() >= layout_.firstLine && !isComment(lines_.line(), layout_.separator)) {
                readRow();
            }
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
        // next to "Current_B", the "A" of "Current_A" is a phase and not a unit
        const bool lettersArePhases = std::any_of(names.begin(), names.end(), [](const std::string& name) {
            return name.size() > 2 && (name.substr(name.size() - 2) == "_B" || name.substr(name.size() - 2) == " B");
        });
        for (std::size_t i = 0; i < layout_.width; ++i) {
            auto [name, unit] = nameAndUnit(names[i]);
            if (unit == "A" && name.size() == names[i].size() && lettersArePhases) {
                unit = {};
            }
            if (!layout_.units.empty() && !layout_.units[i].empty()) {
                unit = layout_.units[i];
            }
            if (!layout_.isNote[i]) {
                addColumn(i, name, unit);
            }
        }
    }

    /// The first column named as time becomes the time column.
    void addColumn(std::size_t i, std::string_view name, std::string_view unit) {
        if (timeColumn_ || !namesTime(name)) {
            recording_.columns.push_back({std::string(name), std::string(unit), {}, {}});
            return;
        }
        timeColumn_ = i;
        const Unit timeUnit = unitOf(unit);
        time_ = {std::string(name), timeUnit.quantity == Quantity::time ? timeUnit.factor : 1.0};
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
            } else if (!options_.rateHz && !time_.add(cells[i], lines_.number(), layout_.hasDecimalComma())) {
                failHere("column " + inQuotes(time_.name) + ": " + inQuotes(cells[i]) + " is not a time");
            }
        }
        ++recording_.length;
    }

    /// Only the last row of a file may be too short: the logger was stopped while writing it.
    void rejectRow(std::size_t cells) {
        const std::string counts = std::to_string(cells) + " cells, but the rows have " + std::to_string(layout_.width);
        if (cells > layout_.width || !lines_.areAllRead()) {
            failHere(counts);
        }
        recording_.warnings.push_back(here() + counts + "; this last row is ignored");
    }

    void addSample(Column& column, std::string_view cell) {
        if (!column.fault.empty()) {
            return;
        }
        if (const auto sample = isMissing(cell) ? nan : parseNumber(cell, layout_.hasDecimalComma())) {
            column.samples.push_back(*sample);
            return;
        }
        column.samples.clear();
        column.fault = here() + "column " + inQuotes(column.name) + ": " + inQuotes(cell) + " is not a number";
    }

    /// In a file without names, makes the first column the time column if its values look like times.
    void findUnnamedTime() {
        auto& columns = recording_.columns;
        if (timeColumn_ || !layout_.names.empty() || !options_.columns.empty() || columns.size() < 2 ||
            !advancesLikeTime(columns[0].samples)) {
            return;
        }
        timeColumn_ = 0;
        time_.name = columns[0].name;
        time_.seconds = std::move(columns[0].samples);
        columns.erase(columns.begin());
        for (std::size_t i = 0; i < columns.size(); ++i) {
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

    void setTime() {
        if (options_.rateHz) {
            recording_.setRate(*options_.rateHz, "as given");
        } else if (timeColumn_) {
            setTimeFromColumn();
        } else if (layout_.rateHz) {
            recording_.setRate(*layout_.rateHz, "from the lines above the rows");
        }
    }

    void setTimeFromColumn() {
        const auto& seconds = time_.seconds;
        std::vector<double> steps(seconds.size() - 1);
        for (std::size_t k = 0; k < steps.size(); ++k) {
            steps[k] = seconds[k + 1] - seconds[k];
        }
        const SamplingIntervals intervals = samplingIntervalsOf(steps);
        if (!intervals.even) {
            acceptUnevenTime();
        }
        setSegments(intervals);
        if (!intervals.gaps.empty()) {
            warnOfGaps(steps, intervals);
        }
        recording_.seconds = std::move(time_.seconds);
        recording_.rateOrigin = "from column " + inQuotes(time_.name);
    }

    void acceptUnevenTime() {
        const std::string column = recording_.source + ": column " + inQuotes(time_.name);
        if (!(time_.seconds.back() > time_.seconds.front())) {
            failInput(column +
                      " does not increase from the first row to the last, so the sample rate is unknown; give "
                      "it with --rate");
        }
        recording_.warnings.push_back(column + " has uneven steps; the samples are treated as evenly spaced");
    }

    /// One segment up to each gap, with its mean rate.
    void setSegments(const SamplingIntervals& intervals) {
        const auto& seconds = time_.seconds;
        std::vector<std::size_t> ends = intervals.gaps;
        ends.push_back(seconds.size());
        std::size_t first = 0;
        for (const std::size_t end : ends) {
            const std::size_t count = end - first;
            const double span = seconds[end - 1] - seconds[first];
            const bool hasRate = count > 1 && span > 0.0;
            recording_.segments.push_back(
                {first, count, hasRate ? static_cast<double>(count - 1) / span : 1.0 / intervals.usualStep});
            first = end;
        }
    }

    void warnOfGaps(const std::vector<double>& steps, const SamplingIntervals& intervals) {
        const std::size_t row = intervals.gaps[0];
        const std::string where = time_.lines.empty() ? recording_.source + ": " : at(time_.lines[row]);
        recording_.warnings.push_back(where + "the time step before this row is " + formatNumber(steps[row - 1]) +
                                      " s instead of the usual " + formatNumber(intervals.usualStep) + " s (" +
                                      std::to_string(intervals.gaps.size()) + " such steps in total)");
    }

    const ReadOptions& options_;
    CsvLayout layout_;
    Lines lines_;
    Recording recording_;
    std::optional<std::size_t> timeColumn_;
    TimeColumn time_;
};

}  // namespace

Recording readCsv(std::string_view text, const std::string& source, const ReadOptions& options) {
    return CsvReader(text, source, options).read();
}

}  // namespace rt305
