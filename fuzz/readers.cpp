// File readers of the host tool on files that nobody would write. A reader is one line of the table.

#include <cmath>
#include <string>
#include <string_view>

#include "bytes.h"
#include "csv_reader.h"
#include "failure.h"
#include "recording.h"
#include "require.h"

namespace {

using fuzz::Bytes;
using fuzz::require;
using rt305::Column;
using rt305::Recording;

constexpr Recording (*readers[])(std::string_view text) = {
    [](std::string_view text) { return rt305::readCsv(text, "input"); },
    [](std::string_view text) { return rt305::readCsv(text, "input", 10000.0); },
};

/// What the rest of the tool relies on.
void requireConsistent(const Recording& recording) {
    require(recording.length > 0, "a recording has samples");
    require(recording.rateHz >= 0.0 && std::isfinite(recording.rateHz), "a rate is a number");
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
