#ifndef RT305_HOST_MEASURING_POWER_METHODS_H
#define RT305_HOST_MEASURING_POWER_METHODS_H

#include <algorithm>
#include <cstdint>
#include <string>

#include "rt305_4/rt305_4.h"

namespace rt305 {

/// A way to measure power.
struct PowerMethod {
    const char* name;            // in options
    std::uint32_t flag;          // RT305_4_POWER_*
    bool givesPhases;            // powers of each phase in addition to the total
    bool requiresPhaseVoltages;  // otherwise line voltages
};

/// All of them; the first gives signed reactive power, the second S = U I.
inline constexpr PowerMethod powerMethods[] = {
    {"three-wattmeter-complex", RT305_4_POWER_THREE_WATTMETER_COMPLEX, true, true},
    {"three-wattmeter", RT305_4_POWER_THREE_WATTMETER, true, true},
    {"two-wattmeter", RT305_4_POWER_TWO_WATTMETER, false, false},
    {"two-wattmeter-phase", RT305_4_POWER_TWO_WATTMETER_PHASE, false, true},
};
inline constexpr std::size_t complexThreeWattmeter = 0;  // its place in powerMethods

/// The name of a method in JSON and CSV: "three_wattmeter".
inline std::string keyOf(const PowerMethod& method) {
    std::string key = method.name;
    std::replace(key.begin(), key.end(), '-', '_');
    return key;
}

}  // namespace rt305

#endif
