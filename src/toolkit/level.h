#ifndef RT305_4_TOOLKIT_LEVEL_H
#define RT305_4_TOOLKIT_LEVEL_H

#include <span>

namespace coder {

/// Levels 20 log10(x[k] / reference) in dB of magnitudes x[n] >= 0, in place. The logarithm of the rounded ratio is
/// within 0.6 units in the last place and rounded before the multiplication. A ratio of 0 gives -Inf, +Inf gives +Inf;
/// NaN and 0 / 0 give NaN.
/// log(1 + f) = f - f^2/2 + s (f^2/2 + R), s = f / (2 + f), where R is the tail of the series of 2 artanh(s) / s and
/// the sum is kept in two parts: K. C. Ng, S. Moshier, fdlibm (Sun Microsystems, 1993), e_log.c and e_log10.c.
void toLevels(std::span<double> x, double reference);

}  // namespace coder

#endif
