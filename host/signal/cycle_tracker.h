#ifndef RT305_HOST_SIGNAL_CYCLE_TRACKER_H
#define RT305_HOST_SIGNAL_CYCLE_TRACKER_H

#include <deque>
#include <optional>
#include <vector>

#include "signal/phasors.h"
#include "signal/sample_store.h"

namespace rt305 {

/// A zero crossing of the fundamental.
struct Mark {
    double place;                // in samples
    double period;               // of the fundamental there, in samples
    bool isHeld;                 // continued with the last good period, through a change or a loss of the signal
    PerPhase<double> offsets{};  // of each phase's own zero crossing, in periods, from -1/4 to 1/4
};

/// Follows the fundamental from zero crossing to zero crossing, half a cycle apart: that of the positive sequence of
/// the voltages, or of the currents where there are no voltages, of one channel its own.
///
/// At the place where the next crossing is expected, the phasor in a Hann window of two cycles shows how far off it is;
/// it rejects harmonics and, being symmetric, a bias by a changing frequency. Where the second difference of
/// three phasors exceeds 3 % of their level, or their level falls below a tenth of what it was, the crossings continue
/// with the last good period until the windows have passed the change. The first period, and the period after ten
/// cycles that did not settle, are those of fitFundamental.
class CycleTracker {
public:
    /// `channels` is 1 or 3, from `firstChannel` on.
    CycleTracker(double rateHz, double nominalHz, std::size_t firstChannel, std::size_t channels);

    /// The marks that the samples so far determine, in order; with `isLast` those up to the end.
    std::vector<Mark> advance(const SampleStore& store, bool isLast);

    /// The first sample that later calls need.
    std::size_t firstNeeded() const;

private:
    bool begin(const SampleStore& store, bool isLast);
    std::optional<double> fittedPeriod(const SampleStore& store, std::size_t first, std::size_t end) const;
    Phasors phasorsAround(const SampleStore& store, double place) const;
    Phasor combined(const Phasors& phasors) const;
    void chooseSequence(const Phasors& phasors);
    void setOffsets(const Phasors& phasors, const Phasor& reference);
    bool isSteady(const Phasor& reference);
    void step(const SampleStore& store);
    void hold(const SampleStore& store);
    void follow(const Phasors& phasors, Phasor reference);
    void add(double place, bool isHeld);

    double rateHz_;
    double nominalHz_;
    std::size_t firstChannel_;
    std::size_t channels_;
    double nominalPeriod_;
    double period_;
    double next_ = 0.0;  // where the next crossing is expected
    bool hasBegun_ = false;
    Phasor rotation_ = 1.0;        // of the second channel into the first, in the sequence that is followed
    double sign_ = 1.0;            // of the reference at a crossing that is expected: rising or falling
    double level_ = 0.0;           // of the reference
    std::deque<Phasor> latest_{};  // references at the last crossings, in terms of the expected ones
    std::size_t unsteady_ = 0;     // windows that still touch a change
    std::size_t held_ = 0;         // marks in a row
    PerPhase<double> offsets_{};
    std::deque<Mark> marks_{};  // the last ones; those that can still become held are not yet given out
    std::size_t given_ = 0;     // of marks_
};

}  // namespace rt305

#endif
