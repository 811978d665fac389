#include "calc/harmonics.h"

namespace calc_modul_K9_web_ns {
namespace {

/// Channels of as many samples as the first use the shared measurement, others make one of their own.
template <std::size_t count>
std::array<coder::HarmonicResult, count> measureRows(const std::array<coder::samples, count>& rows,
                                                     const coder::HarmonicSettings& settings) {
    const coder::HarmonicDistortion shared(static_cast<int>(rows[0].size()), settings);
    const std::array<double, count> sums = coder::combineVectorElements(rows);
    std::array<coder::HarmonicResult, count> harmonics;
    for (std::size_t channel = 0; channel < count; ++channel) {
        const coder::samples x = rows[channel];
        const double mean = sums[channel] / static_cast<double>(x.size());
        harmonics[channel] = x.size() == rows[0].size()
                                 ? shared.measure(x, mean)
                                 : coder::HarmonicDistortion(static_cast<int>(x.size()), settings).measure(x, mean);
    }
    return harmonics;
}

}  // namespace

SetHarmonics measureHarmonics(const ChannelSet& set, const coder::HarmonicSettings& settings) {
    return measureRows<coder::phases>({set[0], set[1], set[2]}, settings);
}

HarmonicsOfBoth measureHarmonics(const ChannelSet& voltages, const ChannelSet& currents) {
    auto [ua, ub, uc, ia, ib, ic] = measureRows<2 * coder::phases>(
        {voltages[0], voltages[1], voltages[2], currents[0], currents[1], currents[2]}, coder::b_thdSettings);
    return {{std::move(ua), std::move(ub), std::move(uc)}, {std::move(ia), std::move(ib), std::move(ic)}};
}

}  // namespace calc_modul_K9_web_ns
