#include "csv_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "csv_layout.h"
#include "failure.h"
#include "lines.h"
#include "spacing.h"
#include "text.h"
#include "time_stamp.h"
#include "units.h"

namespace rt305 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

bool namesTime(std::string_view name) {
    const std::string lower = lowerCase(name);
    const std::string_view first = std::string_view(lower).substr(0, lower.find_first_of("_- "));
    return first == "t" || first == "time" || first == "timestamp" || first == "datetime";
}

bool isMissing(std::string_view cell) {
    return cell.empty() || cell == "-" || cell == "--" || lowerCase(cell) == "na" || lowerCase(cell) == "n/a";
}

/// The time column: when each row was taken, in seconds, and on which line it stands.
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

/// Whether values are times: they advance evenly, but not by one as row numbers do.
bool advancesLikeTime(const std::vector<double>& values) {
    if (values.size() < 3) {
        return false;
    }
    const double step = (values.back() - values.front()) / static_cast<double>(values.size() - 1);
    for (std::size_t k = 1; k < values.size(); ++k) {
        if (!(std::fabs(values[k] - values[k - 1] - step) <= 0.5 * step)) {
            return false;
        }
    }
    return step != 1.0;
}

class CsvReader {
public:
    CsvReader(std::string_view text, const std::string& source, const ReadOptions& options)
        : _options(options), _layout(layoutOf(text)), _lines(text) {
        _recording.source = source;
        _recording.format = "CSV";
    }

    Recording read() {
        if (_layout.firstLine == 0) {
            failInput(_recording.source + ": there is no row of samples");
        }
        nameColumns();
        while (_lines.nextWithText()) {
            if (_lines.number() >= _layout.firstLine && !isComment(_lines.line(), _layout.separator)) {
                readRow();
            }
        }
        findUnnamedTime();
        for (Column& column : _recording.columns) {
            if (column.fault.empty() && countMissing(column.samples) == column.samples.size()) {
                column.samples.clear();
                column.fault = _recording.source + ": column " + inQuotes(column.name) + ": all samples are missing";
            }
        }
        setTime();
        return std::move(_recording);
    }

private:
    [[noreturn]] void failHere(const std::string& message) const { failInput(here() + message); }
    std::string here() const { return at(_lines.number()); }
    std::string at(std::size_t line) const { return _recording.source + ":" + std::to_string(line) + ": "; }

    /// The user's names, else the file's, else numbers.
    std::vector<std::string> headings() const {
        const auto samples = std::count(_layout.isNote.begin(), _layout.isNote.end(), false);
        if (!_options.columns.empty() && _options.columns.size() != static_cast<std::size_t>(samples)) {
            failInput(_recording.source + ": --columns names " + std::to_string(_options.columns.size()) +
                      " columns, but the file has " + std::to_string(samples));
        }
        std::vector<std::string> names(_layout.width);
        std::size_t next = 0;
        for (std::size_t i = 0; i < _layout.width; ++i) {
            if (!_layout.isNote[i]) {
                names[i] = !_options.columns.empty() ? _options.columns[next]
                           : _layout.names.empty()   ? std::to_string(next + 1)
                                                     : _layout.names[i];
                ++next;
            }
        }
        return names;
    }

    void nameColumns() {
        const auto names = headings();
        // "Current_A" beside "Current_B" is of phase A and says no unit
        const bool lettersArePhases = std::any_of(names.begin(), names.end(), [](const std::string& name) {
            return name.size() > 2 && (name.substr(name.size() - 2) == "_B" || name.substr(name.size() - 2) == " B");
        });
        for (std::size_t i = 0; i < _layout.width; ++i) {
            auto [name, unit] = nameAndUnit(names[i]);
            if (unit == "A" && name.size() == names[i].size() && lettersArePhases) {
                unit = {};
            }
            if (!_layout.units.empty() && !_layout.units[i].empty()) {
                unit = _layout.units[i];
            }
            if (!_layout.isNote[i]) {
                addColumn(i, name, unit);
            }
        }
    }

    /// The first column that names time is the time column.
    void addColumn(std::size_t i, std::string_view name, std::string_view unit) {
        if (_timeColumn || !namesTime(name)) {
            _recording.columns.push_back({std::string(name), std::string(unit), {}, {}});
            return;
        }
        _timeColumn = i;
        const Unit timeUnit = unitOf(unit);
        _time = {std::string(name), timeUnit.quantity == Quantity::time ? timeUnit.factor : 1.0};
    }

