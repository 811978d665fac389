#include "signal/cycle_tracker.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "signal/harmonic_fit.h"
#include "signal/median.h"

namespace rt305 {

namespace {

using std::numbers::pi;

constexpr double acquisitionCycles = 10.0;
constexpr double nominalTolerance = 0.2;
constexpr double largestSecondDifference = 0.03;  // of the level
constexpr double leastLevel = 0.1;                // of the level before
constexpr std::size_t windowsOfChange = 5;        // a window of four half cycles, and one to compare with
constexpr std::size_t marksToRevise = 3;
constexpr std::size_t mostHeld = 20;
constexpr double firstPlace = 2.0;

}  // namespace

CycleTracker::CycleTracker(double rateHz, double nominalHz, std::size_t firstChannel, std::size_t channels)
    : rateHz_(rateHz),
      nominalHz_(nominalHz),
      firstChannel_(firstChannel),
      channels_(channels),
      nominalPeriod_(rateHz / nominalHz),
      period_(nominalPeriod_) {}

std::size_t CycleTracker::firstNeeded() const {
    const double back = (acquisitionCycles + 2.0) * period_;
    return hasBegun_ && next_ > back ? static_cast<std::size_t>(next_ - back) : 0;
}

/// By the fit of each channel near its strongest line.
std::optional<double> CycleTracker::fittedPeriod(const SampleStore& store, std::size_t first, std::size_t end) const {
    std::vector<double> frequencies;
    for (std::size_t i = 0; i < channels_; ++i) {
        const std::span<const double> samples(store.from(firstChannel_ + i, first), end - first);
        const auto line = strongestLine(samples, rateHz_, nominalHz_ * (1.0 - nominalTolerance),
                                        std::min(nominalHz_ * (1.0 + nominalTolerance), rateHz_ / 3.0));
        const auto fit = line ? fitFundamental(samples, rateHz_, *line) : std::nullopt;
        if (fit && std::abs(fit->phasor) > fit->residual) {
            frequencies.push_back(fit->frequencyHz);
        }
    }
    return frequencies.empty() ? std::nullopt : std::optional(rateHz_ / median(std::move(frequencies)));
}

/// RMS, and the angle of the sine at `place`, of the channels that are followed.
Phasors CycleTracker::phasorsAround(const SampleStore& store, double place) const {
    const auto first = static_cast<std::size_t>(std::ceil(place - period_));
    const auto end = static_cast<std::size_t>(std::floor(place + period_)) + 1;
    const double angle = pi / period_;
    const Phasor turn = std::polar(1.0, -angle);
    Phasor half = std::polar(1.0, -angle * (static_cast<double>(first) - place));
    std::array<const double*, phaseTotal> samples{};
    for (std::size_t i = 0; i < channels_; ++i) {
        samples[i] = store.from(firstChannel_ + i, first);
    }
    Phasors sums{};
    for (std::size_t k = 0; k < end - first; ++k) {
        const double weight = 1.0 + half.real();
        const double cosine = weight * (2.0 * half.real() * half.real() - 1.0);
        const double sine = weight * 2.0 * half.real() * half.imag();
        for (std::size_t i = 0; i < channels_; ++i) {
            sums[i] += Phasor(samples[i][k] * cosine, samples[i][k] * sine);
        }
        half = Phasor(half.real() * turn.real() - half.imag() * turn.imag(),
                      half.real() * turn.imag() + half.imag() * turn.real());
    }
    for (Phasor& sum : sums) {
        sum *= Phasor(0.0, std::numbers::sqrt2 / (2.0 * period_));
    }
    return sums;
}

Phasor CycleTracker::combined(const Phasors& x) const {
    return channels_ == 1 ? x[0] : (x[0] + rotation_ * x[1] + std::conj(rotation_) * x[2]) / 3.0;
}

/// Follows the largest of the symmetrical components.
void CycleTracker::chooseSequence(const Phasors& phasors) {
    double largest = -1.0;
    for (const double degrees : {120.0, -120.0, 0.0}) {
        const Phasor before = std::exchange(rotation_, std::polar(1.0, degrees * pi / 180.0));
        const double size = std::abs(combined(phasors));
        rotation_ = size > largest ? rotation_ : before;
        largest = std::max(size, largest);
    }
}

void CycleTracker::setOffsets(const Phasors& phasors, const Phasor& reference) {
    for (std::size_t i = 0; i < channels_; ++i) {
        if (std::abs(phasors[i]) > leastLevel * std::abs(reference)) {
            const double lag = std::arg(reference * std::conj(phasors[i])) / (2.0 * pi);
            offsets_[i] = lag - 0.5 * std::round(2.0 * lag);
        }
    }
}

/// Finds the period and the first crossing. False as long as there are too few samples.
bool CycleTracker::begin(const SampleStore& store, bool isLast) {
    const double wanted = acquisitionCycles * nominalPeriod_ + firstPlace;
    if (static_cast<double>(store.end()) < wanted && !isLast) {
        return false;
    }
    const auto end = std::min(store.end(), static_cast<std::size_t>(wanted));
    period_ = fittedPeriod(store, 0, end).value_or(period_);
    next_ = period_ + firstPlace;
    if (static_cast<double>(store.end()) < next_ + period_ + 1.0) {
        return false;
    }
    const Phasors phasors = phasorsAround(store, next_);
    chooseSequence(phasors);
    Phasor reference = combined(phasors);
    sign_ = reference.real() < 0.0 ? -1.0 : 1.0;
    reference *= sign_;
    if (const double angle = std::arg(reference); std::isfinite(angle)) {
        next_ -= angle / (2.0 * pi) * period_;
        level_ = std::abs(reference);
        setOffsets(phasors, sign_ * reference);
    }
    if (next_ < period_ + 1.0) {
        next_ += period_ / 2.0;
        sign_ = -sign_;
    }
    const double back = std::floor((next_ - firstPlace - period_ / 4.0) / (period_ / 2.0));
    for (auto k = static_cast<std::size_t>(std::max(0.0, back)); k > 0; --k) {
        add(next_ - static_cast<double>(k) * period_ / 2.0, false);
    }
    return hasBegun_ = true;
}

void CycleTracker::add(double place, bool isHeld) {
    marks_.push_back({place, period_, isHeld, offsets_});
    held_ = isHeld ? held_ + 1 : 0;
}

/// Whether the phasor at the expected crossing continues those before.
bool CycleTracker::isSteady(const Phasor& reference) {
    latest_.push_back(reference);
    if (latest_.size() > 3) {
        latest_.pop_front();
    }
    const double level = std::abs(reference);
    const bool isAlive = level > leastLevel * level_;  // false for NaN
    if (latest_.size() == 3) {
        // without their common turn, which another frequency gives
        const Phasor turn = std::polar(1.0, 0.5 * std::arg(latest_[2] * std::conj(latest_[0])));
        const double change = std::abs(latest_[0] * turn - 2.0 * latest_[1] + latest_[2] * std::conj(turn));
        const double scale = std::max(std::abs(latest_[0]), level);
        unsteady_ = change <= largestSecondDifference * scale ? unsteady_ - std::min<std::size_t>(unsteady_, 1)
                                                              : windowsOfChange;
    }
    if (!isAlive) {
        unsteady_ = windowsOfChange;
    }
    return unsteady_ == 0;
}

/// Moves the expected crossing to where the phasor shows it.
void CycleTracker::follow(const Phasors& phasors, Phasor reference) {
    if (reference.real() < 0.0) {  // a jump beyond 90 degrees: the nearest crossing is one of the other direction
        sign_ = -sign_;
        reference = -reference;
    }
    const double shift = std::arg(reference) / (2.0 * pi) * period_;
    const double place = next_ - shift;
    if (marks_.size() >= 4 && held_ == 0 &&
        std::none_of(marks_.end() - 4, marks_.end(), [](const Mark& mark) { return mark.isHeld; })) {
        const double measured = (place - marks_[marks_.size() - 4].place) / 2.0;
        const double limit = nominalTolerance * nominalPeriod_;
        period_ = std::clamp(measured, nominalPeriod_ - limit, nominalPeriod_ + limit);
    }
    const Phasor turn = std::polar(1.0, -std::arg(latest_.back()));
    std::for_each(latest_.begin(), latest_.end(), [turn](Phasor& each) { each *= turn; });
    level_ += 0.05 * (std::abs(reference) - level_);
    setOffsets(phasors, sign_ * reference);
    next_ = place;
    add(place, false);
}

/// Continues with the period before the change; after ten cycles with one that fits.
void CycleTracker::hold(const SampleStore& store) {
    if (held_ == 0) {
        for (std::size_t i = 0; i < std::min(marksToRevise, marks_.size()); ++i) {
            marks_[marks_.size() - 1 - i].isHeld = true;
        }
        period_ = marks_.size() > marksToRevise ? marks_[marks_.size() - 1 - marksToRevise].period : period_;
    }
    if (held_ > 0 && held_ % mostHeld == 0) {
        const double length = acquisitionCycles * period_;
        if (next_ > length) {
            const auto first = static_cast<std::size_t>(next_ - length);
            period_ = fittedPeriod(store, first, static_cast<std::size_t>(next_)).value_or(period_);
        }
        level_ = 0.0;  // a lower voltage is the new one
    }
    add(next_, true);
}

void CycleTracker::step(const SampleStore& store) {
    const Phasors phasors = phasorsAround(store, next_);
    const Phasor reference = sign_ * combined(phasors);
    if (isSteady(reference)) {
        follow(phasors, reference);
    } else {
        hold(store);
    }
    next_ += period_ / 2.0;
    sign_ = -sign_;
}

std::vector<Mark> CycleTracker::advance(const SampleStore& store, bool isLast) {
    if (!hasBegun_ && !begin(store, isLast)) {
        return {};
    }
    const auto end = static_cast<double>(store.end());
    while (next_ + period_ + 2.0 < end) {
        step(store);
    }
    while (isLast && next_ < end) {
        add(next_, true);
        next_ += period_ / 2.0;
    }
    const std::size_t ready = isLast ? marks_.size() : marks_.size() - std::min(marksToRevise, marks_.size());
    std::vector<Mark> result(marks_.begin() + static_cast<std::ptrdiff_t>(std::min(given_, ready)),
                             marks_.begin() + static_cast<std::ptrdiff_t>(ready));
    given_ = ready;
    for (; given_ > 8; --given_) {
        marks_.pop_front();
    }
    return result;
}

}  // namespace rt305
