#include "quality/half_cycle.h"

#include <cmath>
#include <limits>
#include <numbers>

namespace rt305 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double leastSamples = 4.0;

struct CycleSums {
    double squares = 0.0;
    Phasor fundamental = 0.0;  // sum of x e^(-j turn k)
};

CycleSums sumsOf(const double* samples, const std::vector<double>& weights, double turnAngle) {
    const Phasor turn = std::polar(1.0, -turnAngle);
    double cosine = 1.0;
    double sine = 0.0;
    double squares = 0.0;
    double real = 0.0;
    double imaginary = 0.0;
    for (std::size_t k = 0; k < weights.size(); ++k) {
        const double x = weights[k] * samples[k];
        squares += x * samples[k];
        real += x * cosine;
        imaginary += x * sine;
        const double next = cosine * turn.real() - sine * turn.imag();
        sine = cosine * turn.imag() + sine * turn.real();
        cosine = next;
    }
    return {squares, {real, imaginary}};
}

}  // namespace

void HalfCycleMeter::measurePhase(std::size_t phase, const Mark& mark, const SampleStore& store, HalfCycle& result) {
    const double begin = mark.place + mark.offsets[phase] * mark.period;
    const double end = begin + mark.period;
    result.middles[phase] = settings_.startSeconds + (begin + mark.period / 2.0) / settings_.rateHz;
    if (begin < 1.0 || end + 3.0 > static_cast<double>(store.end()) || mark.period < leastSamples) {
        return;
    }
    setIntegral(begin, end, integral_);
    const double angle = 2.0 * std::numbers::pi / mark.period;
    for (const std::size_t channel : {phase, phase + phaseTotal}) {
        if (!settings_.measures(channel)) {
            continue;
        }
        const CycleSums sums = sumsOf(store.from(channel, integral_.first), integral_.weights, angle);
        result.rms[channel] = std::isnan(sums.squares) ? nan : std::sqrt(std::fmax(0.0, sums.squares / mark.period));
        if (!isCurrent(channel)) {
            const double ahead = angle * (begin - static_cast<double>(integral_.first));
            result.voltages[phase] =
                sums.fundamental * std::polar(std::numbers::sqrt2 / mark.period, ahead) * Phasor(0.0, 1.0);
        }
    }
}

void HalfCycleMeter::setFrequency(const std::deque<Mark>& marks, HalfCycle& result) {
    const bool isMeasured = marks.size() > 2 && !marks[0].isHeld && !marks[1].isHeld && !marks[2].isHeld;
    result.frequencyHz = isMeasured ? settings_.rateHz / (marks[2].place - marks[0].place) : nan;
    result.rocof = nan;
    frequencies_.push_back(result.frequencyHz);
    if (frequencies_.size() > 2) {
        result.rocof = (frequencies_[2] - frequencies_[0]) / result.cycleSeconds;
        frequencies_.pop_front();
    }
}

HalfCycle HalfCycleMeter::measure(const std::deque<Mark>& marks, const SampleStore& store) {
    const Mark& mark = marks.front();
    HalfCycle result{.place = mark.place,
                     .period = mark.period,
                     .seconds = settings_.startSeconds + (mark.place + mark.period / 2.0) / settings_.rateHz,
                     .cycleSeconds = mark.period / settings_.rateHz};
    result.rms.fill(nan);
    setFrequency(marks, result);
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        measurePhase(phase, mark, store, result);
    }
    return result;
}

}  // namespace rt305
