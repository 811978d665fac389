#ifndef RT305_HOST_MEASURING_FUNDAMENTALS_H
#define RT305_HOST_MEASURING_FUNDAMENTALS_H

#include <array>
#include <vector>

#include "measuring/measurement.h"
#include "measuring/result_texts.h"
#include "signal/phasors.h"

namespace rt305 {

template <class T>
using PerPhase = std::array<T, phaseTotal>;

/// The fundamentals of voltages and currents; 0 for a kind that is not measured.
struct Fundamentals {
    PerPhase<double> frequencies{};  // Hz, of the voltages or of currents alone; of one phase three times
    Phasors voltages{};
    Phasors currents{};

    /// The middle one of the three frequencies: a channel without signal can have any.
    double medianFrequency() const;
};

/// Frequencies come from the library's harmonics of the measured channels, voltages first, and where it gives none,
/// from the zero crossings of the samples.
Fundamentals fundamentalsOf(const Measurement& measurement, const std::vector<KindResults<Harmonics>>& harmonics);

}  // namespace rt305

#endif
