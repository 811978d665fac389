#ifndef RT305_4_TOOLKIT_BESSEL_H
#define RT305_4_TOOLKIT_BESSEL_H

#include "toolkit/array.h"

namespace coder {

/// Modified Bessel function of the first kind of order 0, I0(z). Even; NaN gives NaN; +Inf from |z| = 713.98 on, where
/// I0 leaves the range of doubles. Within 4 units in the last place.
/// Up to |z| = 43 the power series, rearranged about nearby points; beyond it the asymptotic expansion. M. Abramowitz,
/// I. A. Stegun, Handbook of Mathematical Functions, eq. 9.6.12 and 9.7.1.
double besseli(double z);

/// I0 of many arguments, 0 <= z <= 700, given by their squares: square[n], squareLow[n] -> y[n], where z^2 is the
/// unevaluated sum square + squareLow and squareLow is at most about one ulp of square. The relative error of I0 is z
/// times that of z, so rounding z to a double would cost up to 10 bits. y must not overlap the arguments.
void besseliOfSquare(samples square, samples squareLow, double* y);

}  // namespace coder

#endif
