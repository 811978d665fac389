#include "reading/comtrade_configuration.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/failure.h"
#include "base/limits.h"
#include "base/lines.h"
#include "base/text.h"
#include "base/time_stamp.h"
#include "base/units.h"

namespace rt305 {

namespace {

constexpr std::array<std::string_view, 4> formNames{"ASCII", "BINARY", "BINARY32", "FLOAT32"};

// Fields of an analog channel: n,id,phase,component,unit,a,b,skew,min,max, and since 1999 primary,secondary,PS.
constexpr std::size_t fewestChannelFields = 10;
constexpr std::size_t mostChannelFields = 13;
constexpr std::size_t ratioChannelFields = 12;  // with a transformer ratio

constexpr std::size_t nanosecondDecimals = 9;

/// The largest skew that is taken as meant, in us: a cycle of the slowest grid, 16 2/3 Hz. A recorder scans its
/// channels within a sampling period, but a limit of one would refuse what exists: 841 us where a period has 833 us.
constexpr double mostSkew = 60000.0;

using Fields = std::vector<std::string_view>;

/// Parses "24A" or "24a" into 24, for the letter a.
std::optional<std::size_t> parseChannelCount(std::string_view field, char letter) {
    const bool hasLetter = !field.empty() && lowerCase(field.substr(field.size() - 1))[0] == letter;
    return hasLetter ? parseCount(trimmed(field.substr(0, field.size() - 1))) : std::nullopt;
}

struct ChannelCounts {
    std::size_t analog;
    std::size_t status;
};

/// Parses "61,24A,37D"; the total in front is not needed.
std::optional<ChannelCounts> parseChannelCounts(std::string_view line) {
    const Fields fields = split(line, ',');
    const auto analog = fields.size() < 3 ? std::nullopt : parseChannelCount(fields[1], 'a');
    const auto status = fields.size() < 3 ? std::nullopt : parseChannelCount(fields[2], 'd');
    return analog && status ? std::optional(ChannelCounts{*analog, *status}) : std::nullopt;
}

class ConfigurationReader {
public:
    ConfigurationReader(std::string_view text, const std::string& source)
        : lines_(text),
          lineTotal_(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1),
          source_(source) {}

    ComtradeConfiguration read() {
        const Fields station = nextFields("the station");
        const std::string_view revision = station.size() > 2 ? station[2] : "1991";
        addFact("Revision", revision);
        addFact("Station", station[0]);
        addFact("Recorder", station.size() > 1 ? station[1] : "");
        readChannels();
        const std::string_view nominal = nextFields("the nominal frequency")[0];
        result_.nominalHz = std::max(0.0, parseNumber(nominal).value_or(0.0));
        addFact("Nominal frequency", result_.nominalHz > 0.0 ? formatNumber(result_.nominalHz, 9) + " Hz" : "");
        readRates();
        readTail();
        return std::move(result_);
    }

private:
    [[noreturn]] void failHere(const std::string& message) const {
        failInput(source_ + ":" + std::to_string(lines_.number()) + ": " + message);
    }

    void addFact(const char* label, std::string_view text) {
        if (!text.empty()) {
            result_.facts.emplace_back(label, text);
        }
    }

    Fields nextFields(const char* what) {
        if (!lines_.next()) {
            failHere("the configuration ends here, before " + std::string(what));
        }
        return split(lines_.line(), ',');
    }

    void readChannels() {
        nextFields("the channel counts");
        const auto counts = parseChannelCounts(lines_.line());
        if (!counts) {
            failHere(inQuotes(trimmed(lines_.line())) + " is not a line of channel counts such as 10,6A,4D");
        }
        if (counts->analog > lineTotal_ || counts->status > lineTotal_) {
            failHere("announces " + std::to_string(counts->analog) + " analog and " +
                     counted(counts->status, "status channel") + ", but the configuration has only " +
                     counted(lineTotal_, "line"));
        }
        if (counts->analog > mostColumns) {
            failHere("announces " + std::to_string(counts->analog) + " analog channels; a recording has at most " +
                     std::to_string(mostColumns));
        }
        if (counts->analog == 0) {
            failHere("there are no analog channels");
        }
        for (std::size_t i = 0; i < counts->analog; ++i) {
            readAnalogChannel(nextFields("the last analog channel"));
        }
        result_.statusTotal = counts->status;
        for (std::size_t i = 0; i < counts->status; ++i) {
            nextFields("the last status channel");
        }
    }

    double numberIn(std::string_view field, const char* what, std::optional<double> whenEmpty = std::nullopt) const {
        const auto number = field.empty() ? whenEmpty : parseNumber(field);
        if (!number || !std::isfinite(*number)) {
            failHere(std::string(what) + " " + inQuotes(field) + " is not a number");
        }
        return *number;
    }

