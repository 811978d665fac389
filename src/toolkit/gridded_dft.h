#ifndef RT305_4_TOOLKIT_GRIDDED_DFT_H
#define RT305_4_TOOLKIT_GRIDDED_DFT_H

#include <cstddef>
#include <vector>

#include "toolkit/fft.h"

namespace coder {

/// Magnitudes of a real row's Fourier sums at low lines of a long period P = 100,000 samples, all at once:
///
///     |S[k]|,   S[k] = sum over i = 0 ... n-1 of x[i] e^(-2 pi j k i / P),   0 < k <= maxLine.
///
/// The samples are spread over a grid that has a point for every D = 50 samples of the period: y[q] = sum over i of
/// x[i] h(i/D - q). The grid is periodic, so it has P/D points however long the row is. With H the Fourier transform of
/// h, the transform of y is Y[k] = S[k] H(k D/P), except for the aliases at k D/P + m. h is the Kaiser-Bessel kernel
/// I0(beta sqrt(1 - (u/8)^2)) / I0(beta) on |u| <= 8, H(v) = 16 sinh(s) / s / I0(beta), s^2 = beta^2 - (16 pi v)^2.
/// J. I. Jackson et al., IEEE Trans. Med. Imaging 10 (1991), "Selection of a convolution function for Fourier inversion
/// using gridding".
class GriddedDft {
public:
    static constexpr int period = 100000;  // samples
    static constexpr int maxLine = 600;

    GriddedDft(int firstLine, int lines);

    std::size_t lines() const { return transform_.size(); }

    /// x[n] -> out[lines()]. Finite samples whose sum of magnitudes is between 1e-120 and 1e120.
    void magnitudes(samples x, double* out) const;

    /// Bound of | out - |S| | in units of sum |x|. With u = 2^-53 and v = k D/P <= 0.3, everything is divided by H(v),
    /// which is at least H(0.3) = 16 * 6.5e11 / I0(beta):
    /// - aliases: h is a step of height 1/I0(beta) on |u| <= 8 plus a continuous rest. In units of 1/I0(beta),
    ///   - the aliases of the step add up to the sum of its at most 17 values at grid points minus its own transform
    ///     (Poisson's summation formula), which is less than 17;
    ///   - an alias of the rest is 16 |sinc(sqrt(x^2 - beta^2)) - sinc(x)| at x = 16 pi (v + m): less than 17 for m =
    ///   -1,
    ///     where the root is smallest, and less than 5 in all for the others, together 22.
    ///   The sum is less than 39 / (16 * 6.5e11) < 4e-12;
    /// - rounding: the kernel errs by 100 u, a sum of D products by (D + 1) u, the sums of up to 2 + 16 n/P of them by
    ///   as many u, the transform by less than 50 u log2(P/D) in its Euclidean norm, hence by 50 u log2(P/D) sqrt(P/D)
    ///   in one bin; all relative to H(0) < 29 H(0.3). Together less than 1e-10 + 1e-18 n.
    static double errorBound(std::size_t n) { return 1e-10 + 1e-18 * static_cast<double>(n); }

private:
    std::size_t firstLine_;
    RealFft fft_;                 // of one period of grid points
    std::vector<double> kernel_;  // for each of the D positions between two points, the weights of 16 points around it
    std::vector<double> transform_;  // of the kernel, at each line
};

}  // namespace coder

#endif
