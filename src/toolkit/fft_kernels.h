#ifndef RT305_4_TOOLKIT_FFT_KERNELS_H
#define RT305_4_TOOLKIT_FFT_KERNELS_H

#include <array>
#include <cstddef>

#include "toolkit/array.h"

namespace coder {

/// Complex numbers as one array of real and one of imaginary parts.
struct Split {
    double* re;
    double* im;
};

/// The radices that have a butterfly.
inline constexpr std::array fftRadices{2, 3, 4, 5, 7, 8, 10, 11, 13};

/// One pass of the self-sorting transform. The first pass has s = 1; each later pass has the s of the pass before it
/// times that pass's radix. With radix R, for p < m and q < s,
///     out[q + s (R p + j)] = w^(p j) sum_h e^(-2 pi i h j / R) in[q + s (p + m h)],   w = e^(-2 pi i / (R m)).
/// twiddles: w^(p j) at (j-1) m + p, j = 1 ... R-1.
/// T. G. Stockham, AFIPS 28 (1966); C. Van Loan, Computational Frameworks for the Fast Fourier Transform (1992), 1.7.
struct FftPass {
    std::ptrdiff_t m;
    std::ptrdiff_t s;
    Split twiddles;
    const double* pairs;  // input of a pass with s = 1: re, im interleaved
    Split in;             // input of any other pass
    Split out;
};

/// Runs a pass with the radix at a position of fftRadices, on the vectors of the instruction set in use.
void runFftPass(std::size_t radix, const FftPass& pass);

/// Spectrum of 2 n real samples, half[n+1], from the transform z[n] of their pairs, with roots e^(-2 pi i k / (2 n)),
/// k = 0 ... n/2: half[k] = (z[k] + conj z[n-k]) / 2 - i root[k] (z[k] - conj z[n-k]) / 2.
struct PairedSpectrum {
    std::ptrdiff_t n;
    Split z;
    Split roots;
    creal_T* half;
};
void splitRealSpectrum(const PairedSpectrum& spectrum);

}  // namespace coder

#endif
