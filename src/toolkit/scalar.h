#ifndef RT305_4_TOOLKIT_SCALAR_H
#define RT305_4_TOOLKIT_SCALAR_H

#include <cmath>
#include <cstdint>

#include "toolkit/array.h"

namespace coder {

inline constexpr long double piL = 3.14159265358979323846L;
inline constexpr auto pi = static_cast<double>(piL);
inline constexpr double twoPi = 6.283185307179586;

/// sqrt(u0^2 + u1^2) without overflow of the squares; NaN if either is NaN.
/// The smaller leg is divided by the larger one; equal legs give leg * sqrt(2). No branches, so that loops vectorise.
inline double rt_hypotd_snf(double u0, double u1) {
    const double a = std::fabs(u0);
    const double b = std::fabs(u1);
    const double large = a > b ? a : b;
    const double small = a > b ? b : a;
    const bool equal = small == large;
    const double ratio = (equal ? 1.0 : small) / (equal ? 1.0 : large);
    return large * std::sqrt(ratio * ratio + 1.0);
}

/// Four-quadrant arctangent of y/x in radians, in [-pi, pi]. NaN if either is NaN; for x = 0 the sign of y alone
/// decides and y = 0 gives 0; two infinities give an odd multiple of pi/4.
double rt_atan2d_snf(double y, double x);

/// 10 raised to e, exact for e in {-1, 0, 0.5, 1, 2}; NaN for NaN.
double rt_powd_snf(double e);

/// x rounded to 24 bits: products of two heads, or of a head and an integer below 2^29, are exact.
inline double head(double x) {
    return static_cast<double>(static_cast<float>(x));
}

/// Truncates toward zero to a 32-bit count; values beyond its range saturate, NaN gives 0.
int truncatedToInt(double x);

/// The order of complex maxima: larger magnitude, then larger phase angle. Magnitudes are compared after halving both
/// numbers when a part is so large that its magnitude could overflow.
bool isLarger(creal_T a, creal_T b);

}  // namespace coder

#endif
