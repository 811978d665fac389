#include "output/quality_document.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <ostream>

#include "base/csv_field.h"
#include "base/text.h"
#include "base/text_encoding.h"
#include "base/text_table.h"
#include "output/json.h"

namespace rt305 {

namespace {

using Cells = std::vector<std::vector<std::string>>;

std::vector<std::string> phasesOf(const Event& event) {
    std::vector<std::string> names;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (event.phases[phase]) {
            names.emplace_back(channelNames[phase]);
        }
    }
    return names;
}

/// The values of a quantity in the intervals of cycles.
struct Statistics {
    std::size_t count = 0;
    double lowest = 0.0;
    double mean = 0.0;
    double highest95 = 0.0;  // not exceeded by 95 % of the values
    double highest = 0.0;
};

/// NaN are left out.
Statistics statisticsOf(std::vector<float> values) {
    values.erase(std::remove_if(values.begin(), values.end(), [](float x) { return std::isnan(x); }), values.end());
    if (values.empty()) {
        return {};
    }
    std::sort(values.begin(), values.end());
    const double count = static_cast<double>(values.size());
    const auto place = static_cast<std::size_t>(std::max(0.0, std::ceil(0.95 * count) - 1.0));
    return {values.size(), values.front(), std::accumulate(values.begin(), values.end(), 0.0) / count, values[place],
            values.back()};
}

/// The name as people read it.
std::string wordsFor(EventKind kind) {
    return kind == EventKind::rapidChange ? "rapid change" : std::string(nameOf(kind));
}

Json jsonOf(const Event& event) {
    Json object{{"kind", nameOf(event.kind)}, {"start", event.startSeconds}, {"duration", event.durationSeconds},
                {"volts", event.volts},       {"percent", event.percent},    {"phases", phasesOf(event)},
                {"cut", event.isCut}};
    object["phase_jump"] = event.jumpDegrees;
    object["steady_percent"] = event.steadyPercent;
    return object;
}

/// Missing values are left out.
Json valuesOf(const std::vector<IntervalQuantity>& quantities, const Interval& interval) {
    Json values = Json::object();
    for (std::size_t i = 0; i < interval.values.size(); ++i) {
        if (!std::isnan(interval.values[i])) {
            values[quantities[i].key] = interval.values[i];
        }
    }
    return values;
}

Json jsonOf(const std::vector<IntervalQuantity>& quantities, const std::vector<Interval>& intervals) {
    Json list = Json::array();
    for (const Interval& interval : intervals) {
        list.push_back({{"start", interval.startSeconds},
                        {"duration", interval.durationSeconds},
                        {"flagged", interval.isFlagged},
                        {"partial", interval.isPartial},
                        {"values", valuesOf(quantities, interval)}});
    }
    return list;
}

Json jsonOf(const Verdict& verdict) {
    Json object{{"quantity", verdict.limit.quantity}, {"percent", verdict.limit.percent}};
    for (const auto& [name, limit] : {std::pair{"lower", verdict.limit.lower}, {"upper", verdict.limit.upper}}) {
        object[name] = limit ? Json(*limit) : Json();
    }
    object["worst"] = verdict.channel;
    object["intervals"] = verdict.intervals;
    object["inside_percent"] = verdict.intervals > 0 ? Json(verdict.insidePercent) : Json();
    object["kept"] = verdict.intervals > 0 ? Json(verdict.isKept()) : Json();
    return object;
}

Json verdictOf(const QualityDocument& document) {
    Json limits = Json::array();
    for (const Verdict& verdict : document.verdicts) {
        limits.push_back(jsonOf(verdict));
    }
    constexpr double secondsOfDay = 86400.0;
    return {{"name", document.limits.name},
            {"long_enough", document.results.durationSeconds >= document.limits.days * secondsOfDay},
            {"limits", limits}};
}

Json jsonOf(const QualityDocument& document) {
    const QualityResults& results = document.results;
    const QualitySettings& settings = results.settings;
    Json object = originOf(document.recording, document.options);
    object["measured"] = {
        {"start", settings.startSeconds}, {"duration", results.durationSeconds},
        {"content", document.content},    {"declared", settings.hasVoltages() ? Json(settings.declaredVolts) : Json()},
        {"intervals", results.intervals}, {"flagged", results.flagged}};
    object["events"] = Json::array();
    for (const Event& event : results.events) {
        object["events"].push_back(jsonOf(event));
    }
    object["statistics"] = Json::object();
    for (std::size_t i = 0; i < results.values.size(); ++i) {
        if (const Statistics s = statisticsOf(results.values[i]); s.count > 0) {
            object["statistics"][results.quantities[i].key] = {{"unit", results.quantities[i].unit},
                                                               {"lowest", s.lowest},
                                                               {"mean", s.mean},
                                                               {"highest_95", s.highest95},
                                                               {"highest", s.highest}};
        }
    }
    object["ten_minutes"] = jsonOf(results.quantities, results.tenMinutes);
    object["ten_seconds"] = jsonOf(results.quantities, results.tenSeconds);
    object["verdict"] = document.limits.limits.empty() ? Json() : verdictOf(document);
    object["remarks"] = document.remarks;
    object["warnings"] = jsonOf(document.warnings);
    return object;
}

std::string textOf(const Cells& cells, const std::string& alignment) {
    TextTable table(alignment);
    for (const auto& row : cells) {
        table.add(row);
    }
    return table.text();
}

/// The text of an object up to its last brace.
std::string openText(const Json& object) {
    const std::string text = dumped(object, false);
    return text.substr(0, text.rfind('}'));
}

/// "8 intervals, 6 of them flagged because an event touches them"
std::string countsOf(const QualityResults& results) {
    const std::size_t cycles = results.settings.cyclesPerInterval();
    if (results.intervals == 0) {
        const bool isShort = results.durationSeconds * results.settings.nominalHz < static_cast<double>(cycles);
        return isShort ? formatNumber(results.durationSeconds) + " s are shorter than an interval of " +
                             counted(cycles, "cycle")
                       : "no interval of " + counted(cycles, "cycle") + " is whole";
    }
    return counted(results.intervals, "interval") +
           (results.flagged == 0
                ? ", none of them flagged"
                : ", " + std::to_string(results.flagged) + " of them flagged because an event touches them");
}

/// "14 s", "12.5 min", "3 h".
std::string lengthText(double seconds) {
    constexpr double minute = 60.0;
    constexpr double hour = 3600.0;
    const auto [length, unit] = seconds < 2.0 * minute ? std::pair(1.0, " s")
                                : seconds < 2.0 * hour ? std::pair(minute, " min")
                                                       : std::pair(hour, " h");
    return formatNumber(seconds / length, 4) + unit;
}

/// Where the declared voltage rests on some of the phases; empty when they agree within 10 %.
std::string remarkOnPhases(const QualityResults& results) {
    constexpr double agreement = 0.9;
    double lowest = std::numeric_limits<double>::infinity();
    double highest = 0.0;
    std::vector<std::string> levels;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const std::string name(channelNames[phase]);
        const auto at = findQuantity(results.quantities, name);
        if (const Statistics s = at ? statisticsOf(results.values[*at]) : Statistics(); s.count > 0) {
            lowest = std::min(lowest, s.mean);
            highest = std::max(highest, s.mean);
            levels.push_back(name + " " + formatNumber(s.mean, 4) + " V");
        }
    }
    return lowest >= agreement * highest ? ""
                                         : "The voltages differ by more than 10 %: " + joined(levels) +
                                               " on average. The declared voltage is that of phases of at least 80 % "
                                               "of the highest; --declared V if that is wrong.";
}

