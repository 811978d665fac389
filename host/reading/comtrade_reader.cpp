#include "reading/comtrade_reader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "base/failure.h"
#include "base/lines.h"
#include "base/text.h"
#include "base/text_encoding.h"
#include "base/units.h"
#include "reading/sampling_intervals.h"

namespace rt305 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// The rows of a record as its data hold them.
struct Rows {
    std::vector<std::vector<double>> raw;  // by channel; NaN: missing
    std::vector<double> stamps;            // NaN: none
    std::vector<std::string> warnings;

    std::size_t length() const { return stamps.size(); }
};

/// A little-endian number in data that may stand anywhere.
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

template <class T>
double sampleAt(std::string_view bytes, std::size_t at) {
    const T number = numberAt<T>(bytes, at);
    return number == std::numeric_limits<T>::lowest() ? nan : static_cast<double>(number);
}

struct BinaryForm {
    std::size_t sampleSize;
    double (*sampleAt)(std::string_view, std::size_t);
};

BinaryForm binaryFormOf(SampleForm form) {
    switch (form) {
        case SampleForm::binary32:
            return {4, sampleAt<std::int32_t>};
        case SampleForm::float32:
            return {4, sampleAt<float>};
        default:
            return {2, sampleAt<std::int16_t>};
    }
}

/// Records of number, stamp, samples and status words.
Rows readBinaryRows(const ComtradeParts& parts, const ComtradeConfiguration& configuration, SampleForm form) {
    constexpr std::size_t headSize = 8;
    const auto [sampleSize, sampleAt] = binaryFormOf(form);
    const std::size_t channels = configuration.analog.size();
    const std::size_t recordSize = headSize + sampleSize * channels + 2 * ((configuration.statusTotal + 15) / 16);
    const std::size_t length = parts.data.size() / recordSize;
    if (length == 0) {
        failInput(parts.dataName + ": holds " + std::to_string(parts.data.size()) + " bytes, but one record of " +
                  std::string(nameOf(form)) + " samples takes " + std::to_string(recordSize));
    }
    Rows rows{std::vector<std::vector<double>>(channels, std::vector<double>(length)), std::vector<double>(length), {}};
    for (std::size_t k = 0; k < length; ++k) {
        const std::size_t at = k * recordSize;
        const auto stamp = numberAt<std::uint32_t>(parts.data, at + 4);
        rows.stamps[k] = stamp == std::numeric_limits<std::uint32_t>::max() ? nan : stamp;
        for (std::size_t i = 0; i < channels; ++i) {
            rows.raw[i][k] = sampleAt(parts.data, at + headSize + sampleSize * i);
        }
    }
    if (const std::size_t rest = parts.data.size() % recordSize; rest != 0) {
        rows.warnings.push_back(parts.dataName + ": byte " + std::to_string(length * recordSize) + ": the last " +
                                std::to_string(rest) + " bytes are no whole record of " + std::to_string(recordSize) +
                                " bytes and are left out");
    }
    return rows;
}

/// A field of a row of samples; NaN when it is missing.
double sampleOf(std::string_view field, std::size_t number, const std::string& here) {
    const auto value = field.empty() || field == "99999" ? nan : parseNumber(field);
    if (!value) {
        failInput(here + "field " + std::to_string(number) + ", " + inQuotes(field) + ", is not a number");
    }
    return *value;
}

/// Lines of number, stamp, samples and status values.
Rows readAsciiRows(const ComtradeParts& parts, const ComtradeConfiguration& configuration) {
    constexpr std::size_t headFields = 2;
    const std::size_t channels = configuration.analog.size();
    const std::size_t expected = headFields + channels + configuration.statusTotal;
    Rows rows;
    rows.raw.resize(channels);
    bool told = false;
    for (Lines lines(parts.data); lines.nextWithText();) {
        const auto fields = split(lines.line(), ',');
        const std::string here = parts.dataName + ":" + std::to_string(lines.number()) + ": ";
        const std::string counts =
            std::to_string(fields.size()) + " fields, but the configuration announces " + std::to_string(expected);
        if (fields.size() < headFields + channels) {
            if (!lines.areAllRead()) {
                failInput(here + counts);
            }
            rows.warnings.push_back(here + counts + "; this last line is left out");
            break;
        }
        const bool endsWithComma = fields.size() == expected + 1 && fields.back().empty();
        if (fields.size() != expected && !endsWithComma && !std::exchange(told, true)) {
            rows.warnings.push_back(here + counts);
        }
        rows.stamps.push_back(fields[1].empty() ? nan : parseNumber(fields[1]).value_or(nan));
        for (std::size_t i = 0; i < channels; ++i) {
            rows.raw[i].push_back(sampleOf(fields[headFields + i], headFields + i + 1, here));
        }
    }
    if (rows.length() == 0) {
        failInput(parts.dataName + ": there is no line of samples");
    }
    return rows;
}

