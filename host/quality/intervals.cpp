#include "quality/intervals.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "signal/effective_power.h"
#include "toolkit/fft.h"

namespace rt305 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t mostOrders = 50;
constexpr std::size_t mostDistortionOrder = 40;
constexpr double usableShare = 0.75;           // of half the rate: beyond, the sinc attenuates
constexpr double leastShareOfLargest = 0.01;   // of a kind's largest fundamental: below, a channel is dead
constexpr double leastFundamentalShare = 0.5;  // of a channel's RMS, likewise
constexpr std::string_view lengthNames[] = {"cycles", "3s", "10min", "10s"};

/// The smallest number from n on without prime factors above 5.
std::size_t smoothFrom(double n) {
    for (std::size_t count = std::max<std::size_t>(8, static_cast<std::size_t>(std::ceil(n - 1e-6)));; ++count) {
        std::size_t rest = count;
        for (const std::size_t prime : {2U, 3U, 5U}) {
            while (rest % prime == 0) {
                rest /= prime;
            }
        }
        if (rest == 1) {
            return count;
        }
    }
}

double sumOf(const PerPhase<double>& values) {
    return values[0] + values[1] + values[2];
}

using Getter = std::function<double(const IntervalFigures&)>;

/// A list of quantities in the making.
struct Quantities {
    std::vector<IntervalQuantity> list{};

    void add(std::string key, std::string unit, Averaging averaging, Getter value, bool isBin = false) {
        list.push_back({std::move(key), std::move(unit), averaging, isBin, std::move(value)});
    }

    void addPhasePower(std::size_t phase) {
        const std::string name(1, static_cast<char>('a' + phase));
        add("P" + name, "W", Averaging::mean, [phase](const auto& f) { return f.P[phase]; });
        add("Q1" + name, "var", Averaging::mean, [phase](const auto& f) { return f.Q1[phase]; });
        add("S" + name, "VA", Averaging::rms, [phase](const auto& f) { return f.S[phase]; });
        add("PF" + name, "1", Averaging::mean,
            [phase](const auto& f) { return f.isInterrupted[phase] ? nan : f.P[phase] / f.S[phase]; });
    }

    void addTotalPower() {
        add("P", "W", Averaging::mean, [](const auto& f) { return sumOf(f.P); });
        add("Q1", "var", Averaging::mean, [](const auto& f) { return sumOf(f.Q1); });
        add("S", "VA", Averaging::rms, [](const auto& f) { return f.effectiveS; });
        add("PF", "1", Averaging::mean,
            [](const auto& f) { return std::isnan(f.frequencyHz) ? nan : sumOf(f.P) / f.effectiveS; });
    }

    /// The components and their ratios; forward is what is larger.
    void addSequence(const std::string& letter, const std::string& ratioLetter, const std::string& unit, bool hasZero,
                     SequenceComponents IntervalFigures::*which) {
        const auto positive = [which](const IntervalFigures& f) {
            return std::max(std::abs((f.*which).forward), std::abs((f.*which).backward));
        };
        const auto negative = [which](const IntervalFigures& f) {
            return std::min(std::abs((f.*which).forward), std::abs((f.*which).backward));
        };
        const auto ratio = [=, kind = letter == "U" ? 0U : 1U](const IntervalFigures& f, double component) {
            return f.isAlive[kind] ? 100.0 * component / positive(f) : nan;
        };
        const auto zero = [which](const IntervalFigures& f) { return std::abs((f.*which).zero); };
        add(letter + "1", unit, Averaging::rms, positive);
        add(letter + "2", unit, Averaging::rms, negative);
        add(ratioLetter + "2", "%", Averaging::rms, [=](const auto& f) { return ratio(f, negative(f)); });
        if (hasZero) {
            add(letter + "0", unit, Averaging::rms, zero);
            add(ratioLetter + "0", "%", Averaging::rms, [=](const auto& f) { return ratio(f, zero(f)); });
        }
    }

    void addFlicker(std::size_t phase) {
        const std::string name(channelNames[phase]);
        add("Pinst_" + name, "1", Averaging::largest, [phase](const auto& f) { return f.sensation[phase]; });
        add("Pst_" + name, "1", Averaging::last, [phase](const auto& f) { return f.shortTerm[phase]; });
        add("Plt_" + name, "1", Averaging::last, [phase](const auto& f) { return f.longTerm[phase]; });
    }

    void addBins(std::size_t channel, const std::string& unit, std::size_t orders, bool hasInterharmonics) {
        const std::string name(channelNames[channel]);
        for (std::size_t i = 0; i < orders; ++i) {
            add(
                name + "_h" + std::to_string(i + 1), unit, Averaging::rms,
                [channel, i](const auto& f) { return f.harmonics[channel][i]; }, true);
        }
        for (std::size_t i = 0; i < orders && hasInterharmonics; ++i) {
            add(
                name + "_ih" + std::to_string(i), unit, Averaging::rms,
                [channel, i](const auto& f) { return f.interharmonics[channel][i]; }, true);
        }
    }
};

}  // namespace