std::string limitText(const std::optional<double>& limit) {
    return limit ? formatNumber(*limit) : "";
}

}  // namespace

std::string remarkOnEvents(const QualityResults& results) {
    const auto worst = std::find_if(results.events.begin(), results.events.end(),
                                    [](const Event& event) { return event.isVoltageEvent(); });
    if (results.events.empty()) {
        return {};
    }
    const Event& shown = worst == results.events.end() ? results.events.front() : *worst;
    const std::size_t others = results.events.size() - 1;
    return "There was an event: " + describe(shown) + (others == 0 ? "" : ", and " + std::to_string(others) + " more") +
           ". rt305 quality lists events.";
}

std::string describe(const Event& event) {
    return wordsFor(event.kind) + " of " + joined(phasesOf(event)) + (event.isVoltageEvent() ? " to " : " by ") +
           formatFixed(event.percent, 1) + " % for " + formatFixed(event.durationSeconds, 3) + " s at " +
           formatFixed(event.startSeconds, 3) + " s";
}

Cells eventCells(const QualityResults& results) {
    const auto [factor, prefix] = metricPrefixFor(results.settings.declaredVolts);
    const int decimals = decimalsFor(results.settings.declaredVolts / factor, 5);
    Cells cells{{"Event", "Start, s", "Duration, s", "Phases", std::string(prefix) + "V", "%", "Jump, deg", ""}};
    for (const Event& event : results.events) {
        cells.push_back({wordsFor(event.kind), formatFixed(event.startSeconds, 4),
                         formatFixed(event.durationSeconds, 4), joined(phasesOf(event)),
                         formatFixed(event.volts / factor, decimals), formatFixed(event.percent, 1),
                         std::isnan(event.jumpDegrees) ? "" : formatFixed(event.jumpDegrees, 1),
                         event.isCut                          ? "not all of it is recorded"
                         : event.kind == EventKind::transient ? "% of the crest"
                                                              : ""});
    }
    return results.events.empty() ? Cells{} : cells;
}

