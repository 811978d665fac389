#include "measuring/fundamentals.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace rt305 {

namespace {

constexpr double lowestHz = 10.0;
constexpr double highestHz = 450.0;
constexpr double nominalTolerance = 0.2;
constexpr double leastShareOfKind = 0.01;
constexpr double leastFundamentalShare = 0.5;  // of a channel's RMS
constexpr double largestDisagreement = 0.02;   // between the frequencies of channels

bool isGapless(const std::vector<double>& samples) {
    return !samples.empty() && std::none_of(samples.begin(), samples.end(), [](double x) { return std::isnan(x); });
}

/// RMS without the mean.
double variationOf(std::span<const double> samples) {
    const auto count = static_cast<double>(samples.size());
    const double mean = std::accumulate(samples.begin(), samples.end(), 0.0) / count;
    double sum = 0.0;
    for (const double x : samples) {
        sum += (x - mean) * (x - mean);
    }
    return std::sqrt(sum / count);
}

/// The channels that vary by 1 % of the largest of their kind or more.
std::vector<std::size_t> varyingChannels(const Measurement& recorded) {
    PerChannel<double> variations{};
    std::array<double, 2> largest{};
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (isGapless(recorded.samples[channel])) {
            variations[channel] = variationOf(recorded.samples[channel]);
            double& most = largest[isCurrent(channel) ? 1 : 0];
            most = std::max(most, variations[channel]);
        }
    }
    std::vector<std::size_t> channels;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (variations[channel] > 0.0 &&
            variations[channel] >= leastShareOfKind * largest[isCurrent(channel) ? 1 : 0]) {
            channels.push_back(channel);
        }
    }
    return channels;
}

/// Those of `channels` that the frequency is taken from: the voltages, or the currents alone.
std::vector<std::size_t> leadingChannels(const std::vector<std::size_t>& channels) {
    std::vector<std::size_t> leading;
    std::copy_if(channels.begin(), channels.end(), std::back_inserter(leading),
                 [&](std::size_t channel) { return isCurrent(channel) == isCurrent(channels.front()); });
    return leading;
}

/// The mean of the fits that agree with `nearHz`, weighted by their accuracy; 0 without one.
double combined(const std::vector<std::optional<FundamentalFit>>& fits, double nearHz) {
    double sum = 0.0;
    double weights = 0.0;
    for (const auto& fit : fits) {
        if (fit && std::fabs(fit->frequencyHz - nearHz) <= largestDisagreement * nearHz) {
            const double deviation = std::max(fit->deviationHz, 1e-9 * nearHz);
            sum += fit->frequencyHz / (deviation * deviation);
            weights += 1.0 / (deviation * deviation);
        }
    }
    return weights > 0.0 ? sum / weights : 0.0;
}

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0.0;
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// The strongest line that most of the leading channels agree on.
double roughFrequency(const Measurement& recorded, const std::vector<std::size_t>& leading) {
    std::vector<double> lines;
    for (const std::size_t channel : leading) {
        if (const auto line = strongestLine(recorded.samples[channel], recorded.rateHz, lowestHz,
                                            std::min(highestHz, recorded.rateHz / 3.0))) {
            lines.push_back(*line);
        }
    }
    return median(std::move(lines));
}

/// The frequency of the leading channels in the longest steady part, found near `nearHz`; 0 for none.
double frequencyOfLongestPart(const Measurement& recorded, const std::vector<std::size_t>& leading,
                              const std::vector<SteadyPart>& parts, double nearHz) {
    const auto longest = std::max_element(parts.begin(), parts.end(),
                                          [](const SteadyPart& x, const SteadyPart& y) { return x.count < y.count; });
    std::vector<std::optional<FundamentalFit>> fits;
    for (std::size_t i = 0; i < leading.size() && longest != parts.end(); ++i) {
        const auto samples = std::span(recorded.samples[leading[i]]).subspan(longest->first, longest->count);
        const auto line = strongestLine(samples, recorded.rateHz, nearHz * (1.0 - nominalTolerance),
                                        nearHz * (1.0 + nominalTolerance));
        fits.push_back(line ? fitFundamental(samples, recorded.rateHz, *line) : std::nullopt);
    }
    std::vector<double> frequencies;
    for (const auto& fit : fits) {
        if (fit) {
            frequencies.push_back(fit->frequencyHz);
        }
    }
    return combined(fits, median(std::move(frequencies)));
}

std::size_t longestOf(const std::vector<SteadyPart>& parts) {
    std::size_t longest = 0;
    for (const SteadyPart& part : parts) {
        longest = std::max(longest, part.count);
    }
    return longest;
}

}  // namespace

Fundamentals fundamentalsOf(const Measurement& recorded, double nearHz) {
    Fundamentals result{.frequencyHz = nearHz};
    const auto channels = varyingChannels(recorded);
    if (channels.empty() || !(nearHz > 0.0)) {
        return {};
    }
    std::vector<std::optional<FundamentalFit>> fits;
    for (const std::size_t channel : leadingChannels(channels)) {
        fits.push_back(fitFundamental(recorded.samples[channel], recorded.rateHz, nearHz));
        const bool agrees = fits.back() && std::fabs(fits.back()->frequencyHz - nearHz) <= largestDisagreement * nearHz;
        result.frequencies[channel % phaseTotal] = agrees ? fits.back()->frequencyHz : nearHz;
    }
    if (const double frequency = combined(fits, nearHz); frequency > 0.0) {
        result.frequencyHz = frequency;
    }
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const auto& samples = recorded.samples[channel];
        if (!isGapless(samples)) {
            continue;
        }
        const Phasor phasor = phasorAt(samples, recorded.rateHz, result.frequencyHz);
        (isCurrent(channel) ? result.currents : result.voltages)[channel % phaseTotal] = phasor;
        result.hasSignal[channel] = std::find(channels.begin(), channels.end(), channel) != channels.end() &&
                                    std::abs(phasor) >= leastFundamentalShare * variationOf(samples);
    }
    return result;
}

GridState gridStateOf(const Measurement& recorded, double nominalHz) {
    GridState state;
    state.channels = varyingChannels(recorded);
    if (state.channels.empty()) {
        return state;
    }
    const auto leading = leadingChannels(state.channels);
    std::vector<std::span<const double>> samples;
    for (const std::size_t channel : state.channels) {
        samples.emplace_back(recorded.samples[channel]);
    }
    // The strongest line of a record with a fault can be far from the grid's frequency, and a grid far from its nominal
    // frequency: the one at which more of the record is steady counts.
    for (const double start : {nominalHz, roughFrequency(recorded, leading)}) {
        if (!(start > 0.0)) {
            continue;
        }
        const Steadiness steadiness = steadinessOf(samples, recorded.rateHz, start);
        if (state.frequencyHz == 0.0 || longestOf(steadiness.parts) > longestOf(state.steadiness.parts)) {
            state.frequencyHz = start;
            state.steadiness = steadiness;
        }
    }
    if (state.frequencyHz > 0.0) {  // once more with the frequency that is found, at which phasors do not turn
        const double found = frequencyOfLongestPart(recorded, leading, state.steadiness.parts, state.frequencyHz);
        state.frequencyHz = found > 0.0 ? found : state.frequencyHz;
        state.steadiness = steadinessOf(samples, recorded.rateHz, state.frequencyHz);
        const double refined = frequencyOfLongestPart(recorded, leading, state.steadiness.parts, state.frequencyHz);
        state.frequencyHz = refined > 0.0 ? refined : state.frequencyHz;
    }
    return state;
}

}  // namespace rt305
