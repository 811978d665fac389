// The tool on arbitrary files: readers, measurement, every form of output and the page. Each reader is one line of the
// table. FEWEST_BYTES is defined above 0 for long files.

#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>

#include "base/failure.h"
#include "base/text_encoding.h"
#include "bytes.h"
#include "measuring/full_measurement.h"
#include "measuring/library.h"
#include "measuring/measure_all.h"
#include "output/document.h"
#include "output/full_document.h"
#include "output/quality_document.h"
#include "output/quality_settings.h"
#include "output/recording_summary.h"
#include "page/report.h"
#include "quality/results.h"
#include "reading/comtrade_file.h"
#include "reading/comtrade_reader.h"
#include "reading/csv_reader.h"
#include "reading/gzip.h"
#include "reading/recording_reader.h"
#include "reading/sound_reader.h"
#include "recording/channel_assignment.h"
#include "recording/recording.h"
#include "require.h"
#include "writing/comtrade_writer.h"
#include "writing/conversion.h"
#include "writing/sample_writers.h"

namespace {

using fuzz::Bytes;
using fuzz::require;
using rt305::Column;
using rt305::OutputForm;
using rt305::Recording;
using rt305::Segment;

/// Appends a row: `block` with `number` for each byte 1 and the sample of a wave for each byte 2, which is a third of a
/// cycle before that of the byte 2 in front of it. Any other byte stays.
void appendRow(std::string& content, std::string_view block, std::size_t number) {
    constexpr double cycle = 200.0;
    double angle = 6.283185307179586 / cycle * static_cast<double>(number);
    constexpr std::string_view marks = "\1\2";
    for (std::size_t at = 0; at < block.size(); ++at) {
        const std::size_t mark = std::min(block.find_first_of(marks, at), block.size());
        content += block.substr(at, mark - at);
        at = mark;
        if (mark < block.size() && block[mark] == 1) {
            content += std::to_string(number);
        } else if (mark < block.size()) {
            content += std::to_string(std::lround(1e4 * std::sin(angle)));
            angle -= 6.283185307179586 / 3.0;
        }
    }
}

/// The content of a file of at least `fewest` bytes: the input with some of its lines, or of the bytes after its first
/// NUL, over and over.
std::string contentOf(Bytes& bytes, std::size_t fewest) {
    if (fewest == 0) {
        return bytes.rest();
    }
    const bool byBytes = bytes.flag();
    const std::size_t before = bytes.upTo(255);
    const std::size_t repeated = bytes.upTo(255);
    const std::string input = bytes.rest() + "\n";
    const auto skip = [&](std::size_t at, std::size_t n) {
        for (; !byBytes && n > 0 && at < input.size(); --n) {
            at = std::min(input.find('\n', at), input.size() - 1) + 1;
        }
        return std::min(at + n, input.size());
    };
    const std::size_t begin =
        std::min(skip(byBytes ? std::min(input.find('\0'), input.size()) : 0, before), input.size() - 1);
    const std::size_t end = repeated == 0 ? input.size() : skip(begin, repeated);
    std::string content = input.substr(0, begin);
    for (std::size_t row = 0; content.size() < fewest; ++row) {
        appendRow(content, std::string_view(input).substr(begin, end - begin), row);
    }
    return content + input.substr(end);
}

/// Configuration and data of a record, separated by the first NUL.
Recording readPair(const std::string& content) {
    const std::size_t end = std::min(content.find('\0'), content.size());
    return rt305::readComtrade(
        {"input.cfg", content.substr(0, end), "input.dat", content.substr(std::min(end + 1, content.size())), {}, {}});
}

Recording readByContent(const std::string& file) {
    std::string content = rt305::isGzip(file) ? rt305::decompressed(file, "input") : file;
    if (rt305::isSound(content)) {
        return rt305::readSound(content, "input");
    }
    rt305::convertUtf16(content);
    return rt305::readCsv(content, "input");
}

constexpr Recording (*readers[])(const std::string& content) = {
    [](const std::string& content) { return rt305::readCsv(content, "input"); },
    [](const std::string& content) { return rt305::readCsv(content, "input", {.rateHz = 10000.0}); },
    [](const std::string& content) { return rt305::readComtrade(rt305::splitComtradeFile(content, "input")); },
    readPair,
    readByContent,
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
        require(rt305::countMissing(column.samples) + rt305::countClipped(column.samples) <= column.samples.size(),
                "missing and clipped samples are counted once");
        const std::string name = rt305::toUtf8(column.name);
        require(rt305::toUtf8(name) == name, "a valid name is not converted again");
    }
    if (!recording.segments.empty()) {
        const Segment& chosen = recording.segments[mainSegment(recording)];
        require(partOf(recording, chosen, 0.0, 0.0).count == chosen.count, "a segment is a part of itself");
    }
}

/// Settings by the bits of a number.
rt305::MeasurementSettings settingsOf(std::size_t bits) {
    rt305::MeasurementSettings settings;
    settings.flags ^= bits & 1U ? RT305_4_FOUR_WIRE : 0;
    settings.flags |= bits & 2U ? RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_B : 0;
    settings.resample = (bits & 4U) == 0;
    settings.durationSeconds = bits & 8U ? 0.02 : 0.0;
    return settings;
}

constexpr OutputForm forms[] = {OutputForm::text,  OutputForm::json,    OutputForm::jsonLines, OutputForm::csv,
                                OutputForm::plain, OutputForm::csvWide, OutputForm::raw};
