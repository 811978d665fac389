#include "toolkit/simd.h"

#include <gtest/gtest.h>

#include "calc/calc_modul_K9_web.h"
#include "results/parameter_tables.h"
#include "results/spectrum_tables.h"
#include "rt305_4/rt305_4.h"
#include "support/signals.h"
#include "toolkit/fft.h"

namespace calc_modul_K9_web_ns {
namespace {

/// Parameters and spectra of n samples under one instruction set: every kernel takes part.
std::string textsOf(std::size_t n, std::uint32_t flags, std::uint32_t spectrumFlags, std::size_t set) {
    const coder::ForcedInstructionSet forced(coder::InstructionSet{static_cast<std::uint8_t>(set)});
    auto x = signals::wave(signals::noise(n, n, 1.0, 0.1), {{3.0, 50.0}});
    x[n / 2] = 0.0;
    RawChannelSet raw;
    raw.fill({x});
    const Measurement call{raw, raw, static_cast<double>(n), 1e4, 0.1, 9, 21, spectrumFlags, flags, 2};
    coder::d_table parameters;
    coder::f_table spectrum;
    calc_modul_K9_web(call, {&parameters, {nullptr, &spectrum, nullptr}, {}});
    RT305_4_ParamTable first;
    first.init(parameters);
    RT305_4_USpectrumTable second;
    second.init(spectrum);
    return first.toJsonText() + second.toJsonText();
}

TEST(InstructionSets, AllGiveTheSameTexts) {
    for (std::uint32_t row = 0; row < 4; ++row) {  // all power methods, windows, scales and modes
        const std::uint32_t flags = RT305_4_FREQUENCY_CONTROL | (row + 1) * RT305_4_POWER_THREE_WATTMETER;
        const std::uint32_t bits = RT305_4_SPECTRUM_WINDOW_HANN | RT305_4_SPECTRUM_LEVEL_DB | RT305_4_SPECTRUM_MODE_2;
        for (const std::size_t n : {1000, 1001, 1144, 2048, 3456, 4998, 4999, 6006}) {
            for (std::size_t set = 1; set < coder::instructionSets; ++set) {
                if (coder::isSupported(coder::InstructionSet{static_cast<std::uint8_t>(set)})) {
                    EXPECT_EQ(textsOf(n, flags, row * bits, set), textsOf(n, flags, row * bits, 0)) << n << ' ' << set;
                }
            }
        }
    }
}

TEST(InstructionSets, AllTransformTheSameBits) {
    for (const std::size_t n : {2, 3, 4, 5, 6, 14, 16, 22, 26, 32, 98, 100, 240, 1001, 2000, 4999, 6006, 65536}) {
        const auto x = signals::noise(n);
        const coder::RealFft plan(static_cast<int>(n));
        std::vector<coder::creal_T> half[coder::instructionSets];
        for (std::size_t set = 0; set < coder::instructionSets; ++set) {
            const coder::InstructionSet wanted{static_cast<std::uint8_t>(set)};
            const coder::ForcedInstructionSet forced(coder::isSupported(wanted) ? wanted : coder::instructionSet());
            half[set].resize(n / 2 + 1);
            plan.forward(x, half[set].data());
            EXPECT_EQ(half[set], half[0]) << n << ' ' << set;
        }
    }
}

}  // namespace
}  // namespace calc_modul_K9_web_ns
