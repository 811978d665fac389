#ifndef RT305_HOST_QUALITY_HALF_CYCLE_H
#define RT305_HOST_QUALITY_HALF_CYCLE_H

#include "quality/settings.h"
#include "signal/cycle_tracker.h"

namespace rt305 {

/// The values of one cycle that begins at a zero crossing; the next one begins half a cycle later.
struct HalfCycle {
    double place = 0.0;           // of the crossing, in samples
    double period = 0.0;          // in samples
    double seconds = 0.0;         // of the middle of the cycle
    double cycleSeconds = 0.0;    // one cycle
    double frequencyHz = 0.0;     // by the crossings at its two ends; NaN where they are not measured
    double rocof = 0.0;           // Hz/s, from the cycle before to this one; NaN likewise
    PerPhase<double> middles{};   // s, of each phase, whose cycle begins at its own crossing
    PerChannel<double> rms{};     // U_rms(1/2) and that of the currents; NaN without samples
    PerPhase<Phasor> voltages{};  // the fundamentals, with the angle at the start of the phase's cycle
};

/// Measures cycle after cycle.
class HalfCycleMeter {
public:
    explicit HalfCycleMeter(const QualitySettings& settings) : settings_(settings) {}

    /// The samples that the cycle of a mark needs are those before this number.
    static std::size_t samplesNeeded(const Mark& mark) {
        return static_cast<std::size_t>(mark.place + 1.25 * mark.period) + 4;
    }

    /// Measures the cycle of the first mark; its frequency needs the two marks behind it. Call it once for each mark,
    /// in order. Beyond the end of the samples values are NaN.
    HalfCycle measure(const std::deque<Mark>& marks, const SampleStore& store);

private:
    void measurePhase(std::size_t phase, const Mark& mark, const SampleStore& store, HalfCycle& result);
    void setFrequency(const std::deque<Mark>& marks, HalfCycle& result);

    const QualitySettings& settings_;
    IntegralWeights integral_{};
    std::deque<double> frequencies_{};  // at the marks before
};

}  // namespace rt305

#endif
