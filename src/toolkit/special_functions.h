#ifndef RT305_4_TOOLKIT_SPECIAL_FUNCTIONS_H
#define RT305_4_TOOLKIT_SPECIAL_FUNCTIONS_H

#include "toolkit/reductions.h"

namespace coder {

/// Modified Bessel function of the first kind of order 0, I0(z). Even; NaN gives NaN; +Inf from |z| = 713.98 on, where
/// I0 leaves the range of doubles. Within 4 units in the last place.
/// Up to |z| = 43 its power series, rearranged about nearer points, beyond it the asymptotic expansion: M. Abramowitz,
/// I. A. Stegun, Handbook of Mathematical Functions, eq. 9.6.12 and 9.7.1.
double besseli(double z);

/// The same for many arguments, 0 <= z <= 700, given by their squares: square[n], squareLow[n] -> y[n], where z^2 is
/// the unevaluated sum square + squareLow, squareLow at most an ulp or so of square. The relative error of I0 is z
/// times that of z, so an argument rounded to a double would spoil the result. y must not overlap the arguments.
void besseliOfSquare(samples square, samples squareLow, double* y);

/// Natural logarithm of the gamma function, ln Gamma(x), for x > 0. NaN gives NaN, as does x < 0; 0 and +Inf give +Inf.
/// Within 1 unit in the last place, also near the zeros at 1 and 2.
/// W. J. Cody, K. E. Hillstrom, "Chebyshev approximations for the natural logarithm of the gamma function", Math. Comp.
/// 21 (1967), 198-203; whole x up to 100 use tabulated factorials.
double gammaln(double x);

}  // namespace coder

#endif
