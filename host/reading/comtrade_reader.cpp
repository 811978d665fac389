#include "reading/comtrade_reader.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <span>
#include <type_traits>
#include <utility>

#include "base/failure.h"
#include "base/lines.h"
#include "base/read_text.h"
#include "base/text.h"
#include "base/text_encoding.h"
#include "base/units.h"
#include "reading/sampling_intervals.h"
#include "toolkit/large_pages.h"

namespace rt305 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

constexpr std::string_view missingInAscii = "99999";
constexpr std::size_t statusBitsPerWord = 16;
constexpr double sameRate = 0.01;      // largest relative difference of the rates in one segment
constexpr double samePeak = 0.05;      // largest relative difference of a peak and the value that the header gives
constexpr double stampRange = 0x1p32;  // stamps are 32-bit numbers and wrap

/// The rows of a record.
struct Rows {
    std::vector<std::vector<double>> samples;  // by channel, scaled; NaN: missing
    std::vector<double> stamps;                // NaN: missing
    std::vector<Remark> warnings;

    std::size_t length() const { return stamps.size(); }
};

/// A little-endian number at any address.
template <class T>
T numberAt(std::string_view bytes, std::size_t at) {
    std::conditional_t<sizeof(T) == 2, std::uint16_t, std::uint32_t> bits = 0;
    for (std::size_t i = sizeof(T); i-- > 0;) {
        bits = static_cast<decltype(bits)>(bits << 8 | static_cast<unsigned char>(bytes[at + i]));
    }
    T number;
    std::memcpy(&number, &bits, sizeof(T));
    return number;
}

/// Reads the samples of a channel from records, scaled. The most negative number stands for a missing one.
template <class T>
void readSamples(std::string_view data, std::size_t at, std::size_t recordSize, const AnalogChannel& channel,
                 std::span<double> samples) {
    for (double& sample : samples) {
        const T number = numberAt<T>(data, at);
        const double raw = number == std::numeric_limits<T>::lowest() ? nan : static_cast<double>(number);
        sample = channel.multiplier * raw + channel.offset;
        at += recordSize;
    }
}

struct BinaryForm {
    std::size_t sampleSize;
    decltype(&readSamples<float>) read;
};

BinaryForm binaryFormOf(SampleForm form) {
    switch (form) {
        case SampleForm::binary32:
            return {4, readSamples<std::int32_t>};
        case SampleForm::float32:
            return {4, readSamples<float>};
        default:
            return {2, readSamples<std::int16_t>};
    }
}

/// Reads records of number, stamp, samples and status words.
Rows readBinaryRows(const ComtradeParts& parts, const ComtradeConfiguration& configuration, SampleForm form,
                    ReadText memory) {
    constexpr std::size_t stampOffset = 4;
    constexpr std::size_t headSize = 8;
    constexpr std::size_t rowsAtOnce = 4096;  // which the processor's cache holds
    const auto [sampleSize, read] = binaryFormOf(form);
    const std::size_t channels = configuration.analog.size();
    const std::size_t statusWords = (configuration.statusTotal + statusBitsPerWord - 1) / statusBitsPerWord;
    const std::size_t recordSize = headSize + sampleSize * channels + sizeof(std::uint16_t) * statusWords;
    const std::size_t length = parts.data.size() / recordSize;
    if (length == 0) {
        failInput(parts.dataName + ": holds " + counted(parts.data.size(), "byte") + ", but one record of " +
                  std::string(nameOf(form)) + " samples takes " + std::to_string(recordSize));
    }
    Rows rows{std::vector<std::vector<double>>(channels), {}, {}};
    coder::reserveLargePages(rows.stamps, length);
    for (std::vector<double>& samples : rows.samples) {
        coder::reserveLargePages(samples, length);
    }
    for (std::size_t first = 0; first < length; first += rowsAtOnce) {
        const std::size_t end = std::min(first + rowsAtOnce, length);
        for (std::size_t k = first; k < end; ++k) {
            const auto stamp = numberAt<std::uint32_t>(parts.data, k * recordSize + stampOffset);
            rows.stamps.push_back(stamp == std::numeric_limits<std::uint32_t>::max() ? nan : stamp);
        }
        for (std::size_t i = 0; i < channels; ++i) {
            rows.samples[i].resize(end);
            read(parts.data, first * recordSize + headSize + sampleSize * i, recordSize, configuration.analog[i],
                 std::span(rows.samples[i]).subspan(first, end - first));
        }
        memory.release(parts.data.data() + end * recordSize);
    }
    if (const std::size_t rest = parts.data.size() % recordSize; rest != 0) {
        rows.warnings.emplace_back(parts.dataName + ": byte " + std::to_string(length * recordSize) + ": the last " +
                                   counted(rest, "byte") + (rest == 1 ? " is" : " are") + " ignored: a record has " +
                                   counted(recordSize, "byte"));
    }
    return rows;
}

