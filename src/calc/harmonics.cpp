#include "calc/harmonics.h"

namespace calc_modul_K9_web_ns {
namespace {

/// Channels of n samples use the shared measurement, others make one of their own.
SetHarmonics measureSet(const ChannelSet& set, const coder::HarmonicDistortion& shared, int n,
                        const coder::HarmonicSettings& settings) {
    SetHarmonics harmonics;
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        const coder::row& x = set[phase];
        harmonics[phase] =
            x.numel() == n ? shared.measure(x) : coder::HarmonicDistortion(x.numel(), settings).measure(x);
    }
    return harmonics;
}

}  // namespace

SetHarmonics measureHarmonics(const ChannelSet& set, const coder::HarmonicSettings& settings) {
    const int n = set[0].numel();
    return measureSet(set, coder::HarmonicDistortion(n, settings), n, settings);
}

HarmonicsOfBoth measureHarmonics(const ChannelSet& voltages, const ChannelSet& currents) {
    const int n = voltages[0].numel();
    const coder::HarmonicDistortion shared(n, coder::b_thdSettings);
    return {measureSet(voltages, shared, n, coder::b_thdSettings),
            measureSet(currents, shared, n, coder::b_thdSettings)};
}

}  // namespace calc_modul_K9_web_ns
