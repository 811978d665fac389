// The file readers of the tool on arbitrary files. Each reader is one line of the table.

#include <cmath>
#include <string>
#include <string_view>

#include "base/failure.h"
#include "base/text_encoding.h"
#include "bytes.h"
#include "reading/comtrade_file.h"
#include "reading/comtrade_reader.h"
#include "reading/csv_reader.h"
#include "reading/sound_reader.h"
#include "recording/channel_assignment.h"
#include "recording/recording.h"
#include "require.h"

namespace {

using fuzz::Bytes;
using fuzz::require;
using rt305::Column;
using rt305::Recording;
using rt305::Segment;

/// Configuration and data of a record, separated by the first NUL.
Recording readPair(std::string_view content) {
    const std::size_t end = std::min(content.find('\0'), content.size());
    return rt305::readComtrade(
        {"input.cfg", content.substr(0, end), "input.dat", content.substr(std::min(end + 1, content.size())), {}, {}});
}

Recording readSoundOrCsv(std::string_view content) {
    return rt305::isSound(content) ? rt305::readSound(content, "input") : rt305::readCsv(content, "input");
}

constexpr Recording (*readers[])(std::string_view content) = {
    [](std::string_view content) { return rt305::readCsv(content, "input"); },
    [](std::string_view content) { return rt305::readCsv(content, "input", {.rateHz = 10000.0}); },
    [](std::string_view content) { return rt305::readComtrade(rt305::splitComtradeFile(content, "input")); },
    readPair,
    readSoundOrCsv,
};

/// What the rest of the tool relies on in a recording.
void requireConsistent(const Recording& recording) {
    require(recording.length > 0, "a recording has samples");
    require(recording.seconds.empty() || recording.seconds.size() == recording.length,
            "all samples have a time or none has");
    std::size_t next = 0;
    for (const Segment& segment : recording.segments) {
        require(segment.first == next && segment.count > 0, "segments are contiguous");
        require(segment.rateHz > 0.0 && std::isfinite(segment.rateHz), "a rate is a positive number");
        next += segment.count;
    }
    require(next == (recording.segments.empty() ? 0 : recording.length), "segments contain all samples");
    for (const Column& column : recording.columns) {
        require(column.samples.size() == (column.fault.empty() ? recording.length : 0),
                "a column has all samples or a fault");
        require(samplesInBaseUnit(column).size() == column.samples.size(),
                "a change of unit keeps the number of samples");
        require(rt305::countMissing(column.samples) + rt305::countClipped(column.samples) <= column.samples.size(),
                "missing and clipped samples are counted once");
        const std::string name = rt305::toUtf8(column.name);
        require(rt305::toUtf8(name) == name, "a valid name is not converted again");
    }
    if (!recording.segments.empty()) {
        const Segment& chosen = recording.segments[mainSegment(recording)];
        require(partOf(recording, chosen, 0.0, 0.0).count == chosen.count, "a segment is a part of itself");
    }
    assignColumns(recording);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const auto read = readers[bytes.upTo(std::size(readers) - 1)];
    try {
        requireConsistent(read(bytes.rest()));
    } catch (const rt305::Failure& failure) {
        require(failure.what()[0] != '\0', "a refusal has a message");
    }
    return 0;
}
