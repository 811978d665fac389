#include "calc/harmonics.h"

namespace calc_modul_K9_web_ns {
namespace {

/// Channels of n samples use the shared measurement, others make one of their own.
SetHarmonics measureSet(const ConditionedSet& set, const PerPhase& sums, std::size_t n,
                        const coder::HarmonicDistortion& shared, const coder::HarmonicSettings& settings) {
    SetHarmonics harmonics;
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        const std::size_t length = set.length(phase);
        const auto measureBy = [&](const coder::HarmonicDistortion& measurement) {
            set.write(phase, measurement.row().data());
            return measurement.measure(sums[phase] / static_cast<double>(length));
        };
        harmonics[phase] =
            length == n ? measureBy(shared) : measureBy(coder::HarmonicDistortion(static_cast<int>(length), settings));
    }
    return harmonics;
}

}  // namespace

SetHarmonics measureHarmonics(const ConditionedSet& set, const coder::HarmonicSettings& settings) {
    const PerPhase sums = sumsOfSamples(set);  // before the plan, so that their memory is free again for it
    const std::size_t n = set.length(0);
    return measureSet(set, sums, n, coder::HarmonicDistortion(static_cast<int>(n), settings), settings);
}

HarmonicsOfBoth measureHarmonics(const ConditionedSet& voltages, const ConditionedSet& currents,
                                 const SumsOfBoth& sums) {
    const std::size_t n = voltages.length(0);
    const coder::HarmonicDistortion shared(static_cast<int>(n), coder::b_thdSettings);
    return {measureSet(voltages, sums.voltages.samples, n, shared, coder::b_thdSettings),
            measureSet(currents, sums.currents.samples, n, shared, coder::b_thdSettings)};
}

}  // namespace calc_modul_K9_web_ns
