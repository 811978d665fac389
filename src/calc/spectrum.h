#ifndef RT305_4_CALC_SPECTRUM_H
#define RT305_4_CALC_SPECTRUM_H

#include "calc/channel_kind.h"
#include "calc/options.h"

namespace calc_modul_K9_web_ns {

/// What a spectrum request asks for.
struct SpectrumRequest {
    double N;          // sample count; a record of another length has no spectrum
    double criterion;  // smallest height of a peak in the unit of the row, for peaks by criterion
    int peaks;         // number of maxima wanted
    SpectrumOptions options;
};

/// Spectra of one channel set with their largest lines:
///
///     a[k] = 2 |X[k]| / N, X the transform of the windowed signal padded with zeros to factor * n samples,
///     d[k] = 20 log10(a[k] / max a), d[0] = d[1],      f[k] = k fs / (factor n).
///
/// DC is doubled like every other bin. "fft_mode_1" pads by 4 (voltages) or 16 (currents) and keeps bins 0 ... K,
/// K = floor(limit factor N / fs), at most the half spectrum; "fft_mode_2" pads by 2 and keeps the half spectrum. Rows
/// hold a in volts or amperes, or d in dB; maxima by count are the (at most 20) highest, highest first; maxima by
/// criterion are the highest above the criterion by frequency. NaN signals give NaN rows, zero signals zero amplitudes
/// and NaN levels.
///
/// The forms differ in sample rate fs and limit: a rate of its own with a limit of 250 Hz at 500 Hz and 1000 Hz
/// otherwise; 500 Hz with 250 Hz; 10 kHz with 1000 Hz. Twins ending in I take currents.
void SpectrumParam_fn_mo_305_4(const ChannelSet& set, double fs, const SpectrumRequest& request, coder::f_table& out);
void SpectrumParam_fn_mo_305_4I(const ChannelSet& set, double fs, const SpectrumRequest& request, coder::f_table& out);
void SpectrumParam_fn_mo_305_4(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out);
void SpectrumParam_fn_mo_305_4I(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out);
void b_SpectrumParam_fn_mo_305_4(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out);
void b_SpectrumParam_fn_mo_305_4I(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out);

}  // namespace calc_modul_K9_web_ns

#endif
