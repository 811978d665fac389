#include "output/recording_summary.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/text.h"
#include "base/text_table.h"
#include "recording/channel_assignment.h"

namespace rt305 {

namespace {

double durationOf(const Segment& segment) {
    return static_cast<double>(segment.count) / segment.rateHz;
}

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
        facts.add({"Duration", formatNumber(durationOf(recording.segments[0])) + " s"});
    } else {
        facts.add({"Rates", recording.rateOrigin});
    }
    return facts.text();
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
        const double start = recording.seconds[segment.first];
        std::string gap;
        if (i > 0) {
            const Segment& previous = recording.segments[i - 1];
            const double lost = start - recording.seconds[previous.first] - durationOf(previous);
            gap = std::fabs(lost) * segment.rateHz > 0.5 ? formatNumber(lost) : "";
        }
        table.add({std::to_string(i + 1), std::to_string(segment.first + 1), std::to_string(segment.count),
                   formatNumber(segment.rateHz), formatNumber(start), gap, i == measured ? "measured by default" : ""});
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

std::vector<std::string> rangeCells(const Column& column) {
    double smallest = std::numeric_limits<double>::quiet_NaN();
    double largest = smallest;
    for (const double x : column.samples) {
        smallest = std::fmin(smallest, x);
        largest = std::fmax(largest, x);
    }
    return TextTable::numbers({smallest, largest, meanOf(column.samples)});
}

std::string reportColumns(const Recording& recording, const Assignment& assignment) {
    TextTable table("rllrrrrrlll");
    table.add({"No.", "Column", "Unit", "Minimum", "Maximum", "Mean", "Missing", "Clipped", "Side", "Channel", ""});
    for (std::size_t i = 0; i < recording.columns.size(); ++i) {
        const Column& column = recording.columns[i];
        const auto taken = std::find(assignment.columns.begin(), assignment.columns.end(), i);
        const auto channel = static_cast<std::size_t>(taken - assignment.columns.begin());
        const bool isTaken = channel < channelTotal;
        const auto range = rangeCells(column);
        table.add({std::to_string(i + 1), column.name, column.unit, range[0], range[1], range[2],
                   countOrNothing(countMissing(column.samples)), countOrNothing(countClipped(column.samples)),
                   sideOf(column.transformer), isTaken ? std::string(assignment.nameOf(channel)) : "-",
                   isTaken ? assignment.reasons[channel] : ""});
    }
    return '\n' + table.text();
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

}  // namespace rt305