/// The steps between stamps, which wrap at 32 bits.
std::vector<double> stepsOf(const std::vector<double>& stamps) {
    std::vector<double> steps(stamps.size() - 1);
    for (std::size_t k = 0; k < steps.size(); ++k) {
        const double step = stamps[k + 1] - stamps[k];
        steps[k] = step < -0x1p31 ? step + 0x1p32 : step;
    }
    return steps;
}

/// The times and segments of a recording, from the rate lines and the stamps of its rows.
class TimeAxis {
public:
    TimeAxis(const ComtradeConfiguration& configuration, const std::vector<double>& stamps, Recording& recording)
        : configuration_(configuration), steps_(stepsOf(stamps)), recording_(recording) {}

    void build() {
        std::vector<double> rates = ratesOfSteps();
        const bool fromStamps = rates.empty();
        std::vector<double> relative = steps_;  // in periods, but for one factor
        for (std::size_t k = 0; k < rates.size(); ++k) {
            relative[k] *= rates[k];
        }
        const SamplingIntervals intervals = samplingIntervalsOf(relative);
        if (fromStamps) {
            if (!(intervals.usualStep > 0.0)) {
                return;
            }
            rates.assign(steps_.size(), 1.0 / (intervals.usualStep * configuration_.secondsPerStamp));
        }
        setSeconds(rates, relative, intervals, fromStamps);
        setSegments(rates, intervals);
        recording_.rateOrigin = fromStamps ? "from the time stamps" : "as the configuration says";
        if (!intervals.gaps.empty()) {
            recording_.warnings.push_back(recording_.source + ": time jumps before sample " +
                                          std::to_string(intervals.gaps[0] + 1) + " (" +
                                          std::to_string(intervals.gaps.size()) + " such jumps in all)");
        }
    }

private:
    /// The rate of each step by the rate lines; empty when they give none.
    std::vector<double> ratesOfSteps() const {
        std::vector<double> rates;
        for (const RateLine& line : configuration_.rates) {
            const std::size_t end = std::min(line.lastSample, steps_.size());
            rates.resize(std::max(rates.size(), end), line.rateHz);
        }
        if (!configuration_.rates.empty()) {
            rates.resize(steps_.size(), configuration_.rates.back().rateHz);
        }
        return rates;
    }

    void setSeconds(const std::vector<double>& rates, const std::vector<double>& relative,
                    const SamplingIntervals& intervals, bool fromStamps) {
        auto& seconds = recording_.seconds;
        seconds.assign(recording_.length, 0.0);
        std::size_t runStart = 0;  // of equal rates, so that rounding errors do not add up
        auto nextBreak = intervals.gaps.begin();
        for (std::size_t k = 1; k < seconds.size(); ++k) {
            const bool jumps = nextBreak != intervals.gaps.end() && *nextBreak == k;
            const bool byStamp = fromStamps && intervals.even && !std::isnan(steps_[k - 1]);
            if (jumps || byStamp) {
                const double periods = relative[k - 1] / intervals.usualStep;
                seconds[k] = seconds[k - 1] + periods / rates[k - 1];
                runStart = k;
            } else {
                if (k > 1 && rates[k - 1] != rates[k - 2] && runStart != k - 1) {
                    runStart = k - 1;
                }
                seconds[k] = seconds[runStart] + static_cast<double>(k - runStart) / rates[k - 1];
            }
            nextBreak += jumps ? 1 : 0;
        }
    }

    /// A segment ends where time jumps or the rate becomes another by more than 1 % of the segment's first.
    void setSegments(const std::vector<double>& rates, const SamplingIntervals& intervals) {
        std::size_t first = 0;
        auto nextBreak = intervals.gaps.begin();
        for (std::size_t k = 1; k < recording_.seconds.size(); ++k) {
            const bool jumps = nextBreak != intervals.gaps.end() && *nextBreak == k;
            const bool otherRate = k < rates.size() && std::fabs(rates[k] / rates[first] - 1.0) > 0.01;
            if (jumps || otherRate) {
                addSegment(rates, first, k);
                first = k;
            }
            nextBreak += jumps ? 1 : 0;
        }
        addSegment(rates, first, recording_.seconds.size());
    }

