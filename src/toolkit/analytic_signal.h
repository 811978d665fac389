#ifndef RT305_4_TOOLKIT_ANALYTIC_SIGNAL_H
#define RT305_4_TOOLKIT_ANALYTIC_SIGNAL_H

#include "toolkit/fft.h"

namespace coder {

/// Analytic signal y[1 x n] of a row x[n]: the real part is the row itself, the imaginary part its Hilbert transform,
/// by a transform of length n. The mean and, for even n, the line at half the rate have no imaginary part. Empty for an
/// empty row; a NaN in x makes all imaginary parts NaN.
/// S. L. Marple, "Computing the discrete-time analytic signal via FFT", IEEE Trans. Signal Process. 47 (1999),
/// 2600-2603.
void hilbert(samples x, complex_row& y);

/// The same with a transform of length n made by the caller, for several rows of one length.
void hilbert(samples x, const RealFft& fft, complex_row& y);

/// sum over k of A[k] conj(B[k]) for the analytic signals A, B of rows a[n], b[n]; a row of one sample stands for n
/// equal ones, unequal rows are cut to the shorter; 0 when empty. The sum is taken over the spectra (Parseval), where
/// the lines strictly between DC and half the rate count fourfold, so no analytic signal is formed.
creal_T analyticProductSum(samples a, samples b);

/// The same for several pairs: those of the shared transform's length need none of their own.
creal_T analyticProductSum(samples a, samples b, const RealFft& shared);

}  // namespace coder

#endif
