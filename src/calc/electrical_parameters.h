#ifndef RT305_4_CALC_ELECTRICAL_PARAMETERS_H
#define RT305_4_CALC_ELECTRICAL_PARAMETERS_H

#include <array>

#include "calc/channel_kind.h"
#include "calc/options.h"
#include "toolkit/harmonic_distortion.h"

namespace calc_modul_K9_web_ns {

/// Harmonics of the three channels of one quantity.
using SetHarmonics = std::array<coder::HarmonicResult, coder::phases>;

/// Harmonics of each channel of a set. Channels of one length share the measurement's preparation.
SetHarmonics measureHarmonics(const ChannelSet& set, const coder::HarmonicSettings& settings);

struct Harmonics {
    SetHarmonics voltages;
    SetHarmonics currents;
};
/// The same for both sets sampled at 10 kHz: 40 harmonics.
Harmonics measureHarmonics(const ChannelSet& voltages, const ChannelSet& currents);

/// Electrical parameters of a three-phase system from its conditioned voltages and currents, sampled at 10 kHz.
///
/// N is the sample count: every mean is a sum times 1/N. wiring "three" takes the voltages as line voltages Uab, Ubc,
/// Uca, "four" as phase voltages; with any other text the voltages are 0. Written are
///   - RMS of phase and line voltages and of currents, in V and A; a rebuilt current's RMS is the mean of the other two
///     unless the options keep it; Ud0 = RMS(Ua + Ub + Uc) / 3;
///   - THD in %, where the fundamentals lie inside the frequency window: 10 ... 60 Hz for "frequency_control", else
///     49.6 ... 50.4 Hz, both ends excluded, for the channel and for the mean of its set. Phase b is admitted by the
///     fundamental of phase c and the other way round for the voltages: that is part of the interface;
///   - frequency in Hz of each voltage phase whose THD was admitted;
///   - powers in W, VA and var by the chosen method, when all six THD values were admitted.
/// Everything else, power factors included, keeps its value.
void ParamData_mo_305_4(const ChannelSet& voltages, const ChannelSet& currents, double N,
                        const MeasurementOptions& options, const Harmonics& harmonics, coder::d_table& out);

}  // namespace calc_modul_K9_web_ns

#endif