constexpr std::size_t qualityChoice = std::size(forms) + 1;  // after the forms and the page

/// The samples of a column agree within `tolerance` times its largest.
void requireSameSamples(const Recording& written, const Recording& read, double tolerance) {
    require(read.length == written.length && read.columns.size() == written.columns.size(), "all samples are written");
    for (std::size_t c = 0; c < read.columns.size(); ++c) {
        const std::vector<double>& before = written.columns[c].samples;
        const std::vector<double>& after = read.columns[c].samples;
        require(after.size() == before.size(), "a written column is read");
        const double bound = tolerance * rt305::largestMagnitude(before);
        for (std::size_t i = 0; i < before.size(); ++i) {
            require(std::isnan(before[i]) ? std::isnan(after[i]) : std::fabs(after[i] - before[i]) <= bound,
                    "a written sample is read");
        }
    }
}

void requireComtrade(const Recording& written, rt305::SampleForm form, double tolerance) {
    std::ostringstream out;
    rt305::writeComtradeFile(written, form, out);
    requireSameSamples(written, rt305::readComtrade(rt305::splitComtradeFile(out.str(), "output")), tolerance);
}

/// Writes as `rt305 convert` does, and reads it again. Rounding is half a count, and that of the multiplier's text.
constexpr void (*conversions[])(const Recording& written) = {
    [](const Recording& written) {
        std::ostringstream out;
        rt305::writeSampleTable(written, out);
        requireSameSamples(written, rt305::readCsv(out.str(), "output"), 0.0);
    },
    [](const Recording& written) { requireComtrade(written, rt305::SampleForm::ascii, 0.501 / 99998.0); },
    [](const Recording& written) { requireComtrade(written, rt305::SampleForm::binary32, 0.501 / 2147483647.0); },
    [](const Recording& written) { requireComtrade(written, rt305::SampleForm::float32, 1e-7); },
    [](const Recording& written) {
        requireSameSamples(written, rt305::readSound(rt305::soundFile(written), "output"), 0.0);
    },
    [](const Recording& written) {
        std::ostringstream out;
        rt305::writeNumpy(written, out);
    },
};

/// What `rt305 convert` writes can be read again, if each column has a sample.
void requireConverted(const Recording& recording, const rt305::MeasurementSettings& settings, std::size_t form) {
    Recording result =
        rt305::converted(recording, {.durationSeconds = settings.durationSeconds,
                                     .rateHz = settings.resample ? std::nullopt : std::optional(12800.0)});
    for (Column& column : result.columns) {
        column.name = "c" + column.name;  // names such as "8" would make the heading a row of numbers
    }
    const auto isEmpty = [&](const Column& column) { return rt305::countMissing(column.samples) == result.length; };
    if (std::any_of(result.columns.begin(), result.columns.end(), isEmpty)) {
        return;  // lines of CSV such as "0," could be numbers with decimal commas
    }
    conversions[form](result);
}

/// What `rt305 quality` does.
void requireQuality(Recording& recording, const rt305::MeasurementSettings& settings) {
    const rt305::RecordedPhases phases = rt305::recordedPhases(recording, settings);
    const rt305::QualitySettings quality =
        rt305::qualitySettings(recording, phases.measurement, phases.fromLineVoltages, {});
    rt305::QualityDocument document;
    document.results = rt305::analyse(phases.measurement.samples, quality, rt305::KeepTraces::no);
    document.remarks = rt305::qualityRemarks(document);
    std::ostringstream out;
    rt305::writeQuality(document, OutputForm::json, false, out);
    require(nlohmann::json::accept(out.str()), "JSON of quality is valid");
}

/// What the commands show of a recording: one of the forms, the page, the power quality, or another file.
void requireShown(Recording recording, const rt305::MeasurementSettings& settings, std::size_t shown) {
    const char* const other = std::getenv("RT305_4_LIBRARY");
    static const rt305::Library library(other != nullptr ? other : RT305_4_LIBRARY_FILE);
    require(!rt305::reportRecording(recording, {}).empty(), "info shows something");
    if (shown == qualityChoice) {
        return requireQuality(recording, settings);
    }
    if (shown > qualityChoice) {
        return requireConverted(recording, settings, shown - qualityChoice - 1);
    }
    const rt305::FullMeasurement full = rt305::prepare(recording, settings);
    rt305::FullResults results = rt305::measureAll(full, library);
    if (shown < std::size(forms)) {
        const OutputForm form = forms[shown];
        std::ostringstream out;
        rt305::write(rt305::fullDocument(recording, full, results), form, form == OutputForm::text, out);
        const bool isJson = form == OutputForm::json || form == OutputForm::jsonLines;
        require(!isJson || nlohmann::json::accept(out.str()), "JSON is valid");
        return;
    }
    rt305::addSpectraAndStatistics(results, full, library);
    const std::string page = rt305::reportOf(recording, full, results, {}, {}, "").page;
    require(rt305::toUtf8(page) == page, "a page is UTF-8");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const std::size_t choice = bytes.upTo(255);
    const std::size_t shown = bytes.upTo(qualityChoice + std::size(conversions));
    try {
        const Recording recording =
            rt305::completed(readers[choice % std::size(readers)](contentOf(bytes, FEWEST_BYTES)), {});
        requireConsistent(recording);
        requireShown(recording, settingsOf(choice / std::size(readers)), shown);
    } catch (const rt305::Failure& failure) {
        require(failure.what()[0] != '\0', "a refusal has a message");
    }
    return 0;
}
