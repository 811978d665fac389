#ifndef RT305_4_CALC_CALC_MODUL_K9_WEB_H
#define RT305_4_CALC_CALC_MODUL_K9_WEB_H

#include <cstdint>

#include "calc/input_conditioning.h"
#include "calc/options.h"
#include "calc/records.h"

namespace calc_modul_K9_web_ns {

/// One record of six sampled channels with its acquisition settings.
struct Measurement {
    RawChannelSet voltages;
    RawChannelSet currents;
    double samplesNumber = 0.0;          // integral
    double sampleRate = 0.0;             // Hz
    double auxValue = 0.0;               // criterion of the spectral peak search, V, A or dB
    std::int16_t auxMode = 0;            // number of spectral maxima
    double inputType = 0.0;              // 4 voltages, 8 currents, 21 both; truncated toward zero
    std::uint32_t spectrumFlags = 0;     // RT305_4_SPECTRUM_*
    std::uint32_t measurementFlags = 0;  // the other option bits of the C header
    std::uint32_t processingMode = 0;    // 1 time signals, 2 spectrum, 3 harmonic distortion
};

/// Records of one channel set that a caller wants filled. A null record is not computed.
struct SetRecords {
    coder::b_table* signals = nullptr;
    coder::f_table* spectrum = nullptr;
    coder::c_table* distortion = nullptr;
};

struct ResultRecords {
    coder::d_table* parameters = nullptr;
    SetRecords voltages;
    SetRecords currents;
};

/// The whole computation: decodes the options, pre-fills every given record, conditions the channels and runs the
/// stages that input type and processing mode select. A stage whose records are all null does not run. Nothing is
/// reported: values that are not computed stay NaN or empty. Throws only when memory runs out.
void calc_modul_K9_web(const Measurement& measurement, const ResultRecords& results);

/// Creates (destroys) the nestable lock of the computation; the first call of calc_modul_K9_web creates it. The lock is
/// meant for parallel regions in the stages. There are none at present, so nothing takes it.
void calc_modul_K9_web_initialize();
void calc_modul_K9_web_terminate();
bool isInitialized_calc_modul_K9_web();

}  // namespace calc_modul_K9_web_ns

#endif
