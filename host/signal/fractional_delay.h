#ifndef RT305_HOST_SIGNAL_FRACTIONAL_DELAY_H
#define RT305_HOST_SIGNAL_FRACTIONAL_DELAY_H

#include <cstddef>
#include <vector>

namespace rt305 {

/// The weights of x[n - reach + 1] ... x[n + reach] in x(n + fraction), 0 <= fraction < 1: a sinc under a Kaiser
/// window, scaled to keep constants. With a reach of 16 the error is below 1e-4 of the amplitude up to 0.7 of half the
/// rate.
std::vector<double> sincWeights(double fraction, std::ptrdiff_t reach);

/// The signal `delay` samples later: y[k] = x(k - delay), as long as x. Negative delays move it forward.
/// A sinc of 64 samples under a Kaiser window, scaled to keep constants: up to 0.8 of half the rate the error is below
/// 1e-5 of the amplitude, which is 0.001 degrees. Beyond its ends the signal is continued by linear prediction; delays
/// beyond the length give the prediction. NaN are interpolated linearly for the filter; the new samples next to their
/// place are NaN.
/// T. I. Laakso et al., "Splitting the unit delay", IEEE Signal Processing Magazine 13 (1996), p. 30.
std::vector<double> delayed(const std::vector<double>& x, double delay);

}  // namespace rt305

#endif