std::string_view nameOf(IntervalLength length) {
    return lengthNames[static_cast<std::size_t>(length)];
}

std::size_t ordersOf(const QualitySettings& settings) {
    const double highest = usableShare * settings.samplesPerCycle() / 2.0;
    return std::min(mostOrders, static_cast<std::size_t>(std::max(1.0, std::floor(highest - 0.2))));
}

std::vector<IntervalQuantity> quantitiesOf(const QualitySettings& settings) {
    Quantities all;
    const auto unitOf = [](std::size_t channel) { return isCurrent(channel) ? "A" : "V"; };
    all.add("frequency", "Hz", Averaging::mean, [](const auto& f) { return f.frequencyHz; });
    const auto forEach = [&](std::size_t total, auto action) {
        for (std::size_t i = 0; i < total; ++i) {
            if (settings.measures(i)) {
                action(i);
            }
        }
    };
    forEach(channelTotal, [&](std::size_t channel) {
        all.add(std::string(channelNames[channel]), unitOf(channel), Averaging::rms,
                [channel](const auto& f) { return f.rms[channel]; });
    });
    const bool isCombined = settings.hasVoltages() && settings.measures(phaseTotal);
    forEach(isCombined ? phaseTotal : 0, [&](std::size_t phase) { all.addPhasePower(phase); });
    if (isCombined) {
        all.addTotalPower();
    }
    if (settings.measures(2)) {
        all.addSequence("U", "u", "V", settings.hasNeutral, &IntervalFigures::voltages);
    }
    if (settings.measures(channelTotal - 1)) {
        all.addSequence("I", "i", "A", true, &IntervalFigures::currents);
    }
    forEach(channelTotal, [&](std::size_t channel) {
        all.add("THDS_" + std::string(channelNames[channel]), "%", Averaging::rms,
                [channel](const auto& f) { return f.thds[channel]; });
    });
    forEach(phaseTotal, [&](std::size_t phase) { all.addFlicker(phase); });
    const std::size_t orders = ordersOf(settings);
    forEach(channelTotal, [&](std::size_t channel) {
        all.addBins(channel, unitOf(channel), orders, settings.cyclesPerInterval() > 3);
    });
    return std::move(all.list);
}

std::optional<std::size_t> findQuantity(const std::vector<IntervalQuantity>& quantities, std::string_view key) {
    const auto found = std::find_if(quantities.begin(), quantities.end(),
                                    [key](const IntervalQuantity& each) { return each.key == key; });
    return found == quantities.end() ? std::nullopt
                                     : std::optional(static_cast<std::size_t>(found - quantities.begin()));
}

struct IntervalMeter::Transform {
    explicit Transform(std::size_t points)
        : fft(static_cast<int>(points)), lines(static_cast<std::size_t>(fft.bins())) {}

    coder::RealFft fft;
    std::vector<coder::creal_T> lines;
};

IntervalMeter::IntervalMeter(const QualitySettings& settings)
    : settings_(settings),
      cycles_(settings.cyclesPerInterval()),
      orders_(ordersOf(settings)),
      points_(smoothFrom(static_cast<double>(cycles_) * settings.samplesPerCycle())),
      transform_(std::make_unique<Transform>(points_)) {
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        resampled_[channel].resize(settings.measures(channel) ? points_ : 0);
    }
}

IntervalMeter::~IntervalMeter() = default;

/// RMS, fundamental and subgroups of one channel.
void IntervalMeter::analyse(std::size_t channel, IntervalFigures& figures) {
    const auto& points = resampled_[channel];
    const auto count = static_cast<double>(points.size());
    figures.rms[channel] = std::sqrt(std::inner_product(points.begin(), points.end(), points.begin(), 0.0) / count);
    auto& lines = transform_->lines;
    transform_->fft.forward(points, lines.data());
    const coder::creal_T& first = lines[cycles_];
    fundamentals_[channel] = Phasor(first.re, first.im) * Phasor(0.0, std::numbers::sqrt2 / count);
    const auto group = [&](std::size_t from, std::size_t to) {
        double sum = 0.0;
        for (std::size_t k = from; k <= std::min(to, lines.size() - 1); ++k) {
            sum += lines[k].re * lines[k].re + lines[k].im * lines[k].im;
        }
        return std::sqrt(2.0 * sum) / count;
    };
    const bool hasSides = cycles_ > 2;
    double distortion = 0.0;
    auto& harmonics = figures.harmonics[channel];
    for (std::size_t n = 1; n <= orders_; ++n) {
        harmonics.push_back(group(n * cycles_ - (hasSides ? 1 : 0), n * cycles_ + (hasSides ? 1 : 0)));
        distortion += n >= 2 && n <= mostDistortionOrder ? harmonics.back() * harmonics.back() : 0.0;
        figures.interharmonics[channel].push_back(group((n - 1) * cycles_ + 2, n * cycles_ - 2));
    }
    double& largest = largest_[isCurrent(channel) ? 1 : 0];
    largest = std::fmax(largest, harmonics[0]);
    hasSignal_[channel] =
        harmonics[0] > leastShareOfLargest * largest && harmonics[0] > leastFundamentalShare * figures.rms[channel];
    figures.thds[channel] = hasSignal_[channel] ? 100.0 * std::sqrt(distortion) / harmonics[0] : nan;
}

