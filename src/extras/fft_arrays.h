#ifndef RT305_4_EXTRAS_FFT_ARRAYS_H
#define RT305_4_EXTRAS_FFT_ARRAYS_H

#include "toolkit/fft.h"

namespace coder {

/// Transform y[n] of a column x[n]; empty for an empty column. All n bins are written, the upper ones by symmetry.
void fft(const column& x, complex_column& y);

/// Transform y[1 x nfft] of a row cut or zero-padded to nfft samples; nfft is truncated to an integer. An empty row
/// gives zeros; nfft below 1 or NaN gives an empty row; nfft beyond 2^31 - 1 throws std::bad_array_new_length.
void fft(const row& x, double nfft, complex_row& y);

/// half[n/2+1] -> x[n], scaled by 1/n: the inverse of plan.forward(). The imaginary parts at DC and, for even n, at n/2
/// are ignored. x must not overlap half.
void inverse(const RealFft& plan, const creal_T* half, double* x);

}  // namespace coder

#endif
