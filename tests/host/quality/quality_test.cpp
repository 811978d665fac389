#include <gtest/gtest.h>

#include <functional>
#include <numbers>
#include <numeric>

#include "base/text.h"
#include "quality/results.h"
#include "support/signals.h"

namespace {

using rt305::EventKind;
using signals::Samples;
using signals::twoPi;

constexpr double volts = 230.0;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// x(t) in units of the declared crest for phase 0, 1, 2.
using Wave = std::function<double(double seconds, std::size_t phase)>;

struct Analysed : rt305::QualityResults {
    std::vector<rt305::HalfCycle> cycles{};
    std::vector<rt305::Interval> intervals_{};

    double value(std::string_view key, const rt305::Interval& interval) const {
        return interval.values.at(*rt305::findQuantity(quantities, key));
    }
    double mean(std::string_view key) const {
        const auto& all = values.at(*rt305::findQuantity(quantities, key));
        return std::accumulate(all.begin(), all.end(), 0.0) / static_cast<double>(all.size());
    }
};

struct Setup {
    double rateHz = 10000.0;
    double nominalHz = 50.0;
    double seconds = 1.0;
    bool eventsOnly = true;
    std::size_t phases = 3;
    double clockSeconds = 0.0;
};

Analysed analysed(const Setup& setup, const Wave& wave, const Wave& currents = {}) {
    rt305::QualitySettings settings{.rateHz = setup.rateHz,
                                    .nominalHz = setup.nominalHz,
                                    .declaredVolts = volts,
                                    .clockSeconds = setup.clockSeconds,
                                    .eventsOnly = setup.eventsOnly};
    rt305::PerChannel<Samples> samples;
    for (std::size_t channel = 0; channel < 6; ++channel) {
        const Wave& each = channel < 3 ? wave : currents;
        settings.isMeasured[channel] = each && channel % 3 < setup.phases;
        for (double k = 0; settings.isMeasured[channel] && k < setup.seconds * setup.rateHz; ++k) {
            samples[channel].push_back(volts * std::numbers::sqrt2 * each(k / setup.rateHz, channel % 3));
        }
    }
    Analysed result;
    const rt305::QualityListener listener{
        .halfCycle = [&](const rt305::HalfCycle& cycle) { result.cycles.push_back(cycle); },
        .interval = [&](const rt305::Interval& interval) { result.intervals_.push_back(interval); }};
    static_cast<rt305::QualityResults&>(result) = rt305::analyse(samples, settings, rt305::KeepTraces::no, listener);
    return result;
}

double phaseAngle(std::size_t phase) {
    return twoPi * static_cast<double>(phase) / 3.0;
}

Wave sine(double hz) {
    return [hz](double t, std::size_t phase) { return std::sin(twoPi * hz * t - phaseAngle(phase)); };
}

/// Pst of 10 minutes, after 2 that settle, of a voltage with rectangular changes.
double severityOf(rt305::Lamp lamp, double hz, double changesHz, double size) {
    constexpr double rate = 1600.0;
    rt305::FlickerMeter meter(rate, hz, lamp);
    Samples second(static_cast<std::size_t>(rate));
    for (double start = 0.0; start < 720.0; start += 1.0) {
        for (std::size_t k = 0; k < second.size(); ++k) {
            const double t = start + static_cast<double>(k) / rate;
            const bool isUp = std::fmod((t - 120.0 + 1e6 / changesHz) * changesHz + 1e-9, 1.0) < 0.5;
            second[k] = volts * (1.0 + (isUp ? 0.5 : -0.5) * size) * std::sin(twoPi * hz * t);
        }
        meter.push(second);
    }
    const auto all = std::span(meter.sensation());
    return rt305::shortTermSeverity(all.subspan(12000, 60000));
}

/// The mean of sin^2 from cycle x0 to x1.
double squareIntegral(double x0, double x1) {
    return x1 <= x0 ? 0.0 : (x1 - x0) / 2.0 - (std::sin(2 * twoPi * x1) - std::sin(2 * twoPi * x0)) / (4.0 * twoPi);
}

/// The smallest RMS of a cycle that begins at a zero crossing, of a sine with the amplitude `depth` from cycle `from`
/// to `to`.
double smallestRms(double from, double to, double depth) {
    double least = 1.0;
    for (double begin = std::floor(from) - 2.0; begin < to; begin += 0.5) {
        const double part = squareIntegral(std::max(begin, from), std::min(begin + 1.0, to));
        least = std::min(least, std::sqrt(1.0 - 2.0 * (1.0 - depth * depth) * part));
    }
    return least;
}

TEST(Quality, MeasuresDipsAtEveryPointOnWave) {
    struct Case {
        double rateHz, nominalHz, hz;
    };
    constexpr double depth = 0.4;
    for (const Case& c : {Case{10000, 50, 50.0}, {10000, 50, 49.6}, {7680, 60, 60.0}, {1200, 60, 59.97}}) {
        for (const double cycles : {0.5, 1.0, 1.3, 2.0, 5.7, 10.0, 30.0}) {
            for (double pointOnWave = 0.0; pointOnWave < 1.0; pointOnWave += 0.0625) {
                // the edges of a sampled step lie half way between two samples
                const double perCycle = c.rateHz / c.hz;
                const double from = (std::floor((20.0 + pointOnWave) * perCycle) + 0.5) / perCycle;
                const double to = (std::floor(from * perCycle + cycles * perCycle) + 0.5) / perCycle;
                const auto result =
                    analysed({c.rateHz, c.nominalHz, (to + 10.0) / c.hz}, [&](double t, std::size_t phase) {
                        const double x = c.hz * t;
                        return (phase == 0 && x >= from && x < to ? depth : 1.0) * sine(c.hz)(t, phase);
                    });
                SCOPED_TRACE(testing::Message() << c.hz << " Hz, " << cycles << " cycles from " << pointOnWave);
                const double least = smallestRms(from, to, depth);
                if (least > 0.897) {
                    continue;
                }
                ASSERT_GE(result.events.size(), 1U);
                const auto& dip = *std::find_if(result.events.begin(), result.events.end(),
                                                [](const auto& event) { return event.kind == EventKind::dip; });
                EXPECT_EQ(dip.phases, (rt305::PerPhase<bool>{true, false, false}));
                EXPECT_NEAR(dip.percent, 100.0 * least, 0.2);
                EXPECT_NEAR(dip.startSeconds * c.hz, from, 0.51);
                EXPECT_NEAR((dip.startSeconds + dip.durationSeconds) * c.hz, to, 0.51);
            }
        }
    }
}

/// "dip abc 0.300 0.100 40.0": kind, phases, start, duration, percent of the declared voltage.
std::string described(const rt305::Event& event) {
    std::string text(rt305::nameOf(event.kind));
    text += ' ';
    for (std::size_t phase = 0; phase < 3; ++phase) {
        text += event.phases[phase] ? std::string(1, static_cast<char>('a' + phase)) : "";
    }
    const auto fixed = [](double value, int decimals) { return ' ' + rt305::formatFixed(value, decimals); };
    return text + fixed(event.startSeconds, 2) + fixed(event.durationSeconds, 2) + fixed(event.percent, 0) +
           (std::isnan(event.jumpDegrees) ? "" : fixed(event.jumpDegrees, 0)) + (event.isCut ? " cut" : "");
}

TEST(Quality, FindsEventsOfSeveralPhases) {
    /// Amplitude and turn in degrees of some phases from one time to another.
    struct Step {
        double from, to, amplitude, degrees;
        std::string phases;
    };
    struct Case {
        std::vector<Step> steps;
        std::vector<std::string> events;
    };
    for (const Case& c :
         std::vector<Case>{{{}, {}},
                           {{{1.5, 1.6, 0.91, 0, "abc"}}, {"rapid_change abc 1.50 0.11 9"}},
                           {{{0.5, 0.6, 0.7, 30, "b"}}, {"dip b 0.50 0.10 69 30"}},
                           {{{0.5, 0.8, 0.7, 0, "b"}, {0.6, 1.0, 0.5, -20, "c"}}, {"dip bc 0.50 0.51 50 0"}},
                           {{{0.5, 0.6, 1.2, 0, "a"}}, {"swell a 0.50 0.10 120 0"}},
                           {{{0.5, 0.6, 0.05, 0, "ab"}}, {"dip ab 0.50 0.10 5"}},
                           {{{0.5, 0.6, 0.05, 0, "abc"}}, {"dip abc 0.50 0.11 5", "interruption abc 0.52 0.07 5"}},
                           {{{0.0, 0.3, 0.5, 0, "a"}}, {"dip a 0.02 0.28 50 cut"}},
                           {{{2.0, 3.0, 0.5, 0, "a"}}, {"dip a 2.00 0.98 50 0 cut"}},
                           {{{1.5, 3.0, 0.94, 0, "ab"}}, {"rapid_change ab 1.51 0.00 6"}},
                           {{{1.5, 1.5003, 1.5, 0, "a"}}, {}},
                           {{{1.505, 1.5052, 0.0, 0, "a"}}, {"transient a 1.50 0.00 100"}}}) {
        const auto result = analysed({.seconds = 3.0}, [&](double t, std::size_t phase) {
            double x = sine(50.0)(t, phase);
            for (const Step& step : c.steps) {
                if (t >= step.from && t < step.to && step.phases.find("abc"[phase]) != std::string::npos) {
                    x = step.amplitude * std::sin(twoPi * (50.0 * t + step.degrees / 360.0) - phaseAngle(phase));
                }
            }
            return x;
        });
        std::vector<std::string> events;
        std::transform(result.events.begin(), result.events.end(), std::back_inserter(events), described);
        EXPECT_EQ(events, c.events);
    }
}

TEST(Quality, FollowsFrequency) {
    struct Case {
        double rateHz, nominalHz, hz, slope;  // Hz/s
    };
    const std::vector<std::pair<int, double>> harmonics{{3, 0.1}, {5, 0.1}, {7, 0.1}, {25, 0.05}};
    for (const Case& c : {Case{10000, 50, 49.973, 0},
                          {10000, 50, 42.5, 0},
                          {10000, 50, 57.5, 0},
                          {3840, 60, 60.011, 0},
                          {10000, 50, 50.0, 1.0},
                          {10000, 50, 51.0, -0.5}}) {
        SCOPED_TRACE(testing::Message() << c.hz << " Hz, " << c.slope << " Hz/s");
        const auto result = analysed({c.rateHz, c.nominalHz, 10.3, false}, [&](double t, std::size_t phase) {
            const double angle = twoPi * (c.hz + 0.5 * c.slope * t) * t - phaseAngle(phase);
            double x = std::sin(angle);
            for (const auto& [order, share] : harmonics) {
                x += share * std::sin(order * angle + 1.0);
            }
            return x;
        });
        EXPECT_TRUE(result.events.empty());
        ASSERT_FALSE(result.tenSeconds.empty());
        EXPECT_NEAR(result.tenSeconds[0].values[0], c.hz + 5.0 * c.slope, c.slope == 0.0 ? 1e-4 : 0.01);
        for (const auto& cycle : result.cycles) {
            if (std::isfinite(cycle.rocof) && cycle.seconds > 0.1 && cycle.seconds < 10.2) {
                ASSERT_NEAR(cycle.frequencyHz, c.hz + c.slope * cycle.seconds, 0.01);
                ASSERT_NEAR(cycle.rocof, c.slope, 0.1);
            }
        }
    }
}

TEST(Quality, MeasuresSubgroups) {
    struct Line {
        double order, percent;
    };
    struct Expected {
        std::string key;
        double percent;  // of the fundamental; THDS as it is
    };
    struct Case {
        std::vector<Line> lines;
        std::vector<Expected> expected;
    };
    const Case cases[] = {
        // order 5 of 10 %, modulated by 20 % at a tenth of the fundamental
        {{{5, 10}, {4.9, 1}, {5.1, 1}}, {{"Ua_h5", std::sqrt(102.0)}, {"Ua_ih4", 0}, {"Ua_ih5", 0}}},
        {{{7.5, 4}}, {{"Ua_ih7", 4}, {"Ua_ih6", 0}, {"Ua_ih8", 0}, {"Ua_h7", 0}, {"Ua_h8", 0}, {"THDS_Ua", 0}}},
        {{{7, 10}, {13, 5}, {25, 5}, {7.5, 1}, {3.5, 1}},
         {{"THDS_Ua", 12.2474}, {"Ua_ih7", 1}, {"Ua_ih3", 1}, {"Ua_h25", 5}, {"Ub_h13", 5}}},
        {{{50, 2}, {49.5, 1}, {0.5, 3}}, {{"Ua_h50", 2}, {"Ua_ih49", 1}, {"Ua_ih0", 3}, {"THDS_Ua", 0}}}};
    for (const Case& c : cases) {
        for (const double hz : {50.0, 49.7, 60.3}) {
            const double nominal = hz < 55.0 ? 50.0 : 60.0;
            if (nominal > 55.0 && &c == cases) {
                continue;  // a tenth of the fundamental is no line of 12 cycles
            }
            const auto result = analysed({10000, nominal, 1.5, false}, [&](double t, std::size_t phase) {
                double x = sine(hz)(t, phase);
                for (const Line& line : c.lines) {
                    x += line.percent / 100.0 * std::sin(line.order * (twoPi * hz * t - phaseAngle(phase)));
                }
                return x;
            });
            for (const Expected& each : c.expected) {
                const double share = each.key[0] == 'T' ? 1.0 : 100.0 / volts;
                // IEC 61000-4-7, class I: 5 % of the value, 0.05 % of the voltage; here a tenth of it
                EXPECT_NEAR(share * result.value(each.key, result.tenMinutes[0]), each.percent, 0.01)
                    << each.key << " at " << hz << " Hz";
            }
        }
    }
}

TEST(Quality, MeasuresPowerAndUnbalance) {
    constexpr double lag = 30.0 / 360.0 * twoPi;
    const auto result = analysed(
        {10000, 50, 2.0, false},
        [](double t, std::size_t phase) {  // 2 % of negative and 1 % of zero sequence
            return sine(50)(t, phase) + 0.02 * std::sin(twoPi * 50 * t + phaseAngle(phase)) +
                   0.01 * std::sin(twoPi * 50 * t);
        },
        [&](double t, std::size_t phase) {
            return std::sin(twoPi * 50 * t - phaseAngle(phase) - lag) + 0.5 * std::sin(5 * twoPi * 50 * t);
        });
    const double square = volts * volts;
    for (const auto& [key, expected, tolerance] : {std::tuple{"u2", 2.0, 1e-3},
                                                   {"u0", 1.0, 1e-3},
                                                   {"U1", volts, 0.01},
                                                   {"Pb", square * std::cos(lag), 2000.0},
                                                   {"P", 3 * square * std::cos(lag), 10.0},
                                                   {"Q1", 3 * square * std::sin(lag), 10.0},
                                                   {"THDS_Ib", 50.0, 0.01},
                                                   {"Ia", volts * std::sqrt(1.25), 0.01},
                                                   {"frequency", 50.0, 1e-6}}) {
        EXPECT_NEAR(result.mean(key), expected, tolerance) << key;
    }
    EXPECT_NEAR(result.mean("PF"), result.mean("P") / result.mean("S"), 1e-6);
}

TEST(Quality, JoinsIntervalsByTheClock) {
    // 25 minutes from 4 s before a full 10 minutes on, with 5 % more voltage in every second 3 s, and one dip
    const auto result = analysed({1000, 50, 610.0, false, 1, 596.0}, [](double t, std::size_t) {
        const double more = std::fmod(t, 6.0) < 3.0 ? 1.02 : 0.98;
        return (t > 300.0 && t < 300.1 ? 0.5 : more) * std::sin(twoPi * 50 * t);
    });
    ASSERT_EQ(result.tenMinutes.size(), 3U);
    EXPECT_TRUE(result.tenMinutes[0].isPartial && result.tenMinutes[2].isPartial);
    const auto& whole = result.tenMinutes[1];
    EXPECT_FALSE(whole.isPartial);
    EXPECT_TRUE(whole.isFlagged);
    EXPECT_FALSE(result.tenMinutes[0].isFlagged);
    EXPECT_NEAR(whole.startSeconds, 4.0, 0.021);
    EXPECT_NEAR(whole.durationSeconds, 600.0, 0.21);
    EXPECT_NEAR(result.value("Ua", whole), volts * std::sqrt((1.02 * 1.02 + 0.98 * 0.98) / 2.0), 0.1);
    EXPECT_NEAR(static_cast<double>(result.flagged), 1.0, 1.0);
    EXPECT_EQ(result.tenSeconds.size(), 62U);
    EXPECT_TRUE(std::ranges::all_of(result.tenSeconds, [](const auto& each) {
        return each.isFlagged == (each.startSeconds < 300.1 && each.startSeconds + each.durationSeconds > 300.0);
    }));
    EXPECT_EQ(std::count_if(result.intervals_.begin(), result.intervals_.end(),
                            [](const auto& each) {
                                return each.length == rt305::IntervalLength::threeSeconds && !each.isPartial;
                            }),
              1 + 200 + 1);
}

TEST(Flicker, GivesThePublishedSeverities) {
    using rt305::Lamp;
    // changes per minute and their size in % for Pst = 1: IEC 61000-4-15, edition 2, table 5
    constexpr double rates[] = {1, 2, 7, 39, 110, 1620, 0};
    struct Case {
        Lamp lamp;
        double hz;
        std::array<double, 7> sizes;
        double fastest;
    };
    for (const Case& c : {Case{Lamp::of230V, 50, {2.715, 2.191, 1.450, 0.894, 0.722, 0.407, 2.343}, 4000},
                          {Lamp::of120V, 60, {3.181, 2.564, 1.694, 1.040, 0.844, 0.548, 4.837}, 4800},
                          {Lamp::of120V, 50, {3.178, 2.561, 1.694, 1.045, 0.844, 0.545, 3.426}, 4000},
                          {Lamp::of230V, 60, {2.719, 2.194, 1.450, 0.895, 0.723, 0.409, 3.263}, 4800}}) {
        for (std::size_t i = 0; i < c.sizes.size(); ++i) {
            const double perMinute = rates[i] > 0.0 ? rates[i] : c.fastest;
            EXPECT_NEAR(severityOf(c.lamp, c.hz, perMinute / 120.0, c.sizes[i] / 100.0), 1.0, 0.05)
                << c.hz << " Hz, " << perMinute << " changes a minute";
        }
    }
    for (const double factor : {0.1, 5.0}) {
        EXPECT_NEAR(severityOf(Lamp::of230V, 50, 39.0 / 120.0, factor * 0.00894), factor, 0.05 * factor);
    }
}

}  // namespace