double IntervalMeter::effectivePower(const IntervalFigures& figures) const {
    double squares[4] = {};  // of the line voltages, and of the sum of the currents
    const auto count = points_;
    for (std::size_t k = 0; k < count; ++k) {
        const auto at = [&](std::size_t channel) { return resampled_[channel][k]; };
        const double values[4] = {at(0) - at(1), at(1) - at(2), at(2) - at(0), at(3) + at(4) + at(5)};
        for (std::size_t i = 0; i < 4; ++i) {
            squares[i] += values[i] * values[i];
        }
    }
    const auto& rms = figures.rms;
    const double lines = (squares[0] + squares[1] + squares[2]) / static_cast<double>(count);
    return effectiveApparentPower(
        {rms[0] * rms[0] + rms[1] * rms[1] + rms[2] * rms[2], lines,
         rms[3] * rms[3] + rms[4] * rms[4] + rms[5] * rms[5], squares[3] / static_cast<double>(count)},
        settings_.hasNeutral);
}

void IntervalMeter::measurePower(IntervalFigures& figures) const {
    bool isThreePhase = true;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const std::size_t current = phase + phaseTotal;
        if (!settings_.measures(phase) || !settings_.measures(current)) {
            isThreePhase = false;
            continue;
        }
        const auto& u = resampled_[phase];
        figures.P[phase] =
            std::inner_product(u.begin(), u.end(), resampled_[current].begin(), 0.0) / static_cast<double>(u.size());
        figures.Q1[phase] = (fundamentals_[phase] * std::conj(fundamentals_[current])).imag();
        figures.S[phase] = figures.rms[phase] * figures.rms[current];
    }
    figures.effectiveS = isThreePhase ? effectivePower(figures) : sumOf(figures.S);
}

IntervalFigures IntervalMeter::measure(const SampleStore& store, double begin, double end) {
    IntervalFigures figures;
    figures.frequencyHz = settings_.rateHz * static_cast<double>(cycles_) / (end - begin);
    figures.sensation.fill(nan);
    figures.shortTerm.fill(nan);
    figures.longTerm.fill(nan);
    sampler_.sample(store, begin, end, resampled_);
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (settings_.measures(channel)) {
            analyse(channel, figures);
        }
    }
    measurePower(figures);
    const double least = 0.01 * settings_.interruptionPercent * settings_.declaredVolts;
    std::transform(figures.rms.begin(), figures.rms.begin() + phaseTotal, figures.isInterrupted.begin(),
                   [least](double rms) { return rms < least; });
    const bool isAnyLeft = std::ranges::count(figures.isInterrupted, false) > 0;
    figures.frequencyHz = isAnyLeft ? figures.frequencyHz : nan;
    const auto& f = fundamentals_;
    figures.voltages = sequenceComponentsOf({f[0], f[1], f[2]});
    figures.currents = sequenceComponentsOf({f[3], f[4], f[5]});
    figures.isAlive = {hasSignal_[0] || hasSignal_[1] || hasSignal_[2],
                       hasSignal_[3] || hasSignal_[4] || hasSignal_[5]};
    return figures;
}

void Aggregate::add(const Interval& part) {
    if (!sum_) {
        sum_ = Interval{length_, part.startSeconds, 0.0, false, false, std::vector<double>(part.values.size(), 0.0)};
        counts_.assign(part.values.size(), 0);
    }
    sum_->isFlagged = sum_->isFlagged || part.isFlagged;
    sum_->durationSeconds = part.startSeconds + part.durationSeconds - sum_->startSeconds;
    for (std::size_t i = 0; i < part.values.size(); ++i) {
        const double value = part.values[i];
        if (std::isnan(value)) {
            continue;
        }
        const Averaging averaging = quantities_[i].averaging;
        double& sum = sum_->values[i];
        sum = averaging == Averaging::largest ? std::max(sum, value)
              : averaging == Averaging::last  ? value
                                              : sum + (averaging == Averaging::rms ? value * value : value);
        ++counts_[i];
    }
    ++parts_;
}

Interval Aggregate::take(bool isPartial) {
    Interval result = std::move(*sum_);
    result.isPartial = isPartial;
    for (std::size_t i = 0; i < result.values.size(); ++i) {
        const auto count = static_cast<double>(counts_[i]);
        const Averaging averaging = quantities_[i].averaging;
        double& value = result.values[i];
        value = count == 0.0                   ? nan
                : averaging == Averaging::rms  ? std::sqrt(value / count)
                : averaging == Averaging::mean ? value / count
                                               : value;
    }
    sum_.reset();
    parts_ = 0;
    return result;
}

}  // namespace rt305
