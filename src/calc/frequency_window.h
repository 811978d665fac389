#ifndef RT305_4_CALC_FREQUENCY_WINDOW_H
#define RT305_4_CALC_FREQUENCY_WINDOW_H

#include <string_view>

#include "calc/options.h"

namespace calc_modul_K9_web_ns {

/// The range of fundamentals that a frequency option selects, in Hz.
struct FrequencyWindow {
    double lowest;
    double highest;

    /// Whether a frequency is inside the window, both ends excluded.
    bool contains(double frequency) const { return lowest < frequency && frequency < highest; }
};

constexpr FrequencyWindow frequencyWindow(std::string_view option) {
    return option == option::frequencyControl ? FrequencyWindow{10.0, 60.0} : FrequencyWindow{49.6, 50.4};
}

}  // namespace calc_modul_K9_web_ns

#endif