/// A field of a row of samples; NaN when it is missing.
double sampleOf(std::string_view field, std::size_t number, const std::string& here) {
    const auto value = field.empty() || field == missingInAscii ? nan : parseNumber(field);
    if (!value) {
        failInput(here + "field " + std::to_string(number) + ", " + inQuotes(field) + ", is not a number");
    }
    return *value;
}

/// Reads lines of number, stamp, samples and status values. A wrong number of status values is a warning, once; the
/// last line may be incomplete.
Rows readAsciiRows(const ComtradeParts& parts, const ComtradeConfiguration& configuration) {
    constexpr std::size_t headFields = 2;
    const std::size_t needed = headFields + configuration.analog.size();
    const std::size_t expected = needed + configuration.statusTotal;
    Rows rows;
    rows.samples.resize(configuration.analog.size());
    bool hasWarned = false;
    for (Lines lines(parts.data); lines.nextWithText();) {
        const auto fields = split(lines.line(), ',');
        const std::string here = parts.dataName + ":" + std::to_string(lines.number()) + ": ";
        const std::string counts =
            counted(fields.size(), "field") + ", but the configuration announces " + std::to_string(expected);
        if (fields.size() < needed) {
            if (!lines.areAllRead()) {
                failInput(here + counts);
            }
            rows.warnings.emplace_back(here + counts + "; this last line is ignored");
            break;
        }
        const bool endsWithComma = fields.size() == expected + 1 && fields.back().empty();
        if (fields.size() != expected && !endsWithComma && !std::exchange(hasWarned, true)) {
            rows.warnings.emplace_back(here + counts);
        }
        rows.stamps.push_back(fields[1].empty() ? nan : parseNumber(fields[1]).value_or(nan));
        for (std::size_t i = headFields; i < needed; ++i) {
            const AnalogChannel& channel = configuration.analog[i - headFields];
            rows.samples[i - headFields].push_back(channel.multiplier * sampleOf(fields[i], i + 1, here) +
                                                   channel.offset);
        }
    }
    if (rows.length() == 0) {
        failInput(parts.dataName + ": found no lines of samples");
    }
    return rows;
}

/// The steps between stamps, which wrap at 32 bits, in their place.
std::vector<double> stepsOf(std::vector<double> stamps) {
    for (std::size_t k = 0; k + 1 < stamps.size(); ++k) {
        const double step = stamps[k + 1] - stamps[k];
        stamps[k] = step < -stampRange / 2.0 ? step + stampRange : step;
    }
    stamps.pop_back();
    return stamps;
}

/// Steps with one rate: those before `end` that no run before it has.
struct RateRun {
    std::size_t end;
    double rateHz;
};

/// The rates of `total` steps by the rate lines; the last rate continues. Empty without rate lines.
std::vector<RateRun> ratesOfSteps(const std::vector<RateLine>& lines, std::size_t total) {
    std::vector<RateRun> runs;
    const auto extend = [&runs](std::size_t end, double rateHz) {
        if (end <= (runs.empty() ? 0 : runs.back().end)) {
            return;
        }
        if (runs.empty() || runs.back().rateHz != rateHz) {
            runs.push_back({end, rateHz});
        }
        runs.back().end = end;
    };
    for (const RateLine& line : lines) {
        extend(std::min(line.lastSample, total), line.rateHz);
    }
    if (!lines.empty()) {
        extend(total, lines.back().rateHz);
    }
    return runs;
}

