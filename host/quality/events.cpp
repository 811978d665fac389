#include "quality/events.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <utility>

namespace rt305 {

namespace {

constexpr std::string_view eventNames[] = {"dip", "swell", "interruption", "rapid_change", "transient"};
constexpr double leastShareWithAngle = 0.05;  // of the fundamental before
constexpr double sameLevel = 0.05;
constexpr std::size_t cyclesBefore = 3;   // the last that ends before the event begins
constexpr double changeHysteresis = 0.5;  // IEC 61000-4-30: of the threshold of rapid changes

/// NaN without values.
double meanOf(const std::deque<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

/// Whether all values are that close to their mean; NaN are.
bool isWithin(const std::deque<double>& values, double distance) {
    const double mean = meanOf(values);
    return std::none_of(values.begin(), values.end(), [=](double value) { return std::fabs(value - mean) > distance; });
}

/// Of a sample from those one and two cycles before, and from the straight line through these.
double leastDeviation(double x, double x1, double x2) {
    return std::min({std::fabs(x - x1), std::fabs(x - x2), std::fabs(x - 2.0 * x1 + x2)});
}

/// A place between samples, and the weights of four of them in the cubic through it.
struct CubicPlace {
    explicit CubicPlace(double place) : first(static_cast<std::size_t>(place) - 1), weights{} {
        const double u = place - std::floor(place);
        weights = {-u * (u - 1.0) * (u - 2.0) / 6.0, (u + 1.0) * (u - 1.0) * (u - 2.0) / 2.0,
                   -(u + 1.0) * u * (u - 2.0) / 2.0, (u + 1.0) * u * (u - 1.0) / 6.0};
    }
    double of(const double* x) const {
        return weights[0] * x[0] + weights[1] * x[1] + weights[2] * x[2] + weights[3] * x[3];
    }

    std::size_t first;
    std::array<double, 4> weights;
};

}  // namespace

std::string_view nameOf(EventKind kind) {
    return eventNames[static_cast<std::size_t>(kind)];
}

LevelDetector::LevelDetector(EventKind kind, const QualitySettings& settings)
    : kind_(kind),
      beginPercent_(kind == EventKind::dip     ? settings.dipPercent
                    : kind == EventKind::swell ? settings.swellPercent
                                               : settings.interruptionPercent),
      endPercent_(beginPercent_ + (kind == EventKind::swell ? -1.0 : 1.0) * settings.hysteresisPercent),
      sign_(kind == EventKind::swell ? 1.0 : -1.0) {
    known_.fill(std::numeric_limits<double>::quiet_NaN());
}

/// False for NaN.
bool LevelDetector::isBeyond(double rms, double reference, double percent) const {
    return sign_ * (100.0 * rms - percent * reference) > 0.0;
}

/// The phases beyond a threshold, by their last values; for an interruption none, unless all that have a value are.
std::size_t LevelDetector::count(const PerPhase<double>& references, double percent) const {
    std::size_t beyond = 0;
    std::size_t all = 0;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        all += std::isnan(known_[phase]) ? 0 : 1;
        beyond += isBeyond(known_[phase], references[phase], percent) ? 1 : 0;
    }
    return kind_ == EventKind::interruption && beyond < all ? 0 : beyond;
}

void LevelDetector::open(const HalfCycle& cycle, const PerPhase<double>& references) {
    event_ = Event{kind_, std::numeric_limits<double>::infinity(), 0.0,
                   -sign_ * std::numeric_limits<double>::infinity(), 0.0};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (isBeyond(cycle.rms[phase], references[phase], beginPercent_)) {
            event_->startSeconds = std::min(event_->startSeconds, cycle.middles[phase]);
        }
    }
    event_->isCut = before_.empty();
    end_ = event_->startSeconds;
    worst_ = event_->volts;
    cycles_ = 0;
}

