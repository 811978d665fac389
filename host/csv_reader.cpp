#include "csv_reader.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <utility>

#include "failure.h"
#include "text.h"

namespace rt305 {

namespace {

/// Hands out the lines of a text that are not blank, and knows the number of the present one.
class Lines {
public:
    explicit Lines(std::string_view text) : _rest(text) {
        if (_rest.substr(0, 3) == "\xEF\xBB\xBF") {
            _rest.remove_prefix(3);
        }
    }

    bool next() {
        while (!_rest.empty()) {
            const std::size_t end = std::min(_rest.find('\n'), _rest.size());
            _line = _rest.substr(0, end);
            _rest.remove_prefix(std::min(end + 1, _rest.size()));
            ++_number;
            if (!trimmed(_line).empty()) {
                return true;
            }
        }
        return false;
    }

    std::string_view line() const { return _line; }
    std::size_t number() const { return _number; }

private:
    std::string_view _rest;
    std::string_view _line;
    std::size_t _number = 0;
};

std::string_view unquoted(std::string_view cell) {
    const bool hasQuotes = cell.size() >= 2 && cell.front() == '"' && cell.back() == '"';
    return hasQuotes ? trimmed(cell.substr(1, cell.size() - 2)) : cell;
}

std::vector<std::string_view> cellsOf(std::string_view line, char separator) {
    std::vector<std::string_view> cells = split(line, separator);
    std::transform(cells.begin(), cells.end(), cells.begin(), unquoted);
    return cells;
}

char separatorOf(std::string_view namingLine) {
    for (const char candidate : {';', '\t'}) {
        if (namingLine.find(candidate) != std::string_view::npos) {
            return candidate;
        }
    }
    return ',';
}

/// "Ua (V)" and "Ua [V]" -> "Ua", "V"; "Ua_V" -> "Ua_V", "V": only what stands in brackets is surely no name.
std::pair<std::string_view, std::string_view> nameAndUnit(std::string_view heading) {
    const std::size_t open = heading.find_last_of("([");
    if (open != std::string_view::npos && open > 0 && (heading.back() == ')' || heading.back() == ']')) {
        return {trimmed(heading.substr(0, open)), trimmed(heading.substr(open + 1, heading.size() - open - 2))};
    }
    const std::string_view tail = heading.substr(heading.find_last_of("_ ") + 1);
    for (const std::string_view unit : {"V", "kV", "mV", "uV", "A", "kA", "mA", "uA", "s", "ms", "us", "ns"}) {
        if (tail == unit && tail.size() < heading.size()) {
            return {heading, unit};
        }
    }
    return {heading, {}};
}

bool namesTime(std::string_view name) {
    const std::string lower = lowerCase(name);
    const std::string_view first = std::string_view(lower).substr(0, lower.find_first_of("_- "));
    return first == "t" || first == "time" || first == "timestamp" || first == "datetime";
}

double secondsPer(std::string_view timeUnit) {
    if (timeUnit == "ms") {
        return 1e-3;
    }
    if (timeUnit == "us" || timeUnit == "\xC2\xB5s" || timeUnit == "\xCE\xBCs") {  // with either Greek letter mu
        return 1e-6;
    }
    return timeUnit == "ns" ? 1e-9 : 1.0;
}

/// The whole numbers between the given separators, in order; as many as there are separators, plus one.
std::optional<std::vector<int>> parseFields(std::string_view text, char separator, std::size_t count) {
    std::vector<int> fields;
    for (const std::string_view piece : split(text, separator)) {
        const auto field = parseCount(piece);
        if (!field || *field > 9999) {
            return std::nullopt;
        }
        fields.push_back(static_cast<int>(*field));
    }
    return fields.size() == count ? std::optional(fields) : std::nullopt;
}

/// ".25" -> 250 000 000 ns; at most nine decimals.
std::optional<std::int64_t> parseFraction(std::string_view decimals) {
    if (decimals.empty()) {
        return 0;
    }
    std::string digits(decimals.substr(1));
    if (digits.size() > 9) {
        return std::nullopt;
    }
    digits.resize(9, '0');
    const auto nanoseconds = parseCount(digits);
    return nanoseconds ? std::optional(static_cast<std::int64_t>(*nanoseconds)) : std::nullopt;
}

/// "2020-02-24 18:15:21.499998208" in ns since 1970; without a date, since midnight. Whole numbers, because a double
/// of seconds since 1970 resolves 0.2 us only; 64 bits of them hold the years 1900 to 2099 and their differences.
std::optional<std::int64_t> parseStamp(std::string_view text) {
    std::int64_t days = 0;
    const std::size_t dateEnd = text.find_first_of(" T");
    if (dateEnd != std::string_view::npos) {
        const auto date = parseFields(text.substr(0, dateEnd), '-', 3);
        if (!date) {
            return std::nullopt;
        }
        const std::chrono::year_month_day day{std::chrono::year((*date)[0]),
                                              std::chrono::month(static_cast<unsigned>((*date)[1])),
                                              std::chrono::day(static_cast<unsigned>((*date)[2]))};
        if (!day.ok() || day.year() < std::chrono::year(1900) || day.year() > std::chrono::year(2099)) {
            return std::nullopt;
        }
        days = std::chrono::sys_days(day).time_since_epoch().count();
        text.remove_prefix(dateEnd + 1);
    }
    if (!text.empty() && text.back() == 'Z') {
        text.remove_suffix(1);
    }
    const std::size_t point = std::min(text.find_first_of(".,"), text.size());
    const auto clock = parseFields(text.substr(0, point), ':', 3);
    const auto fraction = parseFraction(text.substr(point));
    if (!clock || !fraction || (*clock)[0] > 23 || (*clock)[1] > 59 || (*clock)[2] > 60) {
        return std::nullopt;
    }
    const std::int64_t seconds = ((days * 24 + (*clock)[0]) * 60 + (*clock)[1]) * 60 + (*clock)[2];
    return seconds * 1'000'000'000 + *fraction;
}

/// The time column: when each row was taken, in seconds, and on which line it stands.
struct TimeAxis {
    std::string name;
    double secondsPerUnit = 1.0;
    std::optional<std::int64_t> firstStamp;
    std::vector<double> seconds;
    std::vector<std::size_t> lines;

