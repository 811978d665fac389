#ifndef RT305_4_TOOLKIT_HARMONIC_DISTORTION_H
#define RT305_4_TOOLKIT_HARMONIC_DISTORTION_H

#include <span>
#include <vector>

#include "toolkit/periodogram.h"

namespace coder {

/// Distortion of one waveform. Element k - 1 of the lists is harmonic k, element 0 the fundamental; harmonics beyond
/// the analysed band are NaN.
struct HarmonicResult {
    double r;                      ///< total harmonic distortion, power of harmonics over power of fundamental, dB
    std::vector<double> harmPow;   ///< mean squares in x-units^2
    std::vector<double> harmFreq;  ///< Hz
};

struct HarmonicSettings {
    double rate;    ///< sampling rate in Hz
    int harmonics;  ///< number of harmonics, the fundamental included
};

inline constexpr HarmonicSettings thdSettings{500.0, 5};
inline constexpr HarmonicSettings b_thdSettings{10000.0, 40};

/// Measures rows of n samples, one at a time: computeTHD on the power spectrum under a Kaiser window with beta = 38.
/// The error of r is below 0.001 dB for harmonics down to -120 dB if the lines are at least 25 bins apart; closer lines
/// overlap. Rows of no or one sample give NaN.
class HarmonicDistortion {
public:
    HarmonicDistortion(int n, const HarmonicSettings& settings);

    HarmonicResult measure(samples x) const { return distortionOf(periodogram_.density(x)); }

    /// The same for the n samples in row(), of which the mean is known.
    HarmonicResult measure(double mean) const { return distortionOf(periodogram_.density(mean)); }
    std::span<double> row() const { return periodogram_.row(); }

private:
    HarmonicResult distortionOf(std::span<double> density) const;

    Periodogram periodogram_;
    int harmonics_;
};

/// Finds the fundamental, the largest line that is not DC, and its harmonics 2 ... nHarm (truncated) in a power density
/// Pxx[L] over ascending, equally spaced frequencies F[L] in Hz; rbw is the noise bandwidth of a line in Hz. DC is
/// cleared from Pxx. Everything is NaN when F is empty or does not include 0 Hz. Harmonics beyond the last frequency
/// are NaN and not part of the sum; if none is left, r is -Inf.
HarmonicResult computeTHD(std::span<double> Pxx, samples F, double rbw, double nHarm);

/// 0-based index of the element of F closest to a finite target, the first of two equally close ones. F is ascending,
/// equally spaced and not empty.
std::size_t nearestBin(samples F, double target);

}  // namespace coder

#endif
