#ifndef RT305_4_CALC_TIME_SIGNAL_H
#define RT305_4_CALC_TIME_SIGNAL_H

#include "calc/input_conditioning.h"

namespace calc_modul_K9_web_ns {

/// Time signals of one channel set with their statistics, in volts or amperes: mean = sum x / n,
/// rms = sqrt(sum x^2 / n), peak2rms = max|x| / rms, peak2peak = max x - min x. An empty signal gives NaN; NaN samples
/// make mean and rms NaN and are skipped by the extremes. The record gives "peak2rms" the unit of the signal, although
/// it is a ratio: that is part of the interface.
void measureTimeSignals(const ConditionedSet& set, const ChannelKind& kind, coder::b_table& record);

}  // namespace calc_modul_K9_web_ns

#endif