/// The times and segments of a recording, from the rate lines and the time stamps of its rows. Step k is from row k to
/// row k + 1.
class TimeAxis {
public:
    TimeAxis(const ComtradeConfiguration& configuration, std::vector<double> stamps)
        : length_(stamps.size()),
          periods_(stepsOf(std::move(stamps))),
          rates_(ratesOfSteps(configuration.rates, periods_.size())),
          ratesAreFromStamps_(rates_.empty()) {
        std::size_t k = 0;
        for (const RateRun& run : rates_) {
            for (; k < run.end; ++k) {
                periods_[k] *= run.rateHz;
            }
        }
        intervals_ = samplingIntervalsOf(periods_);
        if (ratesAreFromStamps_ && intervals_.usualStep > 0.0) {
            rates_ = {{periods_.size(), 1.0 / (intervals_.usualStep * configuration.secondsPerStamp)}};
        }
    }

    /// Leaves the recording without times when neither rate lines nor stamps give a rate.
    void applyTo(Recording& recording) const {
        if (rates_.empty()) {
            return;
        }
        recording.seconds = seconds();
        addSegments(recording);
        recording.rateOrigin = ratesAreFromStamps_ ? "from the time stamps" : "as the configuration says";
        if (!intervals_.gaps.empty()) {
            recording.warnings.emplace_back(recording.source + ": time jumps before sample " +
                                            std::to_string(intervals_.gaps[0] + 1) + " (" +
                                            counted(intervals_.gaps.size(), "such jump") + " in total)");
        }
    }

private:
    /// The time of each row. A step measured by its stamps is added to the time before: always where time jumps, and
    /// everywhere if the stamps are the only source of the rate and are even. All other rows are counted from the start
    /// of their grid, so that rounding errors do not add up; a grid begins at the first row, after a measured step and
    /// where the rate changes.
    std::vector<double> seconds() const {
        std::vector<double> seconds;
        coder::reserveLargePages(seconds, length_);
        seconds.push_back(0.0);
        const bool areStepsMeasured = ratesAreFromStamps_ && intervals_.even;
        auto gap = intervals_.gaps.begin();
        for (const auto& [end, rate] : rates_) {
            std::size_t gridStart = seconds.size() - 1;
            while (seconds.size() <= end) {
                const std::size_t k = seconds.size();
                const bool isGap = gap != intervals_.gaps.end() && *gap == k;
                gap += isGap ? 1 : 0;
                if (isGap || (areStepsMeasured && !std::isnan(periods_[k - 1]))) {
                    seconds.push_back(seconds.back() + periods_[k - 1] / intervals_.usualStep / rate);
                    gridStart = k;
                } else {
                    seconds.push_back(seconds[gridStart] + static_cast<double>(k - gridStart) / rate);
                }
            }
        }
        return seconds;
    }

    /// The run of a step; the last one for the row after all steps.
    std::vector<RateRun>::const_iterator runOf(std::size_t step) const {
        return std::upper_bound(rates_.begin(), rates_.end() - 1, step,
                                [](std::size_t wanted, const RateRun& run) { return wanted < run.end; });
    }

    /// A segment ends where time jumps, and where the rate differs too much from the segment's first.
    void addSegments(Recording& recording) const {
        std::size_t first = 0;
        auto gap = intervals_.gaps.begin();
        for (auto run = rates_.begin(); run != rates_.end(); ++run) {
            if (run != rates_.begin() && std::fabs(run->rateHz / runOf(first)->rateHz - 1.0) > sameRate) {
                const std::size_t row = std::prev(run)->end;
                addSegment(recording, first, row);
                first = row;
            }
            for (; gap != intervals_.gaps.end() && (*gap < run->end || run + 1 == rates_.end()); ++gap) {
                if (*gap > first) {
                    addSegment(recording, first, *gap);
                    first = *gap;
                }
            }
        }
        addSegment(recording, first, length_);
    }

    void addSegment(Recording& recording, std::size_t first, std::size_t end) const {
        assert(first < end);
        const std::size_t count = end - first;
        const auto run = runOf(first);
        double rate = run->rateHz;
        double slowest = rate;
        double fastest = rate;
        for (auto next = run + 1; next < rates_.end() && std::prev(next)->end + 1 < end; ++next) {
            slowest = std::fmin(slowest, next->rateHz);
            fastest = std::fmax(fastest, next->rateHz);
        }
        const bool isOneRate = slowest == fastest;
        if (!isOneRate) {
            recording.warnings.emplace_back(recording.source + ": rates from " + formatNumber(slowest) + " to " +
                                                formatNumber(fastest) + " Hz are treated as one",
                                            topic::frequency);
        }
        const double span = recording.seconds[end - 1] - recording.seconds[first];
        if (span > 0.0 && ratesAreFromStamps_) {
            const double period = evenTimesOf(recording.seconds, first, count).period;
            rate = period > 0.0 ? 1.0 / period : rate;
        } else if (span > 0.0 && !isOneRate) {
            rate = static_cast<double>(count - 1) / span;
        }
        recording.segments.push_back({first, count, rate});
    }

