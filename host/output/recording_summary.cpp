#include "output/recording_summary.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "base/text.h"
#include "base/text_table.h"
#include "output/json.h"
#include "recording/channel_assignment.h"

namespace rt305 {

namespace {

std::string reportFacts(const Recording& recording) {
    TextTable facts("ll");
    facts.add({"Recording", recording.source});
    facts.add({"Format", recording.format});
    for (const auto& [label, text] : recording.facts) {
        facts.add({label, text});
    }
    facts.add({"Samples", std::to_string(recording.length)});
    if (recording.segments.empty()) {
        facts.add({"Rate", "unknown: no time column, give --rate HZ"});
    } else if (recording.segments.size() == 1) {
        facts.add({"Rate", formatNumber(recording.segments[0].rateHz, 9) + " Hz, " + recording.rateOrigin});
        facts.add({"Duration", formatNumber(recording.segments[0].durationSeconds()) + " s"});
    } else {
        facts.add({"Rates", recording.rateOrigin});
    }
    return facts.text();
}

/// The time between the segment before and this one, in s; 0 below half a sample.
double gapBefore(const Recording& recording, std::size_t i) {
    if (i == 0) {
        return 0.0;
    }
    const Segment& previous = recording.segments[i - 1];
    const double lost =
        recording.seconds[recording.segments[i].first] - recording.seconds[previous.first] - previous.durationSeconds();
    return std::fabs(lost) * recording.segments[i].rateHz > 0.5 ? lost : 0.0;
}

/// A row for each of several segments, with the gap before it.
std::string reportSegments(const Recording& recording) {
    if (recording.segments.size() < 2) {
        return {};
    }
    const std::size_t measured = mainSegment(recording);
    TextTable table("rrrrrrl");
    table.add({"Segment", "First", "Samples", "Rate, Hz", "Start, s", "Gap before, s", ""});
    for (std::size_t i = 0; i < recording.segments.size(); ++i) {
        const Segment& segment = recording.segments[i];
        const double gap = gapBefore(recording, i);
        table.add({std::to_string(i + 1), std::to_string(segment.first + 1), std::to_string(segment.count),
                   formatNumber(segment.rateHz), formatNumber(recording.seconds[segment.first]),
                   gap == 0.0 ? "" : formatNumber(gap), i == measured ? "measured by default" : ""});
    }
    return '\n' + table.text();
}

std::string sideOf(const Transformer& transformer) {
    if (transformer.side == Transformer::Side::unknown) {
        return "";
    }
    return std::string(transformer.side == Transformer::Side::primary ? "primary " : "secondary ") +
           formatNumber(transformer.primary) + ":" + formatNumber(transformer.secondary);
}

std::string countOrNothing(std::size_t count) {
    return count == 0 ? "" : std::to_string(count);
}

/// Smallest, largest and mean sample; NaN without samples.
std::vector<double> rangeOf(const Column& column) {
    double smallest = std::numeric_limits<double>::quiet_NaN();
    double largest = smallest;
    for (const double x : column.samples) {
        smallest = std::fmin(smallest, x);
        largest = std::fmax(largest, x);
    }
    return {smallest, largest, meanOf(column.samples)};
}

/// The channel that a column is assigned to.
std::optional<std::size_t> channelOf(std::size_t column, const Assignment& assignment) {
    const auto taken = std::find(assignment.columns.begin(), assignment.columns.end(), column);
    const auto channel = static_cast<std::size_t>(taken - assignment.columns.begin());
    return channel < channelTotal ? std::optional(channel) : std::nullopt;
}

std::string reportColumns(const Recording& recording, const Assignment& assignment) {
    const bool hasSkew = std::any_of(recording.columns.begin(), recording.columns.end(),
                                     [](const Column& column) { return column.delaySeconds != 0.0; });
    TextTable table(hasSkew ? "rllrrrrrrlll" : "rllrrrrrlll");
    const auto add = [&table, hasSkew](std::vector<std::string> cells, const std::string& skew) {
        constexpr std::ptrdiff_t skewPlace = 8;
        cells.insert(cells.begin() + skewPlace, hasSkew ? 1 : 0, skew);
        table.add(cells);
    };
    add({"No.", "Column", "Unit", "Minimum", "Maximum", "Mean", "Missing", "Clipped", "Side", "Channel", ""},
        "Skew, us");
    for (std::size_t i = 0; i < recording.columns.size(); ++i) {
        const Column& column = recording.columns[i];
        const auto channel = channelOf(i, assignment);
        const auto range = TextTable::numbers(rangeOf(column));
        add({std::to_string(i + 1), column.name, column.unit, range[0], range[1], range[2],
             countOrNothing(countMissing(column.samples)), countOrNothing(countClipped(column.samples)),
             sideOf(column.transformer), channel ? std::string(assignment.nameOf(*channel)) : "-",
             channel ? assignment.reasons[*channel] : ""},
            formatNumber(1e6 * column.delaySeconds));
    }
    return '\n' + table.text();
}

Json segmentsOf(const Recording& recording) {
    Json segments = Json::array();
    for (std::size_t i = 0; i < recording.segments.size(); ++i) {
        const Segment& segment = recording.segments[i];
        segments.push_back({{"segment", i + 1},
                            {"first", segment.first + 1},
                            {"samples", segment.count},
                            {"rate", segment.rateHz},
                            {"start", recording.seconds.empty() ? 0.0 : recording.seconds[segment.first]},
                            {"gap_before", gapBefore(recording, i)}});
    }
    return segments;
}

Json transformerOf(const Transformer& transformer) {
    if (transformer.side == Transformer::Side::unknown) {
        return {};
    }
    return {{"side", transformer.side == Transformer::Side::primary ? "primary" : "secondary"},
            {"primary", transformer.primary},
            {"secondary", transformer.secondary}};
}

Json columnsOf(const Recording& recording, const Assignment& assignment) {
    Json columns = Json::array();
    for (std::size_t i = 0; i < recording.columns.size(); ++i) {
        const Column& column = recording.columns[i];
        const auto channel = channelOf(i, assignment);
        const auto range = rangeOf(column);
        columns.push_back({{"number", i + 1},
                           {"name", column.name},
                           {"unit", column.unit},
                           {"minimum", range[0]},
                           {"maximum", range[1]},
                           {"mean", range[2]},
                           {"missing", countMissing(column.samples)},
                           {"clipped", countClipped(column.samples)},
                           {"skew", column.delaySeconds},
                           {"transformer", transformerOf(column.transformer)},
                           {"channel", channel ? Json(assignment.nameOf(*channel)) : Json()},
                           {"reason", channel ? Json(assignment.reasons[*channel]) : Json()},
                           {"fault", column.fault.empty() ? Json() : Json(column.fault)}});
    }
    return columns;
}

}  // namespace

std::string reportRecording(const Recording& recording, const PerChannel<std::string>& chosenColumns) {
    const Assignment assignment = assignColumns(recording, chosenColumns);
    std::string faults;
    for (const Column& column : recording.columns) {
        faults += column.fault.empty() ? "" : column.fault + "\n";
    }
    return reportFacts(recording) + reportSegments(recording) + reportColumns(recording, assignment) +
           (faults.empty() ? "" : "\nNot readable as samples:\n" + faults);
}

std::string recordingDocument(const Recording& recording, const PerChannel<std::string>& chosenColumns,
                              const GivenOptions& options) {
    Json document = originOf(factsOf(recording, std::nullopt, recording.nominalHz), options);
    document["samples"] = recording.length;
    document["rate_origin"] = recording.rateOrigin.empty() ? Json() : Json(recording.rateOrigin);
    document["segments"] = segmentsOf(recording);
    document["columns"] = columnsOf(recording, assignColumns(recording, chosenColumns));
    document["warnings"] = jsonOf(recording.warnings);
    return dumped(document, true);
}

}  // namespace rt305
