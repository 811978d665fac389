#ifndef RT305_4_TOOLKIT_WINDOWS_H
#define RT305_4_TOOLKIT_WINDOWS_H

#include "toolkit/array.h"

namespace coder {

// Windows of n points, dimensionless, 1 at their centre: n -> w[n]. A non-integer n is rounded to nearest, halves away
// from zero; n = 1 gives {1}; n below 0.5 or NaN gives an empty window. The second half is the mirror image of the
// first. Every value is within 4 units in the last place of the formula, for n below 2^29.
// F. J. Harris, "On the use of windows for harmonic analysis with the discrete Fourier transform", Proc. IEEE 66
// (1978).

/// Hann without its zero end points, symmetric: (1 - cos(2 pi k / (n + 1))) / 2, k = 1 ... n.
void hanning(double n, column& w);

/// Hann, periodic: (1 - cos(2 pi k / n)) / 2, k = 0 ... n - 1.
void b_hanning(double n, column& w);

/// Hamming, symmetric: 0.54 - 0.46 cos(2 pi k / (n - 1)), k = 0 ... n - 1.
void hamming(double n, column& w);

/// Kaiser, symmetric: I0(beta sqrt(1 - r^2)) / I0(beta), r = 2 k / (n - 1) - 1, k = 0 ... n - 1, with beta = 0.5.
void kaiser(double n, column& w);

/// Kaiser, symmetric, with beta = 38: side lobes some 300 dB down, the main lobe 12.1 bins wide to each side.
void b_kaiser(double n, column& w);

}  // namespace coder

#endif
