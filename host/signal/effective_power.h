#ifndef RT305_HOST_SIGNAL_EFFECTIVE_POWER_H
#define RT305_HOST_SIGNAL_EFFECTIVE_POWER_H

#include <cmath>

namespace rt305 {

/// Sums of squared RMS values.
struct SquareSums {
    double phases;    // Ua^2 + Ub^2 + Uc^2, V^2
    double lines;     // Uab^2 + Ubc^2 + Uca^2
    double currents;  // Ia^2 + Ib^2 + Ic^2, A^2
    double neutral;   // In^2
};

/// Se = 3 Ue Ie in VA. Four wires: Ue^2 = (3 (Ua^2 + Ub^2 + Uc^2) + Uab^2 + Ubc^2 + Uca^2) / 18 and
/// Ie^2 = (Ia^2 + Ib^2 + Ic^2 + In^2) / 3; three wires: Ue^2 = (Uab^2 + Ubc^2 + Uca^2) / 9 and no In.
/// IEEE Std 1459-2010, 3.2.2.8 and 3.2.3.5.
inline double effectiveApparentPower(const SquareSums& squares, bool hasNeutral) {
    return hasNeutral ? 3.0 * std::sqrt((3.0 * squares.phases + squares.lines) / 18.0 *
                                        (squares.currents + squares.neutral) / 3.0)
                      : 3.0 * std::sqrt(squares.lines / 9.0 * squares.currents / 3.0);
}

}  // namespace rt305

#endif