ResultTable statisticsTable(const QualityResults& results) {
    ResultTable table{
        .name = "statistics",
        .title = "Intervals of " + counted(results.settings.cyclesPerInterval(), "cycle"),
        .columns = {
            {"lowest", "lowest", ""}, {"mean", "mean", ""}, {"highest_95", "95 %", ""}, {"highest", "highest", ""}}};
    for (std::size_t i = 0; i < results.values.size(); ++i) {
        const IntervalQuantity& quantity = results.quantities[i];
        if (const Statistics s = statisticsOf(results.values[i]); s.count > 0) {
            table.addRow({quantity.key, quantity.key, quantity.unit == "1" ? "" : quantity.unit},
                         {s.lowest, s.mean, s.highest95, s.highest});
        }
    }
    return table;
}

Cells verdictCells(const QualityDocument& document) {
    Cells cells{{"Quantity", "Lower", "Upper", "Wanted, %", "Inside, %", "Intervals", "Worst", ""}};
    for (const Verdict& verdict : document.verdicts) {
        const bool hasValues = verdict.intervals > 0;
        cells.push_back({verdict.limit.quantity, limitText(verdict.limit.lower), limitText(verdict.limit.upper),
                         formatNumber(verdict.limit.percent), hasValues ? formatFixed(verdict.insidePercent, 2) : "-",
                         std::to_string(verdict.intervals), hasValues ? verdict.channel : "",
                         !hasValues         ? (verdict.flagged > 0 ? "all intervals are flagged" : "not measured")
                         : verdict.isKept() ? "kept"
                                            : "NOT KEPT"});
    }
    return cells;
}

std::vector<std::string> qualityRemarks(const QualityDocument& document) {
    std::vector<std::string> remarks;
    const QualityResults& results = document.results;
    constexpr double tenMinutes = 600.0;
    constexpr double secondsOfDay = 86400.0;
    if (results.durationSeconds < tenMinutes && results.settings.hasVoltages()) {
        remarks.emplace_back(
            "The recording is shorter than 10 minutes: what is given for 10 minutes (mean values, Pst, Plt) is that of "
            "all of it" +
            std::string(results.durationSeconds < 10.0 ? "; flicker needs more than 10 s." : "."));
    }
    if (const double days = document.limits.days; results.durationSeconds < days * secondsOfDay) {
        remarks.push_back("A verdict by " + document.limits.name + " needs " + formatNumber(days) +
                          " days; this recording is too short for one and judged on what it has, " +
                          lengthText(results.durationSeconds) + ".");
    }
    if (const std::string remark = remarkOnPhases(results); !document.isDeclaredKnown && !remark.empty()) {
        remarks.push_back(remark);
    }
    return remarks;
}

void writeQuality(const QualityDocument& document, OutputForm form, bool styled, std::ostream& out) {
    if (form == OutputForm::json) {
        out << dumped(jsonOf(document), true);
        return;
    }
    const QualityResults& results = document.results;
    const QualitySettings& settings = results.settings;
    out << shown(document.recording.file) << '\n'
        << formatNumber(results.durationSeconds, 9) << " s at " << formatNumber(settings.rateHz) << " Hz"
        << (settings.startSeconds > 0.0 ? " from " + formatNumber(settings.startSeconds, 9) + " s on" : "") << ", "
        << document.content << '\n';
    out << formatNumber(settings.nominalHz, 4) << " Hz";
    if (settings.hasVoltages()) {
        out << ", declared " << formatFixed(settings.declaredVolts, decimalsFor(settings.declaredVolts, 5)) << " V"
            << (document.isDeclaredKnown ? "" : ", the usual level of its first cycles; --declared V if that is wrong");
    }
    out << "\n\n"
        << (results.events.empty() ? std::string(settings.hasVoltages() ? "No events\n" : "No voltages, so no events\n")
                                   : textOf(eventCells(results), "lrrlrrrl"))
        << '\n'
        << (results.intervals > 0 ? textOf(statisticsTable(results), styled) : "") << countsOf(results) << '\n';
    if (!document.verdicts.empty()) {
        out << '\n' << shown(document.limits.name) << '\n' << textOf(verdictCells(document), "lrrrrrll");
    }
    out << (document.remarks.empty() ? "" : "\n");
    for (const std::string& remark : document.remarks) {
        out << wrapped(shown(remark), 100);
    }
}