    void addSegment(const std::vector<double>& rates, std::size_t first, std::size_t end) {
        const std::size_t count = end - first;
        const double span = recording_.seconds[end - 1] - recording_.seconds[first];
        double rate = rates.empty() ? 0.0 : rates[std::min(first, rates.size() - 1)];
        const auto [slowest, fastest] = std::minmax_element(rates.begin() + static_cast<std::ptrdiff_t>(first),
                                                            rates.begin() + static_cast<std::ptrdiff_t>(end - 1));
        const bool isOneRate = count < 2 || *slowest == *fastest;
        if (!isOneRate) {
            recording_.warnings.push_back(recording_.source + ": rates from " + formatNumber(*slowest) + " to " +
                                          formatNumber(*fastest) + " Hz are taken as one");
        }
        if ((!isOneRate || configuration_.rates.empty()) && span > 0.0) {
            rate = static_cast<double>(count - 1) / span;
        }
        recording_.segments.push_back({first, count, rate});
    }

    const ComtradeConfiguration& configuration_;
    std::vector<double> steps_;
    Recording& recording_;
};

/// A warning when the header quotes values for columns ("IA = 392") that are their peaks.
void compareWithHeader(std::string_view header, Recording& recording) {
    std::vector<std::string> agreeing;
    std::size_t quoted = 0;
    for (Lines lines(header); lines.nextWithText();) {
        const auto sides = split(lines.line(), '=');
        const double value = sides.size() == 2 ? parseNumber(sides[1]).value_or(0.0) : 0.0;
        const auto column = std::find_if(recording.columns.begin(), recording.columns.end(),
                                         [&](const Column& c) { return c.name == sides[0]; });
        if (!(value > 0.0) || column == recording.columns.end() || unitOf(column->unit).quantity == Quantity::other) {
            continue;
        }
        double peak = 0.0;
        for (const double x : column->samples) {
            peak = std::fmax(peak, std::fabs(x));
        }
        ++quoted;
        if (std::fabs(peak / value - 1.0) < 0.05) {
            agreeing.push_back(column->name);
        }
    }
    if (agreeing.size() >= 2 && 2 * agreeing.size() >= quoted) {
        recording.warnings.push_back("the header quotes values of " + joined(agreeing) +
                                     " that equal their largest samples: the recorder seems to store instantaneous "
                                     "values divided by sqrt(2); --sqrt2 multiplies them");
    }
}

}  // namespace

Recording readComtrade(const ComtradeParts& parts, const ReadOptions& options) {
    const std::string text = toUtf8(parts.configuration, options.encoding);
    ComtradeConfiguration configuration = parseComtradeConfiguration(text, parts.configurationName);
    const auto form = parts.form ? parts.form : configuration.form;
    if (!form) {
        failInput(parts.configurationName + ": no line says ASCII, BINARY, BINARY32 or FLOAT32");
    }
    Rows rows =
        *form == SampleForm::ascii ? readAsciiRows(parts, configuration) : readBinaryRows(parts, configuration, *form);
    Recording recording;
    recording.source = parts.configurationName;
    recording.format = "COMTRADE, " + std::string(nameOf(*form));
    recording.length = rows.length();
    recording.facts = std::move(configuration.facts);
    recording.warnings = std::move(rows.warnings);
    for (std::size_t i = 0; i < configuration.analog.size(); ++i) {
        AnalogChannel& channel = configuration.analog[i];
        channel.column.samples = std::move(rows.raw[i]);
        for (double& x : channel.column.samples) {
            x = channel.multiplier * x + channel.offset;
        }
        recording.columns.push_back(std::move(channel.column));
    }
    if (configuration.announcedLength != recording.length) {
        recording.warnings.push_back(parts.dataName + ": holds " + std::to_string(recording.length) +
                                     " samples, but the configuration announces " +
                                     std::to_string(configuration.announcedLength));
    }
    TimeAxis(configuration, rows.stamps, recording).build();
    if (!options.storedAsRms) {
        compareWithHeader(toUtf8(parts.header, options.encoding), recording);
    }
    return recording;
}

}  // namespace rt305
