#ifndef RT305_4_EXTRAS_ELEMENTWISE_H
#define RT305_4_EXTRAS_ELEMENTWISE_H

#include <vector>

#include "toolkit/array.h"

namespace coder {

/// First differences y[k] = x[k+1] - x[k], n - 1 of them; none for n <= 1.
void diff(const column& x, column& y);

/// Element-wise product of two columns with singleton expansion.
void bsxfun(const column& a, const column& b, column& c);

/// True when |b - a| is less than the spacing of doubles at |b/2|, or both are the same infinity. No two different
/// doubles are that close, so this is a == b.
bool iseq(double a, double b);

/// Sum of a complex row in blocks of 1024, as blockedSum; 0 + 0i when empty.
creal_T sum(const complex_row& x);

/// The row a, a + 1, a + 2, ... up to b, the range with unit step.
void eml_float_colon(double a, double b, std::vector<double>& y);

/// Largest minus smallest element of a non-empty vector, NaN skipped; NaN when all are NaN.
double peak2peak(samples x);

}  // namespace coder

#endif
