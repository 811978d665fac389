#ifndef RT305_4_CALC_ELECTRICAL_PARAMETERS_H
#define RT305_4_CALC_ELECTRICAL_PARAMETERS_H

#include "calc/harmonics.h"
#include "calc/options.h"

namespace calc_modul_K9_web_ns {

/// Electrical parameters of a three-phase system from its conditioned voltages and currents, sampled at 10 kHz.
///
/// N is the sample count: every mean is a sum times 1/N. With wiring "three" the voltages are line voltages Uab, Ubc,
/// Uca, otherwise phase voltages. The record gets
///   - RMS of phase and line voltages and of currents, in V and A. That of a rebuilt current is the mean of the other
///     two unless the options keep it. Ud0 = RMS(Ua + Ub + Uc) / 3;
///   - THD in % of each channel that is admitted: the mean fundamental of its set and its own fundamental are inside
///     the frequency window. For voltages, phase b is admitted by the fundamental of phase c and phase c by that of
///     phase b; this is part of the interface;
///   - frequency in Hz of each admitted voltage phase;
///   - powers in W, VA and var by the chosen method, if all six channels are admitted.
/// All other values, power factors included, stay unchanged.
void ParamData_mo_305_4(const ConditionedSet& voltages, const ConditionedSet& currents, const SumsOfBoth& sums,
                        double N, const MeasurementOptions& options, const HarmonicsOfBoth& harmonics,
                        coder::d_table& out);

}  // namespace calc_modul_K9_web_ns

#endif
