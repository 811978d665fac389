#include "measuring/fundamentals.h"

#include <algorithm>
#include <cmath>

#include "measuring/nominal_frequency.h"
#include "signal/median.h"
#include "signal/rms.h"

namespace rt305 {

namespace {

constexpr double nominalTolerance = 0.2;
constexpr double leastShareOfKind = 0.01;
constexpr double leastFundamentalShare = 0.5;  // of a channel's RMS
constexpr double largestDisagreement = 0.02;   // between the frequencies of channels

bool isGapless(const std::vector<double>& samples) {
    return !samples.empty() && std::none_of(samples.begin(), samples.end(), [](double x) { return std::isnan(x); });
}

/// RMS without the mean; 0 for a channel that is not measured or has missing samples.
PerChannel<double> variationsOf(const Measurement& recorded) {
    PerChannel<double> variations{};
    std::transform(recorded.samples.begin(), recorded.samples.end(), variations.begin(),
                   [](const std::vector<double>& x) { return isGapless(x) ? rmsWithoutMean(x) : 0.0; });
    return variations;
}

/// The channels that vary by 1 % of the largest of their kind or more.
std::vector<std::size_t> varyingChannels(const PerChannel<double>& variations) {
    std::array<double, 2> largest{};
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        double& most = largest[isCurrent(channel) ? 1 : 0];
        most = std::max(most, variations[channel]);
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

/// The longest part in which one of the first `leading` channels has a fifth of its largest fundamental; null for none.
const SteadyPart* longestLivePart(const std::vector<SteadyPart>& parts, std::size_t leading) {
    constexpr double liveShare = 0.2;
    const SteadyPart* longest = nullptr;
    for (const SteadyPart& part : parts) {
        bool isLive = false;
        for (std::size_t channel = 0; channel < leading; ++channel) {
            const auto largest = std::max_element(
                parts.begin(), parts.end(),
                [channel](const SteadyPart& x, const SteadyPart& y) { return x.levels[channel] < y.levels[channel]; });
            isLive = isLive || part.levels[channel] >= liveShare * largest->levels[channel];
        }
        if (isLive && (longest == nullptr || part.count > longest->count)) {
            longest = &part;
        }
    }
    return longest;
}

/// The frequency of the leading channels in a part, found near `nearHz`; 0 for none.
double frequencyIn(const SteadyPart& part, const Measurement& recorded, const std::vector<std::size_t>& leading,
                   double nearHz) {
    std::vector<std::optional<FundamentalFit>> fits;
    std::vector<double> frequencies;
    const LineSearch search(part.count);
    for (const std::size_t channel : leading) {
        const auto samples = std::span(recorded.samples[channel]).subspan(part.first, part.count);
        const auto found = findFundamental(search, samples, recorded.rateHz, nearHz * (1.0 - nominalTolerance),
                                           nearHz * (1.0 + nominalTolerance));
        fits.push_back(found ? fitFundamental(samples, recorded.rateHz, found->frequencyHz) : std::nullopt);
        if (fits.back()) {
            frequencies.push_back(fits.back()->frequencyHz);
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

Fundamentals fundamentalsOf(const Measurement& recorded, double nearHz, bool measureFrequency) {
    Fundamentals result{.frequencyHz = nearHz};
    const auto variations = variationsOf(recorded);
    const auto channels = varyingChannels(variations);
    if (channels.empty() || !(nearHz > 0.0)) {
        return {};
    }
    std::vector<std::optional<FundamentalFit>> fits;
    for (const std::size_t channel : measureFrequency ? leadingChannels(channels) : std::vector<std::size_t>()) {
        fits.push_back(fitFundamental(recorded.samples[channel], recorded.rateHz, nearHz));
        const bool agrees = fits.back() && std::fabs(fits.back()->frequencyHz - nearHz) <= largestDisagreement * nearHz;
        result.frequencies[channel % phaseTotal] = agrees ? fits.back()->frequencyHz : 0.0;
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
                                    std::abs(phasor) >= leastFundamentalShare * variations[channel];
    }
    return result;
}

std::vector<std::span<const double>> spansOf(const Measurement& recorded, const std::vector<std::size_t>& channels) {
    std::vector<std::span<const double>> spans;
    std::transform(channels.begin(), channels.end(), std::back_inserter(spans),
                   [&recorded](std::size_t channel) { return std::span<const double>(recorded.samples[channel]); });
    return spans;
}

namespace {

/// Those of `channels` whose cycles have most of their variation in the fundamental; all where none has.
std::vector<std::size_t> channelsWithFundamental(const Measurement& recorded, const std::vector<std::size_t>& channels,
                                                 const PerChannel<double>& variations, double frequencyHz) {
    std::vector<std::size_t> kept;
    for (const std::size_t channel : channels) {
        const auto trace = fundamentalTrace(recorded.samples[channel], recorded.rateHz, frequencyHz);
        double square = 0.0;
        for (const Phasor& cycle : trace) {
            square += std::norm(cycle) / static_cast<double>(trace.size());
        }
        if (std::sqrt(square) >= leastFundamentalShare * variations[channel]) {
            kept.push_back(channel);
        }
    }
    return kept.empty() ? channels : kept;
}

/// Measures the frequency in the longest live part; once more if the phasors, which do not turn at the frequency that
/// is found, give another part.
void measureFrequency(GridState& state, const Measurement& recorded) {
    const auto leading = leadingChannels(state.channels);
    const auto isKnown = [&state](const SteadyPart& part) {
        return state.source && part.first == state.source->first && part.count == state.source->count;
    };
    for (int pass = 0; pass < 2; ++pass) {
        const SteadyPart* const part = longestLivePart(state.steadiness.parts, leading.size());
        const double found =
            part != nullptr && !isKnown(*part) ? frequencyIn(*part, recorded, leading, state.frequencyHz) : 0.0;
        if (found > 0.0) {
            state.frequencyHz = found;
            state.source = *part;
            state.steadiness =
                pass == 0 ? steadinessOf(spansOf(recorded, state.channels), recorded.rateHz, found) : state.steadiness;
        }
    }
}

}  // namespace

GridState gridStateOf(const Measurement& recorded, double nominalHz) {
    const auto variations = variationsOf(recorded);
    const auto varying = varyingChannels(variations);
    GridState state;
    // The strongest line of a record with a fault can be far from the grid's frequency, and a grid far from its nominal
    // frequency: the one at which more of the record is steady counts.
    for (const double start : {nominalHz, commonFundamental(spansOf(recorded.samples), recorded.rateHz)}) {
        if (!(start > 0.0) || varying.empty()) {
            continue;
        }
        const auto channels = channelsWithFundamental(recorded, varying, variations, start);
        const Steadiness steadiness = steadinessOf(spansOf(recorded, channels), recorded.rateHz, start);
        if (state.frequencyHz == 0.0 || longestOf(steadiness.parts) > longestOf(state.steadiness.parts)) {
            state = {start, {}, steadiness, channels};
        }
    }
    measureFrequency(state, recorded);
    return state;
}

}  // namespace rt305
