#ifndef RT305_HOST_MEASURING_THD_GATE_H
#define RT305_HOST_MEASURING_THD_GATE_H

#include <array>
#include <vector>

#include "measuring/measurement.h"
#include "measuring/result_texts.h"

namespace rt305 {

/// When the library gives THD, frequency and power: the fundamentals of three voltages or three currents must lie
/// inside the frequency window, first their mean and then each of them. The tool fits the fundamentals itself, so it
/// can explain most missing values, but not those where the library finds another one.

/// Three channels whose THD the library gives or refuses together.
struct ThdSet {
    std::size_t firstChannel;
    std::array<const char*, phaseTotal> parameters;  // the names of their THD
    std::array<std::size_t, phaseTotal> judges;      // the phase whose fundamental decides on each phase
};
inline constexpr ThdSet thdSets[] = {{0, {"THD_Va", "THD_Vb", "THD_Vc"}, {0, 2, 1}},
                                     {phaseTotal, {"THD_Ia", "THD_Ib", "THD_Ic"}, {0, 1, 2}}};

/// One reason why THD is missing.
struct ThdObstacle {
    enum class Kind { missingSamples, dead, noFundamental, meanOutsideWindow, outsideWindow };

    Kind kind;
    std::size_t channel;          // not of meanOutsideWindow
    double frequencyHz = 0.0;     // of the two last kinds
    bool decidesOnOther = false;  // outsideWindow: the THD of another phase is missing for it
};

struct MissingThd {
    std::vector<std::size_t> phases;     // empty: none is missing
    std::vector<ThdObstacle> obstacles;  // empty: the tool finds none
    bool controlWindowAccepts = false;   // the narrow window is the obstacle
    double betterNominalHz = 0.0;        // of which the fundamentals are those; 0: none, or the one in use
};
MissingThd missingThd(const ThdSet& set, const Parameters& parameters, const Measurement& measurement);

/// The length from which a pure sine reads no THD, and the length of a measurement, of its nominal frequency if it has
/// no fundamental near that.
inline constexpr double cyclesForThd = 12.5;
double cyclesOf(const Measurement& measurement);

/// The largest THD in % that the library gives for a pure sine of so many cycles, to the next half cycle below.
double thdOfPureSine(double cycles);
inline bool isTooShortForThd(double cycles) {
    return !(cycles >= cyclesForThd - 0.05);
}

}  // namespace rt305

#endif
