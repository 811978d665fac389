// File readers of the host tool on files that nobody would write. A reader is one line of the table.

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

#include "bytes.h"
#include "channel_assignment.h"
#include "comtrade_file.h"
#include "comtrade_reader.h"
#include "csv_reader.h"
#include "failure.h"
#include "recording.h"
#include "require.h"
#include "sound_reader.h"

namespace {

using fuzz::Bytes;
using fuzz::require;
using rt305::Column;
using rt305::Recording;

/// A configuration and its data, the one cut from the other at the first record separator of ASCII.
rt305::ComtradeParts pairIn(std::string_view text) {
    const std::size_t end = std::min(text.find('\x1e'), text.size());
    return {"input.cfg", text.substr(0, end), "input.dat", text.substr(std::min(end + 1, text.size())), {}, {}};
}

constexpr Recording (*readers[])(std::string_view text) = {
    [](std::string_view text) { return rt305::readCsv(text, "input"); },
    [](std::string_view text) { return rt305::readCsv(text, "input", {.rateHz = 10000.0}); },
    [](std::string_view text) { return rt305::readComtrade(pairIn(text)); },
    [](std::string_view text) { return rt305::readComtrade(rt305::cutComtradeFile(text, "input.cff")); },
    [](std::string_view text) { return rt305::readSound(text, "input.wav"); },
};

/// What the rest of the tool relies on.
void requireConsistent(const Recording& recording) {
    require(recording.length > 0, "a recording has samples");
    std::size_t next = 0;
    for (const rt305::Segment& segment : recording.segments) {
        require(segment.first == next && segment.count > 0, "segments follow each other");
        require(segment.rateHz > 0.0 && std::isfinite(segment.rateHz), "a rate is a positive number");
        next += segment.count;
    }
    require(next == 0 || next == recording.length, "segments are all of the samples");
    for (const Column& column : recording.columns) {
        require(column.samples.size() == (column.fault.empty() ? recording.length : 0),
                "a column has all samples or a fault");
        if (column.fault.empty()) {
            require(samplesInBaseUnit(column).size() == recording.length, "a change of unit keeps every sample");
        }
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
        require(failure.what()[0] != '\0', "a refusal has its reason");
    }
    return 0;
}
