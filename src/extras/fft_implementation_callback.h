#ifndef RT305_4_EXTRAS_FFT_IMPLEMENTATION_CALLBACK_H
#define RT305_4_EXTRAS_FFT_IMPLEMENTATION_CALLBACK_H

#include "toolkit/array.h"

namespace coder {

// Textbook transforms with tables made by the caller: radix 2 for powers of two, chirp-z for other lengths. RealFft
// computes the same spectra faster; tests compare the two.

/// Sizes for a transform of length nfft: with useRadix2 n2blue = 1 and nRows = nfft; otherwise n2blue is the smallest
/// power of two >= 2 nfft - 1, the length of the chirp-z convolution, and nRows = n2blue. Throws
/// std::bad_array_new_length when it exceeds 2^30.
void FFTImplementationCallback_get_algo_sizes(int nfft, bool useRadix2, int* n2blue, int* nRows);

/// Tables for radix-2 transforms up to length nRows (a power of two), k = 0 ... nRows/2:
/// costab[k] = cos(2 pi k / nRows), sintab[k] = -sin(2 pi k / nRows), and without useRadix2 sintabinv[k] = +sin (empty
/// otherwise). All entries come from one quarter wave, so symmetric entries agree in every bit.
void FFTImplementationCallback_generate_twiddle_tables(int nRows, bool useRadix2, row& costab, row& sintab,
                                                       row& sintabinv);

/// Spectrum y[nRows] of real samples, cut or zero-padded to nRows (a power of two): even and odd samples form one
/// complex sequence of half the length. Tables for length nRows.
void FFTImplementationCallback_doHalfLengthRadix2(const column& x, complex_column& y, int nRows, const row& costab,
                                                  const row& sintab);

/// Transform y[nRows] of complex samples, cut or zero-padded to nRows (a power of two): decimation in time, unscaled.
/// Tables for length nRows or a larger power of two; sintabinv in place of sintab gives nRows times the inverse.
void FFTImplementationCallback_r2br_r2dit_trig_impl(const complex_column& x, int nRows, const row& costab,
                                                    const row& sintab, complex_column& y);

/// Spectrum y[nfft] of real samples, cut or zero-padded to nfft, as a convolution with a chirp; even nfft via a complex
/// sequence of half the length. n2blue and the tables for length n2blue come from the two functions above.
/// L. I. Bluestein, IEEE Trans. Audio Electroacoust. 18 (1970), "A linear filtering approach to the computation of
/// discrete Fourier transform".
void FFTImplementationCallback_dobluesteinfft(const column& x, int n2blue, int nfft, const row& costab,
                                              const row& sintab, const row& sintabinv, complex_column& y);

}  // namespace coder

#endif
