#include "quality/analyser.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace rt305 {

namespace {

constexpr double tenSeconds = 10.0;
constexpr double tenMinutes = 600.0;
constexpr long tenMinutesOfTwoHours = 12;
constexpr std::size_t partsOfThreeSeconds = 15;
constexpr double flickerSettles = 10.0;       // s from the start, which are left out
constexpr double completeShare = 0.999;       // of a length by the clock: intervals begin with a cycle
constexpr double slidingShare = 1.0 / 300.0;  // of an interval of 0.2 s: a time constant of a minute

}  // namespace

QualityAnalyser::QualityAnalyser(const QualitySettings& settings, QualityListener listener)
    : settings_(settings),
      listener_(std::move(listener)),
      tracker_(settings_.rateHz, settings_.nominalHz, settings_.leadingChannel(),
               settings_.isThreePhase() ? phaseTotal : 1),
      halfCycles_(settings_),
      changes_(settings_),
      transients_(settings_),
      threeSeconds_(quantities_, IntervalLength::threeSeconds),
      tenMinutes_(quantities_, IntervalLength::tenMinutes) {
    references_.fill(settings_.declaredVolts);
    for (const EventKind kind : {EventKind::dip, EventKind::swell, EventKind::interruption}) {
        levels_.emplace_back(kind, settings_);
    }
    if (!settings_.eventsOnly) {
        quantities_ = quantitiesOf(settings_);
        intervals_.emplace(settings_);
        for (std::size_t phase = 0; phase < phaseTotal && settings_.measures(phase); ++phase) {
            flicker_.emplace_back(settings_.rateHz, settings_.nominalHz, settings_.lamp);
        }
    }
}

void QualityAnalyser::push(const SampleBlock& block) {
    store_.append(block);
    for (std::size_t phase = 0; phase < flicker_.size(); ++phase) {
        flicker_[phase].push(block[phase]);
    }
    advance(false);
    double needed = static_cast<double>(tracker_.firstNeeded());
    if (previous_ || !waiting_.empty()) {
        const Mark& oldest = previous_ ? *previous_ : waiting_.front();
        needed = std::min(needed, oldest.place - 3.0 * oldest.period - 4.0);
    }
    if (!begun_.empty()) {
        needed = std::min(needed, begun_.front().place - static_cast<double>(PointSampler::margin));
    }
    store_.dropBefore(static_cast<std::size_t>(std::max(0.0, needed)));
}

void QualityAnalyser::advance(bool isLast) {
    for (const Mark& mark : tracker_.advance(store_, isLast)) {
        waiting_.push_back(mark);
    }
    while (isLast ? !waiting_.empty()
                  : waiting_.size() > 2 && HalfCycleMeter::samplesNeeded(waiting_.front()) <= store_.end()) {
        take(waiting_.front());
        waiting_.pop_front();
    }
}

void QualityAnalyser::take(const Mark& mark) {
    if (previous_ && settings_.hasVoltages()) {
        std::vector<Event> found;
        transients_.scan(*previous_, mark, store_, found);
        emit(found);
    }
    const HalfCycle cycle = halfCycles_.measure(waiting_, store_);
    if (settings_.hasVoltages()) {
        detect(cycle);
    }
    listener_.halfCycle(cycle);
    if (intervals_) {
        countFrequency(mark);
        advanceIntervals(mark);
    }
    previous_ = mark;
}

void QualityAnalyser::detect(const HalfCycle& cycle) {
    for (LevelDetector& level : levels_) {
        emit(level.push(cycle, references_));
    }
    emit(changes_.push(cycle, isDisturbed()));
}

bool QualityAnalyser::isDisturbed() const {
    return std::any_of(levels_.begin(), levels_.end(), [](const LevelDetector& level) { return level.isOpen(); });
}

long QualityAnalyser::tickAt(double place, double length) const {
    return static_cast<long>(std::floor((settings_.clockSeconds + secondsAt(place)) / length));
}

void QualityAnalyser::countFrequency(const Mark& mark) {
    if (const long tick = tickAt(mark.place, tenSeconds); tick != frequency_.tick) {
        emitFrequency();
        frequency_ = {tick, mark.place, mark.place, 0, isDisturbed()};
        return;
    }
    frequency_.last = mark.place;
    ++frequency_.halfCycles;
    frequency_.isFlagged = frequency_.isFlagged || isDisturbed();
}

void QualityAnalyser::emitFrequency() {
    const double length = secondsAt(frequency_.last - frequency_.first);
    if (frequency_.halfCycles < 2) {
        return;
    }
    Interval interval{IntervalLength::tenSeconds, settings_.startSeconds + secondsAt(frequency_.first), length,
                      frequency_.isFlagged};
    interval.isPartial = length < tenSeconds - 2.0 / settings_.nominalHz;
    interval.values = {0.5 * static_cast<double>(frequency_.halfCycles) / length};
    listener_.interval(interval);
}