void LevelDetector::extend(const HalfCycle& cycle, const PerPhase<double>& references) {
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const double rms = cycle.rms[phase];
        if (isBeyond(rms, references[phase], endPercent_)) {
            end_ = std::max(end_, cycle.middles[phase]);
        }
        if (isBeyond(rms, references[phase], beginPercent_)) {
            event_->phases[phase] = true;
        }
        if (sign_ * (rms - event_->volts) > 0.0) {
            event_->volts = rms;
            event_->percent = 100.0 * rms / references[phase];
        }
    }
    constexpr std::size_t cyclesOfJump = 3;  // the last begins a cycle after the first that shows the event
    if (cycles_++ < cyclesOfJump && kind_ != EventKind::interruption && !before_.empty()) {
        measureJump(cycle);
    }
}

/// The angle of the most affected phase, against that of the last cycle before continued with its frequency.
void LevelDetector::measureJump(const HalfCycle& cycle) {
    const HalfCycle& before = before_.front();
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const double rms = cycle.rms[phase];
        // the last of nearly equal cycles is most certain to lie in the event as a whole
        if (std::isinf(worst_) || sign_ * (rms - worst_) > -sameLevel * worst_) {
            const double turns = (cycle.middles[phase] - before.middles[phase]) / before.cycleSeconds;
            const Phasor expected = before.voltages[phase] * std::polar(1.0, 2.0 * std::numbers::pi * turns);
            const bool hasAngle = std::abs(cycle.voltages[phase]) > leastShareWithAngle * std::abs(expected);
            worst_ = rms;
            event_->jumpDegrees = hasAngle
                                      ? std::arg(cycle.voltages[phase] * std::conj(expected)) * 180.0 / std::numbers::pi
                                      : std::numeric_limits<double>::quiet_NaN();
        }
    }
}

std::optional<Event> LevelDetector::close(bool isCut) {
    event_->isCut = event_->isCut || isCut;
    event_->durationSeconds = end_ - event_->startSeconds;
    std::optional<Event> ended = event_;
    event_.reset();
    return ended;
}

std::optional<Event> LevelDetector::push(const HalfCycle& cycle, const PerPhase<double>& references) {
    std::optional<Event> ended;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        known_[phase] = std::isnan(cycle.rms[phase]) ? known_[phase] : cycle.rms[phase];
    }
    if (!event_ && count(references, beginPercent_) > 0) {
        open(cycle, references);
    } else if (event_ && count(references, endPercent_) == 0) {
        end_ = std::max(end_, event_->startSeconds + cycle.cycleSeconds / 2.0);
        ended = close(false);
    }
    if (event_) {
        extend(cycle, references);
    }
    if (!event_) {
        before_.push_back(cycle);
        if (before_.size() > cyclesBefore - 1) {
            before_.pop_front();
        }
    }
    return ended;
}

std::optional<Event> LevelDetector::finish() {
    return event_ ? close(true) : std::nullopt;
}

ChangeDetector::ChangeDetector(const QualitySettings& settings)
    : settings_(settings), cyclesOfSecond_(static_cast<std::size_t>(std::round(2.0 * settings.nominalHz))) {}

void ChangeDetector::remember(const HalfCycle& cycle) {
    times_.push_back(cycle.seconds);
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        last_[phase].push_back(cycle.rms[phase]);
        if (times_.size() > cyclesOfSecond_) {
            last_[phase].pop_front();
        }
    }
    if (times_.size() > cyclesOfSecond_) {
        times_.pop_front();
    }
}

