#ifndef RT305_4_TESTS_TOOLKIT_QUAD_H
#define RT305_4_TESTS_TOOLKIT_QUAD_H

#include <quadmath.h>

#include <cmath>
#include <limits>

namespace quad {

__extension__ typedef __float128 number;

/// I0(z) from its power series, in 113 bits.
inline number besseli(number z) {
    const number q = z * z / 4;
    number term = 1;
    number sum = 1;
    for (int k = 1; term > sum * 1e-35; ++k) {
        term *= q / k / k;
        sum += term;
    }
    return sum;
}

/// Distance of a result from the exact value in units of the last place of the exact value.
inline double ulps(double result, number exact) {
    const double rounded = std::fabs(static_cast<double>(exact));
    if (rounded == 0.0 || !std::isfinite(rounded)) {
        return result == static_cast<double>(exact) ? 0.0 : std::numeric_limits<double>::infinity();
    }
    int exponent = 0;
    std::frexp(rounded, &exponent);
    return static_cast<double>(fabsq(result - exact) / scalbnq(1, exponent - 53));
}

}  // namespace quad

#endif
