#include "writing/conversion.h"

#include <cmath>

#include "base/failure.h"
#include "base/text.h"
#include "base/time_stamp.h"
#include "base/units.h"
#include "measuring/nominal_frequency.h"
#include "recording/channel_assignment.h"
#include "signal/resampler.h"

namespace rt305 {

namespace {

Segment partToWrite(const Recording& recording, const Conversion& conversion) {
    if (recording.segments.empty()) {
        failInput(recording.source + ": there is no time column; give --rate HZ");
    }
    const std::size_t number = conversion.segment.value_or(mainSegment(recording) + 1);
    if (number < 1 || number > recording.segments.size()) {
        failInput(recording.source + ": there is no segment " + std::to_string(number) + " in " +
                  std::to_string(recording.segments.size()));
    }
    return partOf(recording, recording.segments[number - 1], conversion.startSeconds, conversion.durationSeconds);
}

/// The columns to write, by their places.
std::vector<std::size_t> placesOf(const Recording& recording, const std::vector<std::string>& only) {
    std::vector<std::size_t> places;
    for (const std::string& name : only) {
        places.push_back(findColumn(recording, name));
        if (const Column& column = recording.columns[places.back()]; !column.fault.empty()) {
            failInput(column.fault);
        }
    }
    for (std::size_t i = 0; only.empty() && i < recording.columns.size(); ++i) {
        if (recording.columns[i].fault.empty()) {
            places.push_back(i);
        }
    }
    if (places.empty()) {
        failInput(recording.source + ": no column has samples");
    }
    return places;
}

/// The date of the part's first sample in place of that of the recording.
void moveStart(std::vector<std::pair<std::string, std::string>>& facts, double seconds) {
    for (auto& [label, text] : facts) {
        const auto stamp = label == "Start" ? parseTimeStamp(text) : std::nullopt;
        if (stamp && seconds != 0.0) {
            text = isoTime(*stamp + std::llround(seconds * 1e9));
        }
    }
}

/// The nominal frequency by the fundamental of the first column of V or A that has one.
double nominalOf(const Recording& recording) {
    for (const Column& column : recording.columns) {
        const Quantity quantity = unitOf(column.unit).quantity;
        if (quantity != Quantity::voltage && quantity != Quantity::current) {
            continue;
        }
        if (const double fundamental = fundamentalOf(column.samples, recording.segments[0].rateHz); fundamental > 0.0) {
            return nominalFrequencyFor(fundamental);
        }
    }
    return 0.0;
}

}  // namespace

Recording converted(const Recording& recording, const Conversion& conversion) {
    constexpr double mostSamples = 1e8;
    const Segment part = partToWrite(recording, conversion);
    const double rateHz = conversion.rateHz.value_or(part.rateHz);
    const std::vector<std::size_t> places = placesOf(recording, conversion.only);
    if (conversion.rateHz && part.durationSeconds() * rateHz * static_cast<double>(places.size()) > mostSamples) {
        failInput(recording.source + ": at " + formatNumber(rateHz) +
                  " Hz there are more than 100 million samples; write a part of it");
    }
    Recording result{.source = recording.source, .nominalHz = recording.nominalHz, .facts = recording.facts};
    result.nominalHz = conversion.nominalHz > 0.0 ? conversion.nominalHz : recording.nominalHz;
    moveStart(result.facts, recording.seconds[part.first] - recording.seconds[0]);
    for (const std::size_t place : places) {
        Column column = recording.columns[place];
        column.samples = resampled(recording.columns[place].samples, part.first, part.count, part.rateHz, rateHz);
        for (const auto& [old, name] : conversion.names) {
            column.name = findColumn(recording, old) == place ? name : column.name;
        }
        result.columns.push_back(std::move(column));
    }
    result.length = result.columns[0].samples.size();
    result.setRate(rateHz, "converted");
    result.nominalHz = result.nominalHz > 0.0 ? result.nominalHz : nominalOf(result);
    return result;
}

}  // namespace rt305
