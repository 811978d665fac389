#ifndef RT305_HOST_PAGE_FIGURES_H
#define RT305_HOST_PAGE_FIGURES_H

#include <optional>
#include <string>

#include "measuring/full_measurement.h"
#include "measuring/measure_all.h"
#include "quality/results.h"

namespace rt305 {

/// The plots and drawings of a page as HTML, each with a caption that says what is drawn. Empty where there is nothing
/// to draw.
struct Figures {
    std::string waveforms{};
    std::string traces{};  // RMS and frequency over time
    std::string events{};  // duration and voltage of each
    std::string spectra{};
    std::string phasors{};
    std::string harmonics{};
    std::string data{};  // of the plots, for the script of the page
};

/// `quality` is empty where the voltages cannot be followed.
Figures figuresOf(const FullMeasurement& full, const FullResults& results,
                  const std::optional<QualityResults>& quality);

}  // namespace rt305

#endif
