#include "output/quality_limits.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>

#include "base/failure.h"
#include "base/lines.h"
#include "base/text.h"

namespace rt305 {

namespace {

/// What a limit judges: the quantities whose keys begin so, relative to a base in percent, or as they are.
struct Judged {
    std::string_view name;
    std::string_view unit;
    std::string_view prefix;
    bool byChannel;  // the key goes on with the name of a voltage
    enum class Base { none, nominal, declared, fundamental } base;
};
constexpr Judged judged[] = {
    {"frequency", "deviation in % of the nominal frequency, 10 s", "frequency", false, Judged::Base::nominal},
    {"voltage", "deviation in % of the declared voltage", "", true, Judged::Base::declared},
    {"unbalance", "U2 / U1 in %", "u2", false, Judged::Base::none},
    {"zero_unbalance", "U0 / U1 in %", "u0", false, Judged::Base::none},
    {"thd", "THDS of the voltages in %", "THDS_", true, Judged::Base::none},
    {"pst", "flicker", "Pst_", true, Judged::Base::none},
    {"plt", "flicker over two hours", "Plt_", true, Judged::Base::none},
};
constexpr std::string_view harmonicPrefix = "harmonic_";

/// Empty for an unknown name. "harmonic_5" is judged in percent of the fundamental.
std::optional<Judged> findJudged(std::string_view name) {
    if (name.substr(0, harmonicPrefix.size()) == harmonicPrefix && parseCount(name.substr(harmonicPrefix.size()))) {
        return Judged{name, "%", "", true, Judged::Base::fundamental};
    }
    const auto* const found =
        std::find_if(std::begin(judged), std::end(judged), [name](const Judged& each) { return each.name == name; });
    return found == std::end(judged) ? std::nullopt : std::optional(*found);
}

/// The value of an interval in the unit of its limits.
double judgedValue(const Judged& what, const Interval& interval, std::size_t at, std::size_t fundamental,
                   const QualitySettings& settings) {
    const double value = interval.values[at];
    switch (what.base) {
        case Judged::Base::nominal:
            return 100.0 * (value / settings.nominalHz - 1.0);
        case Judged::Base::declared:
            return 100.0 * (value / settings.declaredVolts - 1.0);
        case Judged::Base::fundamental:
            return 100.0 * value / interval.values[fundamental];
        default:
            return value;
    }
}

/// The verdict on one quantity.
Verdict verdictOn(const Limit& limit, const Judged& what, const std::string& key, std::size_t fundamental,
                  const QualityResults& results) {
    Verdict verdict{.limit = limit, .channel = key};
    const auto at = findQuantity(results.quantities, key);
    std::size_t inside = 0;
    if (!at) {
        return verdict;
    }
    for (const Interval& interval : what.base == Judged::Base::nominal ? results.tenSeconds : results.tenMinutes) {
        const double value = judgedValue(what, interval, *at, fundamental, results.settings);
        if (std::isnan(value)) {
            continue;
        }
        if (interval.isFlagged) {
            ++verdict.flagged;
            continue;
        }
        ++verdict.intervals;
        inside += value >= limit.lower.value_or(value) && value <= limit.upper.value_or(value) ? 1 : 0;
    }
    verdict.insidePercent =
        verdict.intervals > 0 ? 100.0 * static_cast<double>(inside) / static_cast<double>(verdict.intervals) : 0.0;
    return verdict;
}

/// Channels without values come last.
bool isWorse(const Verdict& x, const Verdict& y) {
    const auto rank = [](const Verdict& verdict) { return verdict.intervals > 0 ? verdict.insidePercent : 101.0; };
    return rank(x) < rank(y);
}

class LimitReader {
public:
    LimitReader(std::string_view text, const std::string& source) : lines_(text), set_{source}, source_(source) {}

    LimitSet read() {
        while (lines_.nextWithText()) {
            if (const auto line = trimmed(lines_.line()); line[0] != '#') {
                readFields(split(line, ','));
            }
        }
        if (set_.limits.empty()) {
            failInput(source_ + ": there are no limits");
        }
        return std::move(set_);
    }

private:
    void readFields(const std::vector<std::string_view>& fields) {
        if (fields[0] == "name" && fields.size() > 1) {
            set_.name = trimmed(trimmed(lines_.line()).substr(fields[0].size() + 1));
        } else if (fields[0] == "days" && fields.size() == 2) {
            set_.days = numberIn(fields[1]).value_or(0.0);
        } else if (fields.size() == 4 && fields[0] != "quantity") {
            if (!findJudged(fields[0])) {
                failHere(inQuotes(fields[0]) + " is not one of the quantities " + limitQuantities());
            }
            const auto percent = numberIn(fields[1]);
            if (!percent || *percent < 0.0 || *percent > 100.0) {
                failHere(inQuotes(fields[1]) + " is not a percentage of intervals");
            }
            set_.limits.push_back({std::string(fields[0]), *percent, numberIn(fields[2]), numberIn(fields[3])});
        } else if (fields[0] != "quantity") {
            failHere("expected quantity,percent,lower,upper");
        }
    }

    std::optional<double> numberIn(std::string_view field) const {
        const auto number = parseNumber(field);
        if (!field.empty() && !(number && std::isfinite(*number))) {
            failHere(inQuotes(field) + " is not a number");
        }
        return number;
    }

    [[noreturn]] void failHere(const std::string& message) const {
        failInput(source_ + ":" + std::to_string(lines_.number()) + ": " + message);
    }

    Lines lines_;
    LimitSet set_;
    const std::string& source_;
};

}  // namespace

std::string limitQuantities() {
    std::string list;
    for (const Judged& each : judged) {
        list += std::string(each.name) + " (" + std::string(each.unit) + "), ";
    }
    return list + "harmonic_2, harmonic_3, ... (% of the fundamental)";
}

LimitSet parseLimits(std::string_view text, const std::string& source) {
    return LimitReader(text, source).read();
}

LimitFile readLimits(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream) {
        failInput(file + ": " + std::strerror(errno));
    }
    LimitSet limits = parseLimits(text, file);
    return {std::move(text), std::move(limits)};
}

std::vector<Verdict> judge(const LimitSet& set, const QualityResults& results) {
    std::vector<Verdict> verdicts;
    for (const Limit& limit : set.limits) {
        const Judged what = *findJudged(limit.quantity);
        std::vector<Verdict> channels;
        for (std::size_t phase = 0; phase < (what.byChannel ? phaseTotal : 1); ++phase) {
            const std::string name(channelNames[phase]);
            const std::string key = what.base == Judged::Base::fundamental
                                        ? name + "_h" + limit.quantity.substr(harmonicPrefix.size())
                                        : std::string(what.prefix) + (what.byChannel ? name : "");
            const auto fundamental = findQuantity(results.quantities, name + "_h1").value_or(0);
            channels.push_back(verdictOn(limit, what, key, fundamental, results));
        }
        verdicts.push_back(*std::min_element(channels.begin(), channels.end(), isWorse));
    }
    return verdicts;
}

}  // namespace rt305
