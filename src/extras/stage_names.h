#ifndef RT305_4_EXTRAS_STAGE_NAMES_H
#define RT305_4_EXTRAS_STAGE_NAMES_H

#include "calc/distortion.h"
#include "calc/spectrum.h"
#include "calc/time_signal.h"

// The stages under their documented names, one for voltages and one, ending in I, for currents.

namespace calc_modul_K9_web_ns {

inline void TimeSignalData_mo_305_4(const ChannelSet& set, coder::b_table& record) {
    measureTimeSignals(set, voltage, record);
}
inline void TimeSignalData_mo_305_4I(const ChannelSet& set, coder::b_table& record) {
    measureTimeSignals(set, current, record);
}

/// At the sample rate fs.
inline void SpectrumParam_fn_mo_305_4(const ChannelSet& set, double fs, const SpectrumRequest& request,
                                      coder::f_table& out) {
    measureSpectrum(set, voltage, bandAt(fs), request, out);
}
inline void SpectrumParam_fn_mo_305_4I(const ChannelSet& set, double fs, const SpectrumRequest& request,
                                       coder::f_table& out) {
    measureSpectrum(set, current, bandAt(fs), request, out);
}

/// At 500 Hz.
inline void SpectrumParam_fn_mo_305_4(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out) {
    measureSpectrum(set, voltage, band500, request, out);
}
inline void SpectrumParam_fn_mo_305_4I(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out) {
    measureSpectrum(set, current, band500, request, out);
}

/// At 10 kHz.
inline void b_SpectrumParam_fn_mo_305_4(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out) {
    measureSpectrum(set, voltage, band10000, request, out);
}
inline void b_SpectrumParam_fn_mo_305_4I(const ChannelSet& set, const SpectrumRequest& request, coder::f_table& out) {
    measureSpectrum(set, current, band10000, request, out);
}

/// The fundamental and four harmonics, at 500 Hz.
inline void paramData_thd_mo_305_4(const ChannelSet& set, coder::c_table& out) {
    assembleDistortion(measureHarmonics(set, coder::thdSettings), voltage, out);
}
inline void paramData_thd_mo_305_4I(const ChannelSet& set, coder::c_table& out) {
    assembleDistortion(measureHarmonics(set, coder::thdSettings), current, out);
}

}  // namespace calc_modul_K9_web_ns

#endif
