#include "extras/cal_fin_u.h"

#include "calc/frequency.h"

namespace calc_modul_K9_web_ns {

void cal_fin_u(coder::samples x, double N, std::string_view option, double* frequency, double* amplitude) {
    const FrequencySearch search(N, option);
    if (amplitude == nullptr) {
        *frequency = search.frequency(x);
        return;
    }
    const FrequencySearch::Found found = search.fundamental(x);
    *frequency = found.frequency;
    *amplitude = found.amplitude;
}

}  // namespace calc_modul_K9_web_ns
