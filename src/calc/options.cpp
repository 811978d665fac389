#include "calc/options.h"

#include <array>

#include "rt305_4/rt305_4.h"

namespace calc_modul_K9_web_ns {
namespace {

constexpr std::uint32_t powerStep = RT305_4_POWER_THREE_WATTMETER;
constexpr std::array<std::string_view, 8> powerMethods{
    option::powerNone,
    option::powerThreeWattmeter,
    option::powerTwoWattmeter,
    option::powerTwoWattmeterPhase,
    option::powerThreeWattmeterComplex,
    option::powerUnmatched,
    option::powerThreeWattmeter,
    option::powerThreeWattmeter,
};

constexpr std::array<std::string_view, 4> windows{option::windowRectangular, option::windowHann, option::windowHamming,
                                                  option::windowKaiser};

constexpr std::string_view choose(bool condition, std::string_view set, std::string_view clear) {
    return condition ? set : clear;
}

}  // namespace

MeasurementOptions::MeasurementOptions(std::uint32_t flags)
    : frequency(choose((flags & RT305_4_FREQUENCY_CONTROL) != 0, option::frequencyControl, option::frequencyFixed)),
      wiring(choose((flags & RT305_4_FOUR_WIRE) != 0, option::wiringFour, option::wiringThree)),
      source(choose((flags & RT305_4_SIMULATED_SOURCE_MASK) != 0, option::sourceSimulated, option::sourceReal)),
      currents(choose((flags & RT305_4_TWO_CURRENTS) != 0, option::twoCurrents, option::threeCurrents)),
      power(powerMethods[(flags & RT305_4_POWER_MASK) / powerStep]),
      rebuiltCurrent(static_cast<PhaseChoice>((flags & RT305_4_REBUILT_PHASE_MASK) / RT305_4_REBUILT_PHASE_A)),
      keepRebuiltRms((flags & RT305_4_KEEP_REBUILT_RMS) != 0),
      negateActivePower((flags & RT305_4_NEGATE_ACTIVE_POWER) != 0),
      negateReactivePower((flags & RT305_4_NEGATE_REACTIVE_POWER) != 0) {}

SpectrumOptions::SpectrumOptions(std::uint32_t flags)
    : window(windows[(flags & RT305_4_SPECTRUM_WINDOW_MASK) / RT305_4_SPECTRUM_WINDOW_HANN]),
      transform(choose((flags & RT305_4_SPECTRUM_MODE_MASK) == RT305_4_SPECTRUM_MODE_2, option::transformMode2,
                       option::transformMode1)),
      scale(choose((flags & RT305_4_SPECTRUM_LEVEL_MASK) == RT305_4_SPECTRUM_LEVEL_DB, option::scaleLevel,
                   option::scaleLinear)),
      peaksByCriterion((flags & RT305_4_SPECTRUM_CRITERION) != 0) {}

}  // namespace calc_modul_K9_web_ns
