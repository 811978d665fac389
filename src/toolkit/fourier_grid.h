#ifndef RT305_4_TOOLKIT_FOURIER_GRID_H
#define RT305_4_TOOLKIT_FOURIER_GRID_H

#include <cstddef>
#include <span>
#include <vector>

#include "toolkit/reductions.h"

namespace coder {

/// Fourier sums of a real row at many low frequencies, all at once:
///
///     S[k] = sum over i = 0 ... n-1 of x[i] e^(-j angle[k] (i + 1)),   0 < angle[k] <= maxAngle radians per sample.
///
/// The row is cut into blocks of B = 256 samples. With u in [-1, 1] the position inside a block and z = angle (B-1)/2,
/// e^(-j z u) = sum over m of (2 - [m=0]) (-j)^m J_m(z) T_m(u) (Jacobi-Anger; Abramowitz and Stegun, Handbook of
/// Mathematical Functions (1964), 9.1.44-45), so the Chebyshev moments sum x T_m(u) of a block, shared by all
/// frequencies, replace its samples. The block centres' phase factors come from repeated rotation.
class FourierGrid {
public:
    /// 60 Hz at 10 kHz: within it 24 moments suffice.
    static constexpr double maxAngle = 60.0 * 6.283185307179586 * 0.0001 * (1.0 + 1e-9);

    explicit FourierGrid(std::span<const double> angles);

    std::size_t size() const { return count_; }

    /// x[n] -> re[size()], im[size()]. Finite samples whose sum of magnitudes is finite.
    void evaluate(samples x, double* re, double* im) const;

    /// Bound of |computed S[k] - S[k]| in units of sum |x|. With u = 2^-53:
    /// - the terms that are left out: 2 sum over m >= 24 of |J_m(z)| <= 2.1 (z/2)^24 / 24! < 5e-15 for z <= 4.81;
    /// - T_m from its recurrence and its rounded node errs by at most 3 m^2 u, the moment sum of 128 folded terms in 8
    ///   lanes by 25 u, J_m by a few u; weighted with (2 - [m=0]) |J_m(z)|, whose sum is below 7 and whose sum with
    ///   weight m^2 is below 80, that is less than (3 * 80 + 7 * 40) u < 1e-13;
    /// - each rotation of the phase factor adds at most 4 u, each accumulated block 1 u, over n / 256 blocks, and the
    ///   rounded step angle 256 angle n / 256 u <= 0.04 u n: together below 0.1 u n + 8 u.
    static double errorBound(std::size_t n) { return 1e-12 + 0.2 * 1.1102230246251565e-16 * static_cast<double>(n); }

    static constexpr int block = 256;   // samples
    static constexpr int moments = 24;  // per block
    static constexpr int group = 4;     // blocks that share one pass over the coefficients

private:
    /// Unit phase factors of all frequencies.
    struct Rotation {
        std::vector<double> cosines;
        std::vector<double> sines;
    };

    std::size_t count_;                 // frequencies asked for
    std::size_t padded_;                // rounded up to whole vectors
    std::vector<double> chebyshev_;     // T_m of the block's upper half, m after m
    std::vector<double> coefficients_;  // (2 - [m=0]) (+-1) J_m(z) of all frequencies, m after m
    Rotation start_;                    // angle times the centre of the first block
    Rotation step_;                     // angle times the block length
};

}  // namespace coder

#endif
