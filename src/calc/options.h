#ifndef RT305_4_CALC_OPTIONS_H
#define RT305_4_CALC_OPTIONS_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace calc_modul_K9_web_ns {

// Option values are short texts; the stages compare them as a whole.
namespace option {
inline constexpr std::string_view frequencyFixed = "frequency_fixed";
inline constexpr std::string_view frequencyControl = "frequency_control";
inline constexpr std::string_view wiringThree = "three";
inline constexpr std::string_view wiringFour = "four";
inline constexpr std::string_view sourceReal = "real";
inline constexpr std::string_view sourceSimulated = "sim";
inline constexpr std::string_view threeCurrents = "three_current";
inline constexpr std::string_view twoCurrents = "two_current";
inline constexpr std::string_view powerNone = "not_mode_power";
inline constexpr std::string_view powerTwoWattmeter = "mode_two_wattmeter";
inline constexpr std::string_view powerThreeWattmeter = "mode_three_wattmeter";
inline constexpr std::string_view powerTwoWattmeterPhase = "mode_two_wattmeter_faz";
inline constexpr std::string_view powerThreeWattmeterComplex = "mode_three_wattmeter_c";
inline constexpr std::string_view powerUnmatched = "mode_three_wattmeter_c_3";  // selects no method
inline constexpr std::string_view windowRectangular = "win_rectwin";
inline constexpr std::string_view windowHamming = "win_hamming";
inline constexpr std::string_view windowHann = "win_hanning";
inline constexpr std::string_view windowKaiser = "win_kaiser";
inline constexpr std::string_view transformMode1 = "fft_mode_1";
inline constexpr std::string_view transformMode2 = "fft_mode_2";
inline constexpr std::string_view scaleLinear = "win_not_log";
inline constexpr std::string_view scaleLevel = "win_log";
}  // namespace option

/// A phase of a three-phase set, or none of them.
enum class PhaseChoice : std::uint8_t { none, a, b, c };

/// A phase by its index, with the indexes of the two others.
struct PhaseWithOthers {
    std::size_t phase;
    std::size_t first;
    std::size_t second;
};
constexpr PhaseWithOthers withOthers(PhaseChoice choice) {
    const std::size_t phase = static_cast<std::size_t>(choice) - 1;
    return {phase, phase == 0 ? std::size_t{1} : 0, phase == 2 ? std::size_t{1} : 2};
}

/// The measurement flags, decoded once per call.
struct MeasurementOptions {
    explicit MeasurementOptions(std::uint32_t flags);

    std::string_view frequency;
    std::string_view wiring;
    std::string_view source;
    std::string_view currents;
    std::string_view power;
    PhaseChoice rebuiltCurrent;
    bool keepRebuiltRms;
    bool negateActivePower;
    bool negateReactivePower;
};

/// The spectrum flags, decoded once per call.
struct SpectrumOptions {
    explicit SpectrumOptions(std::uint32_t flags);

    std::string_view window;
    std::string_view transform;
    std::string_view scale;
    bool peaksByCriterion;
};

}  // namespace calc_modul_K9_web_ns

#endif
