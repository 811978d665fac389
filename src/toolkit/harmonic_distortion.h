#ifndef RT305_4_TOOLKIT_HARMONIC_DISTORTION_H
#define RT305_4_TOOLKIT_HARMONIC_DISTORTION_H

#include <span>
#include <vector>

#include "toolkit/periodogram.h"

namespace coder {

/// Distortion of one waveform. Element 0 of the lists is the fundamental, element k - 1 its k-th harmonic; what the
/// analysed band does not hold is NaN.
struct HarmonicResult {
    double r;                      ///< total harmonic distortion, power of harmonics over power of fundamental, dB
    std::vector<double> harmPow;   ///< mean squares, dB of x-units^2
    std::vector<double> harmFreq;  ///< Hz
};

struct HarmonicSettings {
    double rate;    ///< sampling rate in Hz
    int harmonics;  ///< how many, the fundamental included
};

inline constexpr HarmonicSettings thdSettings{500.0, 5};
inline constexpr HarmonicSettings b_thdSettings{10000.0, 40};

/// The measurement for rows of n samples: the power spectrum under a Kaiser window with beta = 38, searched by
/// computeTHD. Made once, it serves any number of rows, one at a time.
/// Error of r below 0.001 dB for harmonics down to -120 dB when the lines stand at least 25 bins apart; lines closer
/// than that run into one another. Rows of no or one sample give NaN.
class HarmonicDistortion {
public:
    HarmonicDistortion(int n, const HarmonicSettings& settings);

    HarmonicResult measure(samples x) const;

private:
    Periodogram periodogram_;
    int harmonics_;
};

/// One row under the one or the other settings.
HarmonicResult thd(samples x);
HarmonicResult b_thd(samples x);

/// Finds the fundamental, the largest line that is not DC, and its harmonics 2 ... nHarm (truncated) in a power density
/// Pxx[L] over ascending, equally spaced frequencies F[L] in Hz; rbw is the noise bandwidth of a line in Hz. DC is
/// cleared from Pxx. Everything is NaN when F is empty or does not hold 0 Hz. Harmonics beyond the last frequency stay
/// NaN and do not count; if none is left, r is -Inf.
HarmonicResult computeTHD(column& Pxx, samples F, double rbw, double nHarm);

/// 0-based index of the element of F, ascending and not empty, closest to a finite target; the first of two equally
/// close ones.
std::size_t nearestBin(samples F, double target);

}  // namespace coder

#endif
