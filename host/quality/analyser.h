#ifndef RT305_HOST_QUALITY_ANALYSER_H
#define RT305_HOST_QUALITY_ANALYSER_H

#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "quality/events.h"
#include "quality/intervals.h"
#include "signal/flicker.h"

namespace rt305 {

/// Receives results in the order in which they are complete.
struct QualityListener {
    std::function<void(const HalfCycle&)> halfCycle = [](const HalfCycle&) {};
    std::function<void(const Event&)> event = [](const Event&) {};
    std::function<void(const Interval&)> interval = [](const Interval&) {};
};

/// Analyses a stream of samples. Keeps half a second of samples, one value of Pinst each 10 ms, and nothing else that
/// grows with the stream.
class QualityAnalyser {
public:
    QualityAnalyser(const QualitySettings& settings, QualityListener listener);
    QualityAnalyser(const QualityAnalyser&) = delete;
    QualityAnalyser& operator=(const QualityAnalyser&) = delete;

    const std::vector<IntervalQuantity>& quantities() const { return quantities_; }

    void push(const SampleBlock& block);

    /// After the last block: the cycles up to the end, and what is still open.
    void finish();

private:
    /// An interval of cycles that has begun.
    struct Begun {
        double place;
        std::size_t halfCycles;
        bool isFlagged;
    };
    struct FrequencyCount {
        long tick = -1;
        double first = 0.0;
        double last = 0.0;
        std::size_t halfCycles = 0;
        bool isFlagged = false;
    };

    void advance(bool isLast);
    void take(const Mark& mark);
    void detect(const HalfCycle& cycle);
    bool isDisturbed() const;
    void countFrequency(const Mark& mark);
    void emitFrequency();
    void advanceIntervals(const Mark& mark);
    void measureInterval(const Begun& begun, double end);
    void join(const Interval& interval);
    void emitTenMinutes(bool isLast);
    void addFlicker(Interval& interval, bool isLast);
    void emit(const std::optional<Event>& event);
    void emit(const std::vector<Event>& events);
    double secondsAt(double place) const { return place / settings_.rateHz; }
    long tickAt(double place, double length) const;
    std::span<const float> sensation(std::size_t phase, double from, double to) const;

    QualitySettings settings_;
    QualityListener listener_;
    std::vector<IntervalQuantity> quantities_{};
    SampleStore store_{};
    CycleTracker tracker_;
    HalfCycleMeter halfCycles_;
    std::vector<LevelDetector> levels_{};
    ChangeDetector changes_;
    TransientDetector transients_;
    std::optional<IntervalMeter> intervals_{};
    std::vector<FlickerMeter> flicker_{};
    PerPhase<double> references_{};
    std::deque<Mark> waiting_{};  // marks whose cycles need more samples
    std::optional<Mark> previous_{};
    std::deque<Begun> begun_{};
    FrequencyCount frequency_{};
    Aggregate threeSeconds_, tenMinutes_;
    long tick_ = -1;                             // of the 10 minutes in the making
    PerPhase<std::vector<double>> shortTerm_{};  // since the last full two hours
};

}  // namespace rt305

#endif