std::optional<Event> ChangeDetector::push(const HalfCycle& cycle, bool isDisturbed) {
    const bool isFull = times_.size() == cyclesOfSecond_;
    const double threshold = settings_.changePercent / 100.0 * settings_.declaredVolts;
    PerPhase<double> means{};
    std::transform(last_.begin(), last_.end(), means.begin(), meanOf);
    remember(cycle);
    const double allowed = threshold * (event_ ? changeHysteresis : 1.0);
    const bool isSteady =
        std::all_of(last_.begin(), last_.end(), [=](const auto& values) { return isWithin(values, allowed); });
    const bool wasSteady = std::exchange(isSteady_, isFull && isSteady);
    if (!event_ && wasSteady && !isSteady) {
        event_ = Event{EventKind::rapidChange, cycle.seconds, 0.0, 0.0, 0.0};
        before_ = means;
        isSpoiled_ = false;
    }
    if (!event_) {
        return std::nullopt;
    }
    isSpoiled_ = isSpoiled_ || isDisturbed;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const double step = std::fabs(cycle.rms[phase] - before_[phase]);
        event_->phases[phase] = event_->phases[phase] || step > threshold;
        event_->volts = std::fmax(event_->volts, step);
    }
    return isSteady ? close() : std::nullopt;
}

/// The change has ended where the steady second begins.
std::optional<Event> ChangeDetector::close() {
    std::optional<Event> ended = event_;
    event_.reset();
    double steadyStep = 0.0;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        steadyStep = std::fmax(steadyStep, std::fabs(meanOf(last_[phase]) - before_[phase]));
    }
    ended->durationSeconds = std::fmax(0.0, times_.front() - ended->startSeconds);
    ended->percent = 100.0 * ended->volts / settings_.declaredVolts;
    ended->steadyPercent = 100.0 * steadyStep / settings_.declaredVolts;
    return isSpoiled_ ? std::nullopt : ended;
}

void TransientDetector::scan(const Mark& from, const Mark& to, const SampleStore& store, std::vector<Event>& found) {
    const double period = from.period;
    if (from.place < 2.0 * period + 2.0) {
        return;
    }
    const auto first = static_cast<std::size_t>(from.place);
    const auto end = std::min(static_cast<std::size_t>(to.place), store.end());
    const double threshold = settings_.transientPercent / 100.0 * std::numbers::sqrt2 * settings_.declaredVolts;
    const CubicPlace one(static_cast<double>(first) - period);
    const CubicPlace two(static_cast<double>(first) - 2.0 * period);
    for (std::size_t phase = 0; phase < phaseTotal && first < end; ++phase) {
        if (!settings_.measures(phase)) {
            continue;
        }
        Deviation& open = open_[phase];
        const double* const now = store.from(phase, first);
        const double* const before = store.from(phase, one.first);
        const double* const earlier = store.from(phase, two.first);
        for (std::size_t k = 0; k < end - first; ++k) {
            const double x = now[k];
            const double x1 = one.of(before + k);
            if (std::fabs(x - x1) > threshold) {
                open.addIf(threshold, static_cast<double>(first + k), leastDeviation(x, x1, two.of(earlier + k)),
                           period);
            }
        }
        if (open.first >= 0.0 && static_cast<double>(end) - open.last > period / 2.0) {
            close(phase, found);
        }
    }
}

void TransientDetector::Deviation::addIf(double threshold, double place, double deviation, double cycle) {
    if (!(deviation > threshold)) {
        return;
    }
    first = first < 0.0 ? place : first;
    last = place;
    largest = std::max(largest, deviation);
    period = cycle;
}

void TransientDetector::close(std::size_t phase, std::vector<Event>& found) {
    const Deviation open = std::exchange(open_[phase], {});
    const double length = open.last - open.first + 1.0;
    if (open.first < 0.0 || length > open.period / 2.0) {
        return;
    }
    Event event{EventKind::transient, settings_.startSeconds + open.first / settings_.rateHz, length / settings_.rateHz,
                open.largest, 100.0 * open.largest / (std::numbers::sqrt2 * settings_.declaredVolts)};
    event.phases[phase] = true;
    found.push_back(event);
}

void TransientDetector::finish(std::vector<Event>& found) {
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        close(phase, found);
    }
}

}  // namespace rt305
