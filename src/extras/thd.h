#ifndef RT305_4_EXTRAS_THD_H
#define RT305_4_EXTRAS_THD_H

#include "toolkit/harmonic_distortion.h"

namespace coder {

/// Harmonics of one row, by thdSettings and by b_thdSettings.
HarmonicResult thd(samples x);
HarmonicResult b_thd(samples x);

}  // namespace coder

#endif