/// Begins an interval where the last one ends, and at each tick of the clock, where the last one may overlap it.
void QualityAnalyser::advanceIntervals(const Mark& mark) {
    for (Begun& begun : begun_) {
        ++begun.halfCycles;
    }
    bool hasEnded = begun_.empty();
    const auto margin = static_cast<double>(PointSampler::margin);
    if (!begun_.empty() && begun_.front().halfCycles == 2 * settings_.cyclesPerInterval()) {
        if (mark.place + margin <= static_cast<double>(store_.end())) {
            measureInterval(begun_.front(), mark.place);
        }
        begun_.pop_front();
        hasEnded = begun_.empty();
    }
    const bool isTick = previous_ && tickAt(previous_->place, tenMinutes) != tickAt(mark.place, tenMinutes);
    if ((hasEnded || isTick) && mark.place >= margin) {
        begun_.push_back({mark.place, 0, false});
    }
    for (Begun& begun : begun_) {
        begun.isFlagged = begun.isFlagged || isDisturbed();
    }
}

/// The values of Pinst between two places, without those before the filters have settled.
std::span<const float> QualityAnalyser::sensation(std::size_t phase, double from, double to) const {
    const auto& values = flicker_[phase].sensation();
    const auto indexOf = [&](double seconds) {
        const double index = std::max(seconds, flickerSettles) * FlickerMeter::valuesPerSecond;
        return std::min(static_cast<std::size_t>(index), values.size());
    };
    return std::span(values).subspan(indexOf(from), indexOf(to) - indexOf(from));
}

void QualityAnalyser::measureInterval(const Begun& begun, double end) {
    IntervalFigures figures = intervals_->measure(store_, begun.place, end);
    for (std::size_t phase = 0; phase < flicker_.size(); ++phase) {
        const auto values = sensation(phase, secondsAt(begun.place), secondsAt(end));
        if (!values.empty()) {
            figures.sensation[phase] = *std::max_element(values.begin(), values.end());
        }
    }
    for (std::size_t phase = 0; phase < phaseTotal && settings_.isSlidingReference && !begun.isFlagged; ++phase) {
        const double change = slidingShare * (figures.rms[phase] - references_[phase]);
        references_[phase] += std::isnan(change) ? 0.0 : change;
    }
    Interval interval{IntervalLength::cycles, settings_.startSeconds + secondsAt(begun.place),
                      secondsAt(end - begun.place), begun.isFlagged};
    std::transform(quantities_.begin(), quantities_.end(), std::back_inserter(interval.values),
                   [&figures](const IntervalQuantity& quantity) { return quantity.value(figures); });
    listener_.interval(interval);
    const long tick = tickAt(begun.place, tenMinutes);
    if (tick != tick_) {
        emitTenMinutes(false);
        tick_ = tick;
    }
    join(interval);
}

void QualityAnalyser::join(const Interval& interval) {
    threeSeconds_.add(interval);
    tenMinutes_.add(interval);
    if (threeSeconds_.parts() == partsOfThreeSeconds) {
        listener_.interval(threeSeconds_.take(false));
    }
}

/// Ends the 10 minutes, and the 3 s in them.
void QualityAnalyser::emitTenMinutes(bool isLast) {
    if (threeSeconds_.parts() > 0) {
        listener_.interval(threeSeconds_.take(true));
    }
    if (tenMinutes_.parts() > 0) {
        Interval interval = tenMinutes_.take(false);
        interval.isPartial = interval.durationSeconds < completeShare * tenMinutes;
        addFlicker(interval, isLast);
        listener_.interval(interval);
    }
}

/// Pst of the 10 minutes; Plt at the end of two hours, or of the stream.
void QualityAnalyser::addFlicker(Interval& interval, bool isLast) {
    const double from = static_cast<double>(tick_) * tenMinutes - settings_.clockSeconds;
    for (std::size_t phase = 0; phase < flicker_.size(); ++phase) {
        const double severity = shortTermSeverity(sensation(phase, from, from + tenMinutes));
        const std::string name(channelNames[phase]);
        shortTerm_[phase].push_back(severity);
        interval.values[*findQuantity(quantities_, "Pst_" + name)] = severity;
        if (isLast || tick_ % tenMinutesOfTwoHours == tenMinutesOfTwoHours - 1) {
            interval.values[*findQuantity(quantities_, "Plt_" + name)] = longTermSeverity(shortTerm_[phase]);
            shortTerm_[phase].clear();
        }
    }
}

void QualityAnalyser::finish() {
    advance(true);
    for (LevelDetector& level : levels_) {
        emit(level.finish());
    }
    std::vector<Event> found;
    transients_.finish(found);
    emit(found);
    emitFrequency();
    emitTenMinutes(true);
}

void QualityAnalyser::emit(const std::optional<Event>& event) {
    if (event) {
        listener_.event(*event);
    }
}

void QualityAnalyser::emit(const std::vector<Event>& events) {
    std::for_each(events.begin(), events.end(), listener_.event);
}

}  // namespace rt305
