#include "calc/options.h"

#include <array>

namespace calc_modul_K9_web_ns {
namespace {

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
    : frequency(choose((flags & 0x100U) != 0, option::frequencyControl, option::frequencyFixed)),
      wiring(choose((flags & 0x1U) != 0, option::wiringFour, option::wiringThree)),
      source(choose((flags & 0x70000000U) != 0, option::sourceSimulated, option::sourceReal)),
      currents(choose((flags & 0x20U) != 0, option::twoCurrents, option::threeCurrents)),
      power(powerMethods[flags >> 16U & 7U]),
      rebuiltCurrent(static_cast<PhaseChoice>(flags >> 6U & 3U)),
      keepRebuiltRms((flags & 0x200U) != 0),
      negateActivePower((flags & 0x400U) != 0),
      negateReactivePower((flags & 0x800U) != 0) {}

SpectrumOptions::SpectrumOptions(std::uint32_t flags)
    : window(windows[flags >> 24U & 3U]),
      transform(choose((flags & 0x30000000U) == 0x10000000U, option::transformMode2, option::transformMode1)),
      scale(choose((flags & 6U) == 2U, option::scaleLevel, option::scaleLinear)),
      peaksByCriterion((flags & 0x10000U) != 0) {}

}  // namespace calc_modul_K9_web_ns
