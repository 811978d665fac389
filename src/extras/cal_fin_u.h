#ifndef RT305_4_EXTRAS_CAL_FIN_U_H
#define RT305_4_EXTRAS_CAL_FIN_U_H

#include <string_view>

#include "toolkit/array.h"

namespace calc_modul_K9_web_ns {

/// FrequencySearch for one signal: frequency in Hz, amplitude in the unit of x. amplitude may be null.
void cal_fin_u(coder::samples x, double N, std::string_view option, double* frequency, double* amplitude);

}  // namespace calc_modul_K9_web_ns

#endif
