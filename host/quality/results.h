#ifndef RT305_HOST_QUALITY_RESULTS_H
#define RT305_HOST_QUALITY_RESULTS_H

#include <string>
#include <vector>

#include "quality/analyser.h"

namespace rt305 {

/// A value at evenly spaced times, half a nominal cycle apart, from `startSeconds` on; NaN where there is none.
struct QualityTraces {
    double startSeconds = 0.0;
    double stepSeconds = 0.0;
    PerChannel<std::vector<double>> rms{};  // U_rms(1/2) and that of the currents
    std::vector<double> frequency{};        // Hz
    std::vector<double> rocof{};            // Hz/s
};

/// What an analysis keeps.
struct QualityResults {
    QualitySettings settings{};
    double durationSeconds = 0.0;
    std::vector<IntervalQuantity> quantities{};
    std::vector<std::vector<float>> values{};  // by quantity, of the intervals of cycles; none of (inter)harmonics
    std::vector<Event> events{};               // by their start
    std::vector<Interval> tenMinutes{}, tenSeconds{};
    std::size_t intervals = 0;
    std::size_t flagged = 0;
    QualityTraces traces{};
};

/// Whether to keep the traces, for plots.
enum class KeepTraces { no, yes };

/// Analyses the samples of all channels. `listener` receives the results too.
QualityResults analyse(const PerChannel<std::vector<double>>& samples, const QualitySettings& settings,
                       KeepTraces keepTraces, const QualityListener& listener = {});

}  // namespace rt305

#endif