    std::size_t length_;           // rows
    std::vector<double> periods_;  // the steps in sampling periods, but for one factor: the usual step
    std::vector<RateRun> rates_;
    bool ratesAreFromStamps_;
    SamplingIntervals intervals_{};
};

/// Warns when values in the header, such as "IA = 392", are the peaks of the columns with these names.
void compareWithHeader(std::string_view header, Recording& recording) {
    std::map<std::string_view, const Column*> columns;  // the first of each name, until it is listed
    for (const Column& column : recording.columns) {
        if (unitOf(column.unit).quantity != Quantity::other) {
            columns.emplace(column.name, &column);
        }
    }
    std::vector<std::string> agreeing;
    std::size_t listed = 0;
    for (Lines lines(header); lines.nextWithText();) {
        const auto sides = split(lines.line(), '=');
        const double value = sides.size() == 2 ? parseNumber(sides[1]).value_or(0.0) : 0.0;
        const auto column = columns.find(sides[0]);
        if (!(value > 0.0) || column == columns.end()) {
            continue;
        }
        ++listed;
        if (std::fabs(largestMagnitude(column->second->samples) / value - 1.0) < samePeak) {
            agreeing.emplace_back(column->first);
        }
        columns.erase(column);
    }
    if (agreeing.size() >= 2 && 2 * agreeing.size() >= listed) {
        recording.warnings.emplace_back(
            "the header lists values of " + joined(agreeing) +
                " that equal their peaks: the recorder seems to store instantaneous values divided "
                "by sqrt(2); multiply them with --sqrt2",
            topic::ofCurrent);
    }
}

void addColumns(std::vector<AnalogChannel>& channels, Rows& rows, Recording& recording) {
    for (std::size_t i = 0; i < channels.size(); ++i) {
        Column& column = channels[i].column;
        column.samples = std::move(rows.samples[i]);
        recording.columns.push_back(std::move(column));
    }
}

}  // namespace

Recording readComtrade(const ComtradeParts& parts, const ReadOptions& options, ReadText memory) {
    const std::string text = toUtf8(parts.configuration, options.encoding);
    ComtradeConfiguration configuration = parseComtradeConfiguration(text, parts.configurationName);
    const auto form = parts.form ? parts.form : configuration.form;
    if (!form) {
        failInput(parts.configurationName + ": found no line with ASCII, BINARY, BINARY32 or FLOAT32");
    }
    Rows rows = *form == SampleForm::ascii ? readAsciiRows(parts, configuration)
                                           : readBinaryRows(parts, configuration, *form, memory);
    Recording recording;
    recording.source = parts.configurationName;
    recording.format = "COMTRADE, " + std::string(nameOf(*form));
    recording.length = rows.length();
    recording.nominalHz = configuration.nominalHz;
    recording.facts = std::move(configuration.facts);
    recording.warnings = std::move(configuration.warnings);
    std::move(rows.warnings.begin(), rows.warnings.end(), std::back_inserter(recording.warnings));
    if (options.encoding.empty() && !isUtf8(parts.configuration)) {
        recording.warnings.emplace_back(undecodedText(parts.configurationName));
    }
    addColumns(configuration.analog, rows, recording);
    if (configuration.announcedLength != recording.length) {
        recording.warnings.emplace_back(parts.dataName + ": holds " + counted(recording.length, "sample") +
                                        ", but the configuration announces " +
                                        std::to_string(configuration.announcedLength));
    }
    TimeAxis(configuration, std::move(rows.stamps)).applyTo(recording);
    if (!options.storedAsRms) {
        compareWithHeader(toUtf8(parts.header, options.encoding), recording);
    }
    return recording;
}

}  // namespace rt305