    /// In a line with too many fields the name contains commas, so the numbers are counted from the end.
    void readAnalogChannel(Fields fields) {
        while (fields.size() > mostChannelFields && fields.back().empty()) {
            fields.pop_back();
        }
        const std::size_t surplus = std::max(fields.size(), mostChannelFields) - mostChannelFields;
        if (fields.size() < fewestChannelFields || (surplus > 0 && !isSide(fields.back()))) {
            failHere(counted(fields.size(), "field") + "; an analog channel has 10 or 13");
        }
        const auto field = [&](std::size_t i) { return fields[i + surplus]; };
        AnalogChannel channel;
        channel.column.name = fields[1];
        channel.column.phase = surplus > 0 ? "" : fields[2];
        channel.column.unit = field(4).empty() ? nameAndUnit(fields[1]).second : field(4);
        channel.multiplier = numberIn(field(5), "the multiplier");
        channel.offset = numberIn(field(6), "the offset", 0.0);
        channel.column.delaySeconds = 1e-6 * skewIn(field(7), fields[1]);
        if (fields.size() >= ratioChannelFields) {
            channel.column.transformer =
                transformerOf(field(10), field(11), fields.size() >= mostChannelFields ? field(12) : "");
        }
        result_.analog.push_back(std::move(channel));
    }

    /// A skew in us; 0, with a warning, for one that cannot be meant.
    double skewIn(std::string_view field, std::string_view channel) {
        const auto skew = field.empty() ? 0.0 : parseNumber(field);
        if (skew && std::fabs(*skew) <= mostSkew) {
            return *skew;
        }
        result_.warnings.emplace_back(source_ + ":" + std::to_string(lines_.number()) + ": channel " +
                                      std::string(channel) + ": the skew " + inQuotes(field) + " is " +
                                      (skew ? "more than " + formatNumber(mostSkew / 1e3) + " ms" : "not a number") +
                                      " and is ignored");
        return 0.0;
    }

    static bool isSide(std::string_view field) { return lowerCase(field) == "p" || lowerCase(field) == "s"; }

    /// A missing or zero ratio becomes 1:1.
    static Transformer transformerOf(std::string_view primary, std::string_view secondary, std::string_view side) {
        Transformer transformer;
        const double p = parseNumber(primary).value_or(0.0);
        const double s = parseNumber(secondary).value_or(0.0);
        if (p > 0.0 && s > 0.0) {
            transformer.primary = p;
            transformer.secondary = s;
        }
        if (isSide(side)) {
            transformer.side = lowerCase(side) == "p" ? Transformer::Side::primary : Transformer::Side::secondary;
        }
        return transformer;
    }

    /// The number of rates, then a line for each. If the number is 0, one line with rate 0 follows.
    void readRates() {
        const auto total = parseCount(nextFields("the number of rates")[0]);
        if (!total || *total > lineTotal_) {
            failHere(inQuotes(trimmed(lines_.line())) + " is not a number of rates");
        }
        for (std::size_t i = 0; i < std::max<std::size_t>(*total, 1); ++i) {
            const Fields fields = nextFields("the last rate");
            const double rate = numberIn(fields[0], "the rate");
            const auto last = fields.size() < 2 ? std::nullopt : parseCount(fields[1]);
            if (rate < 0.0 || !last || *last < result_.announcedLength) {
                failHere(inQuotes(trimmed(lines_.line())) + " is not a rate with the number of its last sample");
            }
            result_.announcedLength = *last;
            if (rate > 0.0) {
                result_.rates.push_back({rate, *last});
            }
        }
        if (result_.rates.size() < *total) {
            result_.rates.clear();  // a rate of 0: the time stamps give the rate
        }
    }

    /// Two dates, the form of the samples, the factor of the time stamps. If a date has nine decimals, the stamps are
    /// in ns instead of us.
    void readTail() {
        static constexpr const char* dateLabels[] = {"Start", "Trigger"};
        std::size_t dates = 0;
        while (!result_.form && lines_.next()) {
            const std::string_view line = trimmed(lines_.line());
            result_.form = findSampleForm(line);
            if (result_.form || line.empty() || dates == std::size(dateLabels)) {
                continue;
            }
            addFact(dateLabels[dates++], isoTimeOfComtrade(line));
            const std::size_t point = line.find('.');
            if (point != std::string_view::npos && line.size() - point - 1 >= nanosecondDecimals) {
                result_.secondsPerStamp = 1e-9;
            }
        }
        if (lines_.next()) {
            const auto factor = parseNumber(trimmed(lines_.line()));
            result_.secondsPerStamp *= factor && *factor > 0.0 ? *factor : 1.0;
        }
    }

    Lines lines_;
    std::size_t lineTotal_;
    const std::string& source_;
    ComtradeConfiguration result_;
};

}  // namespace

std::optional<SampleForm> findSampleForm(std::string_view name) {
    const std::string wanted = lowerCase(trimmed(name));
    const auto* const found = std::find_if(formNames.begin(), formNames.end(),
                                           [&wanted](std::string_view known) { return lowerCase(known) == wanted; });
    return found == formNames.end() ? std::nullopt : std::optional(static_cast<SampleForm>(found - formNames.begin()));
}

std::string_view nameOf(SampleForm form) {
    return formNames[static_cast<std::size_t>(form)];
}

ComtradeConfiguration parseComtradeConfiguration(std::string_view text, const std::string& source) {
    return ConfigurationReader(text, source).read();
}

bool isComtradeConfiguration(std::string_view text) {
    Lines lines(text);
    return lines.next() && lines.next() && parseChannelCounts(lines.line());
}

}  // namespace rt305
