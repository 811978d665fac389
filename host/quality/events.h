#ifndef RT305_HOST_QUALITY_EVENTS_H
#define RT305_HOST_QUALITY_EVENTS_H

#include <deque>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

#include "quality/half_cycle.h"

namespace rt305 {

enum class EventKind { dip, swell, interruption, rapidChange, transient };

/// "dip", "swell", "interruption", "rapid_change", "transient".
std::string_view nameOf(EventKind kind);

struct Event {
    EventKind kind;
    double startSeconds;
    double durationSeconds;
    double volts;    // residual or largest RMS; of a rapid change its largest step; of a transient its deviation
    double percent;  // of the declared voltage, or of its crest for a transient
    PerPhase<bool> phases{};
    double jumpDegrees = std::numeric_limits<double>::quiet_NaN();    // of the fundamental, in the first cycle
    double steadyPercent = std::numeric_limits<double>::quiet_NaN();  // of a rapid change: step from before to after
    bool isCut = false;                                               // lasts beyond the first or the last cycle

    bool isVoltageEvent() const { return kind <= EventKind::interruption; }  // intervals that it touches are flagged
};

/// A dip, swell or interruption by the rules of IEC 61000-4-30 for several phases.
class LevelDetector {
public:
    LevelDetector(EventKind kind, const QualitySettings& settings);

    /// The event that ends with this cycle, if one does. `references` are in V.
    std::optional<Event> push(const HalfCycle& cycle, const PerPhase<double>& references);
    std::optional<Event> finish();
    bool isOpen() const { return event_.has_value(); }

private:
    bool isBeyond(double rms, double reference, double percent) const;
    std::size_t count(const PerPhase<double>& references, double percent) const;
    void open(const HalfCycle& cycle, const PerPhase<double>& references);
    void extend(const HalfCycle& cycle, const PerPhase<double>& references);
    void measureJump(const HalfCycle& cycle);
    std::optional<Event> close(bool isCut);

    EventKind kind_;
    double beginPercent_, endPercent_, sign_;  // sign 1: above is beyond
    PerPhase<double> known_{};                 // the last RMS values, V; NaN before the first
    std::optional<Event> event_{};
    std::size_t cycles_ = 0;  // of the open event
    double end_ = 0.0;        // s
    double worst_ = 0.0;      // of the cycles that can show the jump, V
    std::deque<HalfCycle> before_{};
};

/// Rapid voltage changes: a phase leaves the mean of its last second by more than the threshold, until all phases have
/// stayed within half of it for a second. Not those in which a dip, swell or interruption happens.
class ChangeDetector {
public:
    explicit ChangeDetector(const QualitySettings& settings);
    std::optional<Event> push(const HalfCycle& cycle, bool isDisturbed);

private:
    void remember(const HalfCycle& cycle);
    std::optional<Event> close();

    const QualitySettings& settings_;
    std::size_t cyclesOfSecond_;
    PerPhase<std::deque<double>> last_{};  // RMS values of the last second
    std::deque<double> times_{};
    std::optional<Event> event_{};
    bool isSteady_ = false;
    bool isSpoiled_ = false;
    PerPhase<double> before_{};  // means
};

/// Transients: samples that differ by more than the threshold from those one and two cycles before and from the
/// straight line through these two, as a swing does not, for less than half a cycle. Longer differences are changes of
/// the voltage.
class TransientDetector {
public:
    explicit TransientDetector(const QualitySettings& settings) : settings_(settings) {}

    /// Looks at the samples from one mark to the next, and adds the transients that end there.
    void scan(const Mark& from, const Mark& to, const SampleStore& store, std::vector<Event>& found);
    void finish(std::vector<Event>& found);

private:
    struct Deviation {
        double first = -1.0;  // sample; negative: none
        double last = 0.0;
        double largest = 0.0;
        double period = 0.0;
        void addIf(double threshold, double place, double deviation, double cycle);
    };
    void close(std::size_t phase, std::vector<Event>& found);

    const QualitySettings& settings_;
    PerPhase<Deviation> open_{};
};

}  // namespace rt305

#endif
