#ifndef RT305_4_CALC_SPECTRUM_H
#define RT305_4_CALC_SPECTRUM_H

#include "calc/input_conditioning.h"

namespace calc_modul_K9_web_ns {

/// What a spectrum request asks for.
struct SpectrumRequest {
    double N;          // sample count; a record of another length has no spectrum
    double criterion;  // for peaks by criterion: smallest height of a peak, in the unit of the row
    int peaks;         // number of maxima wanted
    SpectrumOptions options;
};

/// The sample rate of a spectrum and the frequency at which "fft_mode_1" cuts it, both in Hz.
struct SpectrumBand {
    double rate;
    double limit;
};
inline constexpr SpectrumBand band500{500.0, 250.0};
inline constexpr SpectrumBand band10000{10000.0, 1000.0};
constexpr SpectrumBand bandAt(double rate) {
    return {rate, rate == band500.rate ? band500.limit : band10000.limit};
}

/// Spectra of one channel set with their largest lines:
///
///     a[k] = 2 |X[k]| / N, X the transform of the windowed signal padded with zeros to factor * n samples,
///     d[k] = 20 log10(a[k] / max a), d[0] = d[1],      f[k] = k rate / (factor n).
///
/// DC is doubled like every other bin. "fft_mode_1" pads by 4 (voltages) or 16 (currents) and keeps bins 0 ... K,
/// K = floor(limit factor N / rate), at most the half spectrum; "fft_mode_2" pads by 2 and keeps the half spectrum.
/// Rows are a in volts or amperes, or d in dB. Maxima by count are the (at most 20) highest, highest first; maxima by
/// criterion are the highest above the criterion, by frequency. NaN signals give NaN rows; zero signals give zero
/// amplitudes and NaN levels. The spectrum is empty unless all channels have N samples.
void measureSpectrum(const ConditionedSet& set, const ChannelKind& kind, const SpectrumBand& band,
                     const SpectrumRequest& request, coder::f_table& out);

}  // namespace calc_modul_K9_web_ns

#endif
