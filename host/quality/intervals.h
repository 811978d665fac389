#ifndef RT305_HOST_QUALITY_INTERVALS_H
#define RT305_HOST_QUALITY_INTERVALS_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quality/settings.h"
#include "signal/phasors.h"
#include "signal/point_sampler.h"
#include "signal/sample_store.h"

namespace rt305 {

/// The lengths of intervals: 10 cycles of 50 Hz or 12 of 60 Hz, 15 of these, 10 minutes, and 10 s for the frequency.
enum class IntervalLength { cycles, threeSeconds, tenMinutes, tenSeconds };

/// "cycles", "3s", "10min", "10s".
std::string_view nameOf(IntervalLength length);

/// The figures of an interval, in the order of quantitiesOf().
struct Interval {
    IntervalLength length;
    double startSeconds;
    double durationSeconds;
    bool isFlagged = false;  // a dip, swell or interruption touches it
    bool isPartial = false;  // shorter than its name says: at the start, at the end, before a tick of the clock
    std::vector<double> values{};
};

/// What is computed of the samples of an interval. Harmonics are subgroups, RMS.
struct IntervalFigures {
    double frequencyHz = 0.0;        // NaN while all voltages are below the threshold of an interruption
    PerPhase<bool> isInterrupted{};  // the voltage is; it has no power factor then
    PerChannel<double> rms{};
    PerChannel<double> thds{};                         // %
    PerChannel<std::vector<double>> harmonics{};       // order 1 first
    PerChannel<std::vector<double>> interharmonics{};  // between 0 and the fundamental first
    PerPhase<double> P{}, Q1{}, S{};
    double effectiveS = 0.0;
    SequenceComponents voltages{}, currents{};
    std::array<bool, 2> isAlive{};             // a voltage, a current has a fundamental to relate other figures to
    PerPhase<double> sensation{};              // the largest Pinst
    PerPhase<double> shortTerm{}, longTerm{};  // flicker severities, of intervals of 10 minutes
};

/// How the values of shorter intervals become one of a longer interval.
enum class Averaging { rms, mean, largest, last };

struct IntervalQuantity {
    std::string key;  // "Ua", "Pa", "THDS_Ua", "Ua_h5", "Ua_ih7": also the heading in every output
    std::string unit;
    Averaging averaging;
    bool isBin = false;  // one of the many (inter)harmonics
    std::function<double(const IntervalFigures&)> value;
};

/// The quantities that the measured channels have.
std::vector<IntervalQuantity> quantitiesOf(const QualitySettings& settings);

/// The orders up to 50 that the sample rate carries.
std::size_t ordersOf(const QualitySettings& settings);

/// The place of a quantity; nothing when it is not there.
std::optional<std::size_t> findQuantity(const std::vector<IntervalQuantity>& quantities, std::string_view key);

/// Measures intervals of whole cycles.
///
/// The samples are resampled, by a sinc of 32 samples, to a number of points of small prime factors that fills the
/// interval exactly, so the transform's lines are multiples of the fundamental divided by the number of cycles N.
/// Subgroups of IEC 61000-4-7: harmonic n has the lines N n - 1, N n and N n + 1, interharmonic n the lines N n + 2 to
/// N n + N - 2. THDS has the orders 2 to 40.
class IntervalMeter {
public:
    explicit IntervalMeter(const QualitySettings& settings);
    ~IntervalMeter();

    /// The figures from one place to another, which are whole cycles apart. See PointSampler::margin. A channel with a
    /// missing sample gets NaN.
    IntervalFigures measure(const SampleStore& store, double begin, double end);

private:
    struct Transform;

    void analyse(std::size_t channel, IntervalFigures& figures);
    void measurePower(IntervalFigures& figures) const;
    double effectivePower(const IntervalFigures& figures) const;

    const QualitySettings& settings_;
    std::size_t cycles_;
    std::size_t orders_;
    std::size_t points_;  // of an interval
    std::unique_ptr<Transform> transform_;
    PointSampler sampler_{};
    PerChannel<std::vector<double>> resampled_{};
    PerChannel<Phasor> fundamentals_{};
    std::array<double, 2> largest_{};  // fundamental of voltages and currents so far
    PerChannel<bool> hasSignal_{};
};

/// Joins intervals to a longer one.
class Aggregate {
public:
    Aggregate(const std::vector<IntervalQuantity>& quantities, IntervalLength length)
        : quantities_(quantities), length_(length) {}

    void add(const Interval& part);
    std::size_t parts() const { return parts_; }
    Interval take(bool isPartial);

private:
    const std::vector<IntervalQuantity>& quantities_;
    IntervalLength length_;
    std::size_t parts_ = 0;
    std::optional<Interval> sum_{};
    std::vector<std::size_t> counts_{};
};

}  // namespace rt305

#endif
