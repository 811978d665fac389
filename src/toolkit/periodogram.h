#ifndef RT305_4_TOOLKIT_PERIODOGRAM_H
#define RT305_4_TOOLKIT_PERIODOGRAM_H

#include <span>

#include "toolkit/fft.h"
#include "toolkit/sums.h"

namespace coder {

/// One-sided power spectral density of rows of n samples at one rate under one window. One object measures any number
/// of rows, one at a time.
class Periodogram {
public:
    /// The window has n points; rate in Hz.
    Periodogram(column window, double rate);

    /// F[k] = k * rate / n in Hz, from 0 to the largest not above rate/2.
    samples frequencies() const { return frequencies_; }

    /// Equivalent noise bandwidth of the window in Hz: rate * sum w^2 / (sum w)^2. NaN for n = 0.
    double noiseBandwidth() const { return noiseBandwidth_; }

    /// Place for the n samples of a row.
    std::span<double> row() const { return {fft_.workspace(), static_cast<std::size_t>(window_.numel())}; }

    /// x[n] -> pxx[n/2+1] in x-units^2 per Hz, in memory that the next row overwrites: |X[k]|^2 / (rate * sum w^2),
    /// doubled except at DC and, for even n, at rate/2, where X is the transform of the row less its mean, times the
    /// window. The sum of pxx over the bins of a tone times rate/n is the tone's mean square. NaN spreads to all bins;
    /// n = 0 gives one NaN. P. D. Welch, IEEE Trans. Audio Electroacoust. 15 (1967), 70-73, with a single segment.
    std::span<double> density(samples x) const;
    /// The same for the samples in row(), of which the mean is known.
    std::span<double> density(double mean) const;

private:
    column window_;
    RealFft fft_;
    column frequencies_;
    double scale_;  // rate * sum w^2
    double noiseBandwidth_;
};

/// Power in x-units^2 of adjacent density bins that are `spacing` Hz apart: sum(pxx) * spacing.
double bandpower(samples pxx, double spacing);

}  // namespace coder

#endif
