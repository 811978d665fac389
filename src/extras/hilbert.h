#ifndef RT305_4_EXTRAS_HILBERT_H
#define RT305_4_EXTRAS_HILBERT_H

#include "toolkit/array.h"

namespace coder {

/// Analytic signal y[1 x n] of a row x[n]: the real part is the row itself, the imaginary part its Hilbert transform,
/// by a transform of length n. The mean and, for even n, the bin at half the rate have no imaginary part. Empty for an
/// empty row; a NaN in x makes all imaginary parts NaN.
/// S. L. Marple, "Computing the discrete-time analytic signal via FFT", IEEE Trans. Signal Process. 47 (1999),
/// 2600-2603.
void hilbert(samples x, complex_row& y);

}  // namespace coder

#endif
