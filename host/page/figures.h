#ifndef RT305_HOST_PAGE_FIGURES_H
#define RT305_HOST_PAGE_FIGURES_H

#include <optional>
#include <string>

#include "measuring/full_measurement.h"
#include "measuring/measure_all.h"
#include "output/quality_limits.h"
#include "quality/results.h"
#include "recording/recording.h"

namespace rt305 {

/// The plots and drawings of a page as HTML, each with a caption that says what is drawn. Empty where there is nothing
/// to draw.
struct Figures {
    std::string waveforms{};
    std::string traces{};  // RMS and frequency over time
    std::string events{};  // duration and voltage of each
    std::string spectra{};
    std::string phasors{};    // with a table of magnitudes and angles
    std::string harmonics{};  // with a table of all of them
    std::string data{};       // of the plots, for the script of the page
};

/// `quality` is empty where the voltages cannot be followed. `limits` are drawn where they concern what is drawn.
Figures figuresOf(const Recording& recording, const FullMeasurement& full, const FullResults& results,
                  const std::optional<QualityResults>& quality, const LimitSet& limits);

}  // namespace rt305

#endif
