#include "toolkit/fft.h"

#include "toolkit/fft_implementation_callback.h"
#include "toolkit/scalar.h"

namespace coder {
namespace {

/// Writes the bins above n/2 of a spectrum of n bins as the conjugates of those below.
void mirrorUpperHalf(creal_T* y, int n) {
    for (int k = n / 2 + 1; k < n; ++k) {
        y[k] = {y[n - k].re, -y[n - k].im};
    }
}

}  // namespace

RealFft::RealFft(int n) : n_(n) {
    assert(n >= 1);
}

void RealFft::forward(samples x, creal_T* half) {
    column padded;
    padded.set_size(n_);
    const int given = static_cast<int>(std::min(x.size(), static_cast<std::size_t>(n_)));
    std::fill(std::copy(x.begin(), x.begin() + given, padded.begin()), padded.end(), 0.0);
    const bool useRadix2 = (n_ & (n_ - 1)) == 0;
    int n2blue = 0;
    int nRows = 0;
    row costab;
    row sintab;
    row sintabinv;
    complex_column y;
    FFTImplementationCallback_get_algo_sizes(n_, useRadix2, &n2blue, &nRows);
    FFTImplementationCallback_generate_twiddle_tables(nRows, useRadix2, costab, sintab, sintabinv);
    if (useRadix2) {
        FFTImplementationCallback_doHalfLengthRadix2(padded, y, n_, costab, sintab);
    } else {
        FFTImplementationCallback_dobluesteinfft(padded, n2blue, n_, costab, sintab, sintabinv, y);
    }
    std::copy(y.begin(), y.begin() + bins(), half);
}

/// With g[k] = Re X[k] + Im X[k] over all n bins and G its transform, n x[m] = Re G[m] + Im G[m].
/// R. V. L. Hartley, Proc. IRE 30 (1942), "A more symmetrical Fourier analysis applied to transmission problems".
void RealFft::inverse(const creal_T* half, double* x) {
    row folded;
    complex_row transformed;
    folded.set_size(1, n_);
    transformed.set_size(1, bins());
    folded[0] = half[0].re;
    for (int k = 1; k < bins(); ++k) {
        folded[n_ - k] = half[k].re - half[k].im;
        folded[k] = 2 * k == n_ ? half[k].re : half[k].re + half[k].im;
    }
    forward(folded, transformed.data());
    for (int m = 0; m < bins(); ++m) {
        const creal_T sum = transformed[m];
        x[m == 0 ? 0 : n_ - m] = (sum.re - sum.im) / n_;
        x[m] = (sum.re + sum.im) / n_;
    }
}

void fft(const column& x, complex_column& y) {
    y.set_size(x.numel());
    if (x.numel() > 0) {
        RealFft(x.numel()).forward(x, y.data());
        mirrorUpperHalf(y.data(), x.numel());
    }
}

void fft(const row& x, double nfft, complex_row& y) {
    if (nfft >= 2147483648.0) {
        throw std::bad_array_new_length();
    }
    const int n = std::max(truncatedToInt(nfft), 0);
    y.set_size(1, n);
    if (n > 0) {
        RealFft(n).forward(x, y.data());
        mirrorUpperHalf(y.data(), n);
    }
}

}  // namespace coder