    bool add(std::string_view cell, std::size_t line, bool decimalComma) {
        std::optional<double> time;
        if (cell.find(':') == std::string_view::npos) {
            time = parseNumber(cell, decimalComma);
        } else if (const auto stamp = parseStamp(cell)) {
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

/// A sentence about the first time step that is out of the ordinary; empty when none is.
std::string describeGaps(const TimeAxis& time, const std::string& source) {
    std::vector<double> steps(time.seconds.size() - 1);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        steps[i] = time.seconds[i + 1] - time.seconds[i];
    }
    std::vector<double> sorted = steps;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    const double usual = *middle;
    const auto isOdd = [usual](double step) { return step > 1.5 * usual || step <= 0.0; };
    const auto first = std::find_if(steps.begin(), steps.end(), isOdd);
    if (first == steps.end()) {
        return {};
    }
    return source + ":" + std::to_string(time.lines[static_cast<std::size_t>(first - steps.begin()) + 1]) +
           ": the time step before this row is " + formatNumber(*first) + " s, usually it is " + formatNumber(usual) +
           " s (" + std::to_string(std::count_if(steps.begin(), steps.end(), isOdd)) +
           " such steps in all); the samples are taken as evenly spaced";
}

class CsvReader {
public:
    CsvReader(std::string_view text, const std::string& source) : _lines(text) { _recording.source = source; }

    Recording read(std::optional<double> rateHz) {
        readNames();
        while (_lines.next()) {
            readRow(!rateHz);
        }
        if (_recording.length == 0) {
            failInput(_recording.source + ": there is no row of samples below the column names");
        }
        if (rateHz) {
            _recording.rateHz = *rateHz;
            _recording.rateOrigin = "as given";
        } else if (_timeColumn) {
            setRateFromTime();
        }
        return std::move(_recording);
    }

private:
    [[noreturn]] void failHere(const std::string& message) const { failInput(here() + message); }
    std::string here() const { return _recording.source + ":" + std::to_string(_lines.number()) + ": "; }
    bool hasDecimalComma() const { return _separator != ','; }

    void readNames() {
        do {
            if (!_lines.next()) {
                failInput(_recording.source + ": there is no line that names the columns");
            }
        } while (_lines.line()[0] == '#' || _lines.line()[0] == ';');
        _separator = separatorOf(_lines.line());
        const auto headings = cellsOf(_lines.line(), _separator);
        if (std::all_of(headings.begin(), headings.end(), [](std::string_view cell) { return parseNumber(cell); })) {
            failHere("this line must name the columns, but it holds numbers");
        }
        for (const std::string_view heading : headings) {
            const auto [name, unit] = nameAndUnit(heading);
            if (!_timeColumn && namesTime(name)) {
                _timeColumn = _width;
                _time.name = name;
                _time.secondsPerUnit = secondsPer(unit);
            } else {
                _recording.columns.push_back({std::string(name), std::string(unit), {}, {}});
            }
            ++_width;
        }
    }

    void readRow(bool timeIsWanted) {
        auto cells = cellsOf(_lines.line(), _separator);
        if (cells.size() == _width + 1 && cells.back().empty()) {
            cells.pop_back();  // some loggers end every row with a separator
        }
        if (cells.size() != _width) {
            failHere(std::to_string(cells.size()) + " cells, but " + std::to_string(_width) + " columns are named");
        }
        auto column = _recording.columns.begin();
        for (std::size_t i = 0; i < _width; ++i) {
            if (i != _timeColumn) {
                addSample(*column++, cells[i]);
            } else if (timeIsWanted && !_time.add(cells[i], _lines.number(), hasDecimalComma())) {
                failHere("column " + inQuotes(_time.name) + ": " + inQuotes(cells[i]) + " is not a time");
            }
        }
        ++_recording.length;
    }

    void addSample(Column& column, std::string_view cell) {
        if (!column.fault.empty()) {
            return;
        }
        if (const auto sample = parseNumber(cell, hasDecimalComma())) {
            column.samples.push_back(*sample);
            return;
        }
        column.samples.clear();
        column.fault =
            here() + "column " + inQuotes(column.name) + ": " +
            (cell.empty() ? "the cell is empty; a missing sample is written NaN" : inQuotes(cell) + " is not a number");
    }

    void setRateFromTime() {
        const double span = _time.seconds.back() - _time.seconds.front();
        if (!(span > 0.0)) {
            failInput(_recording.source + ": column " + inQuotes(_time.name) +
                      " does not advance from the first row to the last, so there is no sample rate; give --rate");
        }
        _recording.rateHz = static_cast<double>(_recording.length - 1) / span;
        _recording.rateOrigin = "from column " + inQuotes(_time.name);
        if (const std::string gaps = describeGaps(_time, _recording.source); !gaps.empty()) {
            _recording.warnings.push_back(gaps);
        }
    }

    Lines _lines;
    Recording _recording;
    char _separator = ',';
    std::size_t _width = 0;  // columns of the file, time included
    std::optional<std::size_t> _timeColumn;
    TimeAxis _time;
};

}  // namespace

Recording readCsv(std::string_view text, const std::string& source, std::optional<double> rateHz) {
    return CsvReader(text, source).read(rateHz);
}

}  // namespace rt305