QualityRowWriter::QualityRowWriter(const QualityDocument& document, QualityRows rows, OutputForm form,
                                   const QualitySettings& settings, std::ostream& out)
    : file_(document.recording.file),
      origin_(openText(originOf(document.recording, document.options))),
      rows_(rows),
      isCsv_(form == OutputForm::csv),
      settings_(settings),
      out_(out) {
    if (rows_ == QualityRows::halfCycles) {
        keys_ = {"frequency", "rocof"};
        for (std::size_t channel = 0; channel < channelTotal; ++channel) {
            if (settings_.measures(channel)) {
                keys_.emplace_back(channelNames[channel]);
            }
        }
    } else {
        for (const IntervalQuantity& quantity : quantitiesOf(settings_)) {
            keys_.push_back(quantity.key);
        }
    }
    if (isCsv_) {
        out_ << "file,kind,start,duration,flagged,partial";
        for (const std::string& key : keys_) {
            out_ << ',' << key;
        }
        out_ << '\n';
    }
}

void QualityRowWriter::writeLine(const std::string& kind, const std::string& values) {
    out_ << origin_ << R"(,"kind":")" << kind << "\"," << std::string_view(values).substr(1);
}

void QualityRowWriter::writeRow(const std::string& kind, double start, double duration,
                                const std::vector<double>& values, const Interval* interval) {
    if (isCsv_) {
        out_ << csvField(shown(file_)) << ',' << kind << ',' << formatNumber(start, 12) << ','
             << formatNumber(duration, 9) << ',' << (interval != nullptr && interval->isFlagged) << ','
             << (interval != nullptr && interval->isPartial);
        for (const double value : values) {
            out_ << ',' << (std::isnan(value) ? "" : formatNumber(value, 7));
        }
        out_ << '\n';
        return;
    }
    Json line{{"start", start}, {"duration", duration}};
    if (interval != nullptr) {
        line["flagged"] = interval->isFlagged;
        line["partial"] = interval->isPartial;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!std::isnan(values[i])) {
            line[keys_[i]] = values[i];
        }
    }
    writeLine(kind, dumped(line, false));
}

void QualityRowWriter::write(const HalfCycle& cycle) {
    std::vector<double> values{cycle.frequencyHz, cycle.rocof};
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (settings_.measures(channel)) {
            values.push_back(cycle.rms[channel]);
        }
    }
    writeRow("half_cycle", cycle.seconds - cycle.cycleSeconds / 2.0, cycle.cycleSeconds, values, nullptr);
}

void QualityRowWriter::write(const Interval& interval) {
    const bool isWanted =
        (interval.length == IntervalLength::cycles && rows_ == QualityRows::cycles) ||
        (interval.length == IntervalLength::threeSeconds && rows_ == QualityRows::threeSeconds) ||
        (interval.length == IntervalLength::tenMinutes && rows_ == QualityRows::tenMinutes) ||
        (interval.length == IntervalLength::tenSeconds && !isCsv_ && rows_ != QualityRows::halfCycles);
    if (isWanted) {
        writeRow(std::string(nameOf(interval.length)), interval.startSeconds, interval.durationSeconds, interval.values,
                 &interval);
    }
}

QualityListener QualityRowWriter::listener() {
    QualityListener listener;
    listener.interval = [this](const Interval& interval) { write(interval); };
    if (rows_ == QualityRows::halfCycles) {
        listener.halfCycle = [this](const HalfCycle& cycle) { write(cycle); };
    }
    if (!isCsv_) {
        listener.event = [this](const Event& event) {
            Json line = jsonOf(event);
            line["event"] = line["kind"];
            line.erase("kind");
            writeLine("event", dumped(line, false));
        };
    }
    return listener;
}

void QualityRowWriter::finish(const QualityDocument& document) {
    if (!isCsv_ && !document.verdicts.empty()) {
        writeLine("verdict", dumped(verdictOf(document), false));
    }
}

}  // namespace rt305
