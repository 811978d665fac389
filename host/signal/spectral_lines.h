#ifndef RT305_HOST_SIGNAL_SPECTRAL_LINES_H
#define RT305_HOST_SIGNAL_SPECTRAL_LINES_H

#include <cstddef>
#include <optional>
#include <vector>

namespace rt305 {

enum class WindowShape { rectangular, hann, hamming, kaiser };  // kaiser: beta = 0.5

/// The weights on the samples of a spectrum: Hann without the zeros at its ends, the others symmetric.
struct Window {
    WindowShape shape;
    std::size_t length;  // samples
};

/// The mean of the weights, which is the height of the line of a sine of amplitude 1. Error below 1 / length^2.
double gainOf(const Window& window);

struct SpectralLine {
    double place;  // in the spectrum, from 0, between two of its values
    double amplitude;
};

struct LineLimits {
    std::optional<double> least;  // amplitude; empty: 0.01 % of the largest line
    std::size_t most;
};

/// The lines of an amplitude spectrum, the largest first. Its values are `binsPerValue` of a bin (the inverse of the
/// record's duration) apart, less than 1 when the record was padded with zeros; the first one is at 0 Hz.
///
/// A maximum is a line when it is 25 % larger than what the larger lines can make at its place: the sum of their window
/// transforms, with the envelope in place of the side lobes, for their own frequencies, the negative ones and 0 Hz.
/// F. J. Harris, On the Use of Windows for Harmonic Analysis with the Discrete Fourier Transform, Proc. IEEE 66 (1978),
/// p. 51. Two lines closer than the main lobe, 2 bins for Hann and Hamming and 1 for the others, can merge into one.
/// Places and amplitudes are those of a parabola through three levels: at two values a bin or more, the amplitude of a
/// lone sine is within 0.1 % under a Hann window, and within 2 % under a rectangular one.
std::vector<SpectralLine> findLines(const std::vector<double>& amplitudes, const Window& window, double binsPerValue,
                                    const LineLimits& limits);

}  // namespace rt305

#endif
