#ifndef RT305_4_TOOLKIT_ZOOM_SPECTRUM_H
#define RT305_4_TOOLKIT_ZOOM_SPECTRUM_H

#include <span>
#include <vector>

#include "toolkit/fft.h"

namespace coder {

/// Magnitudes of a windowed row's spectrum, zero-padded to a multiple of its length, at the price of the bins that are
/// wanted: |X[k]|, X[k] = sum over t = 0 ... n-1 of w[t] x[t] e^(-2 pi i k t / (factor n)).
///
/// A padded spectrum is an interpolation between few independent values. For factors above 2 the row, divided by the
/// transform of a Kaiser-Bessel kernel, is transformed with length 2n; 18 values around a bin, weighted by the kernel,
/// give the bin. J. I. Jackson et al., "Selection of a convolution function for Fourier inversion using gridding", IEEE
/// Trans. Med. Imaging 10 (1991), 473-478. The kernel's aliases and rounding cost at most 1e-14 of the largest bin,
/// which takes a row that is almost nothing but its first or last sample; lines and noise over 100 samples and more
/// have 2e-15. Made once, it serves any number of rows of n samples, one at a time. NaN in the row makes every bin NaN.
class ZoomSpectrum {
public:
    /// n >= 1 samples, factor 2, 4 or 16, window w[n]. Throws std::bad_array_new_length when factor * n bins
    /// do not fit a 32-bit count.
    ZoomSpectrum(int n, int factor, std::span<const double> window);

    /// Bins of the half spectrum: factor * n / 2 + 1.
    int bins() const { return bins_; }

    /// Transforms a row; the two below refer to it.
    void load(samples x);

    /// |X[k]| for k = 0 ... count-1, count <= bins().
    void magnitudes(int count, double* out) const;

    /// The largest of all |X[k]|, NaN skipped, given the first ones; the others are computed only when they are not
    /// proved to be smaller. 0 when there is none but NaN.
    double largest(samples known) const;

private:
    /// |X[k]| for k = bin ... bin+count-1; bin is a multiple of the number of bins that are made side by side.
    void magnitudesFrom(int bin, int count, double* out) const;

    int n_;
    int phases_;  // bins per value of the transform that they are made from
    int bins_;
    std::vector<double> weights_;  // of the samples, window included
    std::vector<double> kernel_;   // weights of each value in the bins that are made side by side
    double kernelSum_ = 1.0;       // bound of their sum for any bin
    RealFft fft_;
    std::vector<double> circle_;     // the weighted row in the order of the transform, zeros in the middle
    std::vector<creal_T> spectrum_;  // transform of the loaded row, continued by symmetry at both ends
    double unit_ = 1.0;              // the power of two that the loaded row is taken in, of the size of its samples
};

}  // namespace coder

#endif
