#include "writing/comtrade_writer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <ostream>

#include "base/failure.h"
#include "base/text.h"
#include "base/time_stamp.h"
#include "writing/number_text.h"

namespace rt305 {

namespace {

constexpr const char* lineEnd = "\r\n";
constexpr std::uint32_t missingCount = 0x80000000U;
constexpr double mostStamp = 4294967294.0;

/// The largest count of a form; 0: samples are written as they are.
double largestCount(SampleForm form) {
    return form == SampleForm::ascii ? 99998.0 : form == SampleForm::binary32 ? 2147483647.0 : 0.0;
}

/// The value of one count, or of 1.0 where samples are written as they are: other than 1 when the largest is too far
/// from 1 for 32 bits.
double multiplierOf(const Column& column, SampleForm form) {
    constexpr double least = 1e-30;
    constexpr double most = 1e38;
    const double largest = largestMagnitude(column.samples);
    const double count = largestCount(form);
    if (largest == 0.0 || (count == 0.0 && largest >= least && largest <= most)) {
        return 1.0;
    }
    return count == 0.0 ? largest : std::max(largest / count, std::numeric_limits<double>::min());
}

std::string field(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == ',' || static_cast<unsigned char>(c) < ' '; }, ' ');
    return text;
}

/// Whether a date needs more than six decimals.
bool hasNanoseconds(const Recording& recording) {
    const auto needsMore = [&recording](const char* label) {
        return parseTimeStamp(recording.fact(label)).value_or(0) % 1000 != 0;
    };
    return needsMore("Start") || needsMore("Trigger");
}

/// "24/02/2020,18:15:21.500000" for a date by ISO 8601.
std::string dateOf(const std::string& iso, std::size_t decimals) {
    const auto stamp = parseTimeStamp(iso);
    const std::string text = stamp ? isoTime(*stamp) : "";
    if (text.empty()) {
        return "00/00/0000,00:00:00." + std::string(decimals, '0');
    }
    constexpr std::size_t clockAt = 11;
    constexpr std::size_t clockWithPoint = 9;
    std::string clock = text.substr(clockAt);
    clock += clock.find('.') == std::string::npos ? "." : "";
    clock.resize(clockWithPoint + decimals, '0');
    return text.substr(8, 2) + "/" + text.substr(5, 2) + "/" + text.substr(0, 4) + "," + clock;
}

std::string channelLine(std::size_t number, const Column& column, SampleForm form) {
    const Transformer& transformer = column.transformer;
    const bool isSecondary = transformer.side == Transformer::Side::secondary;
    const std::string limit = form == SampleForm::float32 ? "3.4028235E38" : exactText(largestCount(form));
    return std::to_string(number) + "," + field(column.name) + "," + field(column.phase) + ",," + field(column.unit) +
           "," + exactText(multiplierOf(column, form)) + ",0," + exactText(1e6 * column.delaySeconds) + ",-" + limit +
           "," + limit + "," + exactText(transformer.primary) + "," + exactText(transformer.secondary) + "," +
           (isSecondary ? "S" : "P");
}

/// The microseconds of a time stamp: more than one where a long recording exceeds the numbers of stamps.
double stampUnit(const Recording& recording) {
    double unit = 1.0;
    while (recording.segments[0].durationSeconds() * 1e6 / unit > mostStamp) {
        unit *= 10.0;
    }
    return unit;
}

void writeLittleEndian(std::uint32_t value, std::ostream& out) {
    const std::array<char, 4> bytes{static_cast<char>(value), static_cast<char>(value >> 8U),
                                    static_cast<char>(value >> 16U), static_cast<char>(value >> 24U)};
    out.write(bytes.data(), bytes.size());
}

std::uint32_t binaryOf(double sample, double multiplier, SampleForm form) {
    if (form == SampleForm::float32) {
        return std::bit_cast<std::uint32_t>(static_cast<float>(sample / multiplier));
    }
    return std::isnan(sample) ? missingCount
                              : static_cast<std::uint32_t>(static_cast<std::int32_t>(std::lround(sample / multiplier)));
}

std::string asciiOf(double sample, double multiplier) {
    return std::isnan(sample) ? "99999" : std::to_string(std::lround(sample / multiplier));
}

}  // namespace

void requireFiniteSamples(const Recording& recording) {
    for (const Column& column : recording.columns) {
        if (std::isinf(largestMagnitude(column.samples))) {
            failInput(recording.source + ": column " + inQuotes(column.name) +
                      " has infinite samples, which COMTRADE cannot hold");
        }
    }
}

void writeComtradeConfiguration(const Recording& recording, SampleForm form, std::ostream& out) {
    const std::string total = std::to_string(recording.columns.size());
    out << field(recording.fact("Station")) << ',' << field(recording.fact("Recorder")) << ",2013" << lineEnd << total
        << ',' << total << "A,0D" << lineEnd;
    for (std::size_t i = 0; i < recording.columns.size(); ++i) {
        out << channelLine(i + 1, recording.columns[i], form) << lineEnd;
    }
    const bool isFine = hasNanoseconds(recording);  // stamps are in ns then
    const std::string start = dateOf(recording.fact("Start"), isFine ? 9 : 6);
    const std::string trigger = dateOf(recording.fact("Trigger"), isFine ? 9 : 6);
    out << exactText(recording.nominalHz) << lineEnd << 1 << lineEnd << exactText(recording.segments[0].rateHz) << ','
        << recording.length << lineEnd << start << lineEnd << (recording.fact("Trigger").empty() ? start : trigger)
        << lineEnd << nameOf(form) << lineEnd << exactText(stampUnit(recording) * (isFine ? 1e3 : 1.0)) << lineEnd
        << "0,0" << lineEnd << "F,3" << lineEnd;
}

void writeComtradeData(const Recording& recording, SampleForm form, std::ostream& out) {
    std::vector<double> multipliers;
    std::transform(recording.columns.begin(), recording.columns.end(), std::back_inserter(multipliers),
                   [form](const Column& column) { return multiplierOf(column, form); });
    const double stampsPerSample = 1e6 / recording.segments[0].rateHz / stampUnit(recording);
    for (std::size_t k = 0; k < recording.length; ++k) {
        const auto stamp = static_cast<std::uint32_t>(std::llround(static_cast<double>(k) * stampsPerSample));
        if (form == SampleForm::ascii) {
            std::string row = std::to_string(k + 1) + "," + std::to_string(stamp);
            for (std::size_t i = 0; i < multipliers.size(); ++i) {
                row += "," + asciiOf(recording.columns[i].samples[k], multipliers[i]);
            }
            out << row << lineEnd;
            continue;
        }
        writeLittleEndian(static_cast<std::uint32_t>(k + 1), out);
        writeLittleEndian(stamp, out);
        for (std::size_t i = 0; i < multipliers.size(); ++i) {
            writeLittleEndian(binaryOf(recording.columns[i].samples[k], multipliers[i], form), out);
        }
    }
}

void writeComtradeFile(const Recording& recording, SampleForm form, std::ostream& out) {
    out << "--- file type: CFG ---" << lineEnd;
    writeComtradeConfiguration(recording, form, out);
    out << "--- file type: INF ---" << lineEnd << "--- file type: HDR ---" << lineEnd << "--- file type: DAT "
        << nameOf(form);
    if (form != SampleForm::ascii) {
        out << ": " << recording.length * 4 * (recording.columns.size() + 2);
    }
    out << " ---" << lineEnd;
    writeComtradeData(recording, form, out);
}

}  // namespace rt305