    void readRow() {
        auto cells = cellsOf(_lines.line(), _layout.separator);
        if (cells.size() == _layout.width + 1 && cells.back().empty()) {
            cells.pop_back();
        }
        if (cells.size() != _layout.width) {
            const std::string counts =
                std::to_string(cells.size()) + " cells, but the rows have " + std::to_string(_layout.width);
            if (cells.size() > _layout.width || !_lines.areAllRead()) {
                failHere(counts);
            }
            _recording.warnings.push_back(here() + counts + "; this last row is left out");
            return;
        }
        auto column = _recording.columns.begin();
        for (std::size_t i = 0; i < _layout.width; ++i) {
            if (_layout.isNote[i]) {
                continue;
            }
            if (i != _timeColumn) {
                addSample(*column++, cells[i]);
            } else if (!_options.rateHz && !_time.add(cells[i], _lines.number(), _layout.hasDecimalComma())) {
                failHere("column " + inQuotes(_time.name) + ": " + inQuotes(cells[i]) + " is not a time");
            }
        }
        ++_recording.length;
    }

    void addSample(Column& column, std::string_view cell) {
        if (!column.fault.empty()) {
            return;
        }
        if (const auto sample = isMissing(cell) ? nan : parseNumber(cell, _layout.hasDecimalComma())) {
            column.samples.push_back(*sample);
            return;
        }
        column.samples.clear();
        column.fault = here() + "column " + inQuotes(column.name) + ": " + inQuotes(cell) + " is not a number";
    }

    /// Takes the first of columns without names out when it holds time.
    void findUnnamedTime() {
        auto& columns = _recording.columns;
        if (_timeColumn || !_layout.names.empty() || !_options.columns.empty() || columns.size() < 2 ||
            !advancesLikeTime(columns[0].samples)) {
            return;
        }
        _timeColumn = 0;
        _time.name = columns[0].name;
        _time.seconds = std::move(columns[0].samples);
        columns.erase(columns.begin());
        for (std::size_t i = 0; i < columns.size(); ++i) {
            columns[i].name = std::to_string(i + 1);
        }
    }

    void setTime() {
        if (_options.rateHz) {
            _recording.setRate(*_options.rateHz, "as given");
        } else if (_timeColumn) {
            setTimeFromColumn();
        } else if (_layout.rateHz) {
            _recording.setRate(*_layout.rateHz, "from the lines above the rows");
        }
    }

    void setTimeFromColumn() {
        const auto& seconds = _time.seconds;
        std::vector<double> steps(seconds.size() - 1);
        for (std::size_t k = 0; k < steps.size(); ++k) {
            steps[k] = seconds[k + 1] - seconds[k];
        }
        const Spacing spacing = spacingOf(steps);
        if (!spacing.regular && !(seconds.back() > seconds.front())) {
            failInput(_recording.source + ": column " + inQuotes(_time.name) +
                      " does not advance from the first row to the last, so there is no sample rate; give --rate");
        }
        if (!spacing.regular) {
            _recording.warnings.push_back(_recording.source + ": column " + inQuotes(_time.name) +
                                          " advances unevenly; the samples are taken as evenly spaced");
        }
        std::vector<std::size_t> ends = spacing.breaks;
        ends.push_back(seconds.size());
        std::size_t first = 0;
        for (const std::size_t end : ends) {
            const std::size_t count = end - first;
            const double span = seconds[end - 1] - seconds[first];
            _recording.segments.push_back(
                {first, count,
                 count > 1 && span > 0.0 ? static_cast<double>(count - 1) / span : 1.0 / spacing.usualStep});
            first = end;
        }
        if (!spacing.breaks.empty()) {
            const std::size_t row = spacing.breaks[0];
            const std::string where = _time.lines.empty() ? _recording.source + ": " : at(_time.lines[row]);
            _recording.warnings.push_back(where + "the time step before this row is " + formatNumber(steps[row - 1]) +
                                          " s, usually it is " + formatNumber(spacing.usualStep) + " s (" +
                                          std::to_string(spacing.breaks.size()) + " such steps in all)");
        }
        _recording.seconds = std::move(_time.seconds);
        _recording.rateOrigin = "from column " + inQuotes(_time.name);
    }

    const ReadOptions& _options;
    CsvLayout _layout;
    Lines _lines;
    Recording _recording;
    std::optional<std::size_t> _timeColumn;
    TimeColumn _time;
};

}  // namespace

Recording readCsv(std::string_view text, const std::string& source, const ReadOptions& options) {
    return CsvReader(text, source, options).read();
}

}  // namespace rt305
