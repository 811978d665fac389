#include "extras/fft_arrays.h"

#include <algorithm>
#include <new>
#include <vector>

#include "toolkit/scalar.h"

namespace coder {
namespace {

/// All n bins of the transform of x, written to the memory that resize(n) returns; the upper bins are conjugates of the
/// lower ones.
template <class Resize>
void fullSpectrum(samples x, int n, Resize resize) {
    if (n == 0) {
        resize(0);
        return;
    }
    const RealFft plan(n);
    creal_T* const y = resize(n);
    plan.forward(x, y);
    for (int k = plan.bins(); k < n; ++k) {
        y[k] = {y[n - k].re, -y[n - k].im};
    }
}

}  // namespace

void fft(const column& x, complex_column& y) {
    fullSpectrum(x, x.numel(), [&](int n) {
        y.set_size(n);
        return y.data();
    });
}

void fft(const row& x, double nfft, complex_row& y) {
    if (nfft >= 2147483648.0) {
        throw std::bad_array_new_length();
    }
    fullSpectrum(x, std::max(truncatedToInt(nfft), 0), [&](int n) {
        y.set_size(1, n);
        return y.data();
    });
}

/// With g[k] = Re X[k] + Im X[k] over all n bins and G its transform, n x[m] = Re G[m] + Im G[m].
/// R. N. Bracewell, J. Opt. Soc. Am. 73 (1983), "Discrete Hartley transform".
void inverse(const RealFft& plan, const creal_T* half, double* x) {
    const std::ptrdiff_t n = plan.size();
    std::vector<double> folded(static_cast<std::size_t>(n));
    std::vector<creal_T> transformed(static_cast<std::size_t>(plan.bins()));
    folded[0] = half[0].re;
    for (std::size_t k = 1, mirror = folded.size() - 1; k <= mirror; ++k, --mirror) {
        folded[mirror] = half[k].re - half[k].im;
        folded[k] = k == mirror ? half[k].re : half[k].re + half[k].im;
    }
    plan.forward(folded, transformed.data());
    const double scale = 1.0 / static_cast<double>(n);
    x[0] = transformed[0].re * scale;
    for (std::ptrdiff_t m = 1, mirror = n - 1; m <= mirror; ++m, --mirror) {
        const creal_T z = transformed[static_cast<std::size_t>(m)];
        x[mirror] = (z.re - z.im) * scale;
        x[m] = (z.re + z.im) * scale;
    }
}

}  // namespace coder
