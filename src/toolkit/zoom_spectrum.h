#ifndef RT305_4_TOOLKIT_ZOOM_SPECTRUM_H
#define RT305_4_TOOLKIT_ZOOM_SPECTRUM_H

#include <span>
#include <vector>

#include "toolkit/fft.h"

namespace coder {

/// Magnitudes of the spectrum of a windowed row that is zero-padded to `factor` times its length:
///
///     |X[k]|,   X[k] = sum over t = 0 ... n-1 of w[t] x[t] e^(-2 pi i k t / (factor n)).
///
/// Only the bins asked for are computed: a padded spectrum is an interpolation between few independent values. For
/// factors above 2, the row divided by the transform of a Kaiser-Bessel kernel is transformed with length 2n; a bin is
/// the sum of the 18 values of that transform around it, weighted by the kernel. J. I. Jackson et al., "Selection of a
/// convolution function for Fourier inversion using gridding", IEEE Trans. Med. Imaging 10 (1991), 473-478.
///
/// Aliases of the kernel and rounding cost at most 1e-14 of the largest bin, which is reached by rows that are almost
/// only their first or last sample; for lines and noise over 100 samples and more it is 2e-15. One object measures any
/// number of rows of n samples, one at a time. A NaN in the row makes every bin NaN.
class ZoomSpectrum {
public:
    /// n >= 1 samples, factor 2, 4 or 16, window w[n]. Throws std::bad_array_new_length when factor * n bins
    /// do not fit a 32-bit count.
    ZoomSpectrum(int n, int factor, std::span<const double> window);

    /// Bins of the half spectrum: factor * n / 2 + 1.
    int bins() const { return bins_; }

    /// Transforms a row, for magnitudes() and largest().
    void load(samples x);

    /// |X[k]| for k = 0 ... count-1, count <= bins().
    void magnitudes(int count, double* out) const;

    /// The largest of all |X[k]|, NaN skipped, given the first ones. The others are computed only if a bound does not
    /// prove that they are smaller. 0 when all are NaN.
    double largest(samples known) const;

private:
    /// |X[k]| for k = bin ... bin+count-1; bin is a multiple of `lanes`, the bins computed side by side.
    void magnitudesFrom(int bin, int count, double* out) const;

    int n_;
    int binsPerValue_;  // factor / 2: bins for each value of the transform of length 2n
    int bins_;
    std::vector<double> weights_;    // of the samples, window included
    std::vector<double> kernel_;     // [value][lane]: weight of each value in the bins computed side by side
    double kernelSum_ = 1.0;         // bound of the sum of a bin's weights
    RealFft fft_;                    // of length 2n
    std::vector<creal_T> spectrum_;  // transform of the loaded row, continued by symmetry at both ends
    double blockScale_ = 1.0;        // the power of two that the loaded row was divided by
};

}  // namespace coder

#endif
