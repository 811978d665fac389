#ifndef RT305_4_EXTRAS_GAMMALN_H
#define RT305_4_EXTRAS_GAMMALN_H

namespace coder {

/// Natural logarithm of the gamma function, ln Gamma(x), for x > 0. NaN gives NaN, as does x < 0; 0 and +Inf give +Inf.
/// Within 1 unit in the last place, also near the zeros at 1 and 2.
/// W. J. Cody, K. E. Hillstrom, "Chebyshev approximations for the natural logarithm of the gamma function", Math. Comp.
/// 21 (1967), 198-203; integers up to 100 use tabulated factorials.
double gammaln(double x);

}  // namespace coder

#endif
