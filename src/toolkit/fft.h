#ifndef RT305_4_TOOLKIT_FFT_H
#define RT305_4_TOOLKIT_FFT_H

#include <memory>

#include "toolkit/array.h"
#include "toolkit/fft_kernels.h"
#include "toolkit/reductions.h"

namespace coder {

/// Discrete Fourier transform of real signals of one length n >= 1, and its inverse. Made once per length, it serves
/// any number of signals, one at a time: the scratch memory is its own. Nothing is kept between plans, which are cheap.
/// RMS error relative to the RMS of the spectrum, u = 2^-53: below 1.5 u sqrt(log2 n) for lengths whose prime factors
/// are at most 13, below 3 u sqrt(log2 n) for the others, which take four to ten times as long.
/// Throws std::bad_array_new_length, before anything is allocated, when a working array would exceed 2^31 - 1 elements.
class RealFft {
public:
    explicit RealFft(int n) : RealFft(n, bestFftKernels()) {}
    RealFft(int n, const FftKernels& kernels);
    RealFft(RealFft&&) noexcept;
    RealFft& operator=(RealFft&&) noexcept;
    ~RealFft();

    int size() const { return n_; }
    int bins() const { return n_ / 2 + 1; }

    /// x -> half[n/2+1], half[k] = sum x[m] e^(-2 pi i k m / n), unscaled; the bins above n/2 are the conjugates of
    /// those below. A shorter x is padded with zeros, of a longer one the first n samples count. NaN spreads.
    /// half must not overlap x.
    void forward(samples x, creal_T* half) const;

    /// half[n/2+1] -> x[n], scaled by 1/n, so that it undoes forward(). The imaginary parts at DC and, for even n, at
    /// n/2 do not count. x must not overlap half.
    void inverse(const creal_T* half, double* x) const;

private:
    struct Plan;

    int n_;
    std::unique_ptr<Plan> plan_;
};

/// Transform y[n] of a column x[n]; empty for an empty column. All n bins are written, the upper ones by symmetry.
void fft(const column& x, complex_column& y);

/// Transform y[1 x nfft] of a row cut or zero-padded to nfft samples; nfft is truncated to a whole number. An empty row
/// gives zeros; nfft below 1 or NaN gives an empty row; one beyond 2^31 - 1 throws std::bad_array_new_length.
void fft(const row& x, double nfft, complex_row& y);

}  // namespace coder

#endif
