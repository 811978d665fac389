#include "measuring/fundamentals.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "measuring/nominal_frequency.h"
#include "signal/median.h"
#include "signal/rms.h"

namespace rt305 {

namespace {

constexpr double nominalTolerance = 0.2;
constexpr double leastShareOfKind = 0.01;
constexpr double leastFundamentalShare = 0.5;  // of a channel's RMS
constexpr double largestDisagreement = 0.02;   // between the frequencies of channels
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

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
double leadingFrequencyIn(const SteadyPart& part, const Measurement& recorded, const std::vector<std::size_t>& leading,
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

/// That of the fundamental; 0 without samples, NaN where some are missing.
Phasor phasorOf(const std::vector<double>& samples, double rateHz, double frequencyHz) {
    if (samples.empty()) {
        return 0.0;
    }
    return isGapless(samples) ? phasorAt(samples, rateHz, frequencyHz) : Phasor(nan, nan);
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
        const Phasor phasor = phasorOf(recorded.samples[channel], recorded.rateHz, result.frequencyHz);
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

/// Whether the cycles of a channel have most of their variation in the fundamental. White noise has 2 / N of its own
/// there, where N is the number of samples a cycle: so much of the rest is taken off.
bool hasFundamental(std::span<const double> samples, double rateHz, double frequencyHz) {
    const double samplesPerCycle = rateHz / frequencyHz;
    const auto trace = fundamentalTrace(samples, rateHz, frequencyHz);
    double ofFundamental = 0.0;
    double ofAll = 0.0;
    for (std::size_t cycle = 0; cycle < trace.size(); ++cycle) {
        const auto first = static_cast<std::size_t>(static_cast<double>(cycle) * samplesPerCycle);
        const double variation = rmsWithoutMean(
            samples.subspan(first, std::min(samples.size() - first, static_cast<std::size_t>(samplesPerCycle))));
        ofFundamental += std::norm(trace[cycle]);
        ofAll += variation * variation;
    }
    const double noise = std::max(0.0, ofAll - ofFundamental) * 2.0 / samplesPerCycle;
    return ofAll > 0.0 && ofFundamental - noise >= leastFundamentalShare * leastFundamentalShare * ofAll;
}

/// The steadiness of the channels with a fundamental. Empty channels: none has one at that frequency.
GridState stateNear(double frequencyHz, const Measurement& recorded, const std::vector<std::size_t>& varying) {
    GridState state{.frequencyHz = frequencyHz};
    std::copy_if(varying.begin(), varying.end(), std::back_inserter(state.channels), [&](std::size_t channel) {
        return hasFundamental(recorded.samples[channel], recorded.rateHz, frequencyHz);
    });
    state.steadiness = steadinessOf(spansOf(recorded, state.channels), recorded.rateHz, frequencyHz);
    return state;
}

/// The strongest line of a record with a fault can be far from the grid's frequency, and a grid far from its nominal
/// frequency: the one at which more of the record is steady counts. A short record does not show that.
GridState stateNearNominalOrLine(double nominalHz, bool isShort, const Measurement& recorded,
                                 const std::vector<std::size_t>& varying) {
    GridState state = nominalHz > 0.0 ? stateNear(nominalHz, recorded, varying) : GridState{};
    const double line = isShort ? 0.0 : commonFundamental(spansOf(recorded.samples), recorded.rateHz);
    if (line > 0.0) {
        GridState found = stateNear(line, recorded, varying);
        if (state.frequencyHz == 0.0 || longestOf(found.steadiness.parts) > longestOf(state.steadiness.parts)) {
            return found;
        }
    }
    return state;
}

/// Measures the frequency in the longest live part; once more if the phasors, which do not turn at the frequency that
/// is found, give another part.
void measureFrequency(GridState& state, const Measurement& recorded, const std::vector<std::size_t>& leading) {
    const auto isKnown = [&state](const SteadyPart& part) {
        return state.source && part.first == state.source->first && part.count == state.source->count;
    };
    for (int pass = 0; pass < 2; ++pass) {
        const SteadyPart* const part = longestLivePart(state.steadiness.parts, leading.size());
        const double found =
            part != nullptr && !isKnown(*part) ? leadingFrequencyIn(*part, recorded, leading, state.frequencyHz) : 0.0;
        if (found > 0.0) {
            state.frequencyHz = found;
            state.source = *part;
            state.steadiness =
                pass == 0 ? steadinessOf(spansOf(recorded, state.channels), recorded.rateHz, found) : state.steadiness;
        }
    }
}

/// Of a record that is too short to see changes otherwise: the largest change of a magnitude from one cycle to the
/// next.
LargestChange changeOfCycles(const GridState& state, const Measurement& recorded,
                             const std::vector<std::size_t>& leading) {
    LargestChange change;
    for (std::size_t i = 0; i < leading.size(); ++i) {
        const auto cycles = fundamentalTrace(recorded.samples[leading[i]], recorded.rateHz, state.frequencyHz);
        for (std::size_t k = 1; k < cycles.size(); ++k) {
            const double before = std::abs(cycles[k - 1]);
            const double after = std::abs(cycles[k]);
            const double percent = 100.0 * (after - before) / std::max(before, after);
            if (std::fabs(percent) > std::fabs(change.percent)) {
                const double place = static_cast<double>(k) * recorded.rateHz / state.frequencyHz;
                change = {i, static_cast<std::size_t>(place), percent, 0.0};
            }
        }
    }
    return change;
}

}  // namespace

GridState gridStateOf(const Measurement& recorded, double nominalHz) {
    constexpr double fewestCycles = 4.0;  // in which steadinessOf() sees changes
    const bool isShort = nominalHz > 0.0 && recorded.durationSeconds() * nominalHz < fewestCycles;
    const auto varying = varyingChannels(variationsOf(recorded));
    GridState state = varying.empty() ? GridState{} : stateNearNominalOrLine(nominalHz, isShort, recorded, varying);
    if (state.frequencyHz == 0.0) {
        return {};
    }
    const bool isNoise = state.channels.empty();  // which says nothing about steadiness
    if (isNoise) {
        state.channels = varying;
        state.steadiness = {{{0, recorded.length, std::vector<double>(varying.size())}}, {}, true};
    }
    const double near = state.frequencyHz;
    const auto leading = leadingChannels(state.channels);
    measureFrequency(state, recorded, leading);
    if (isShort && !isNoise) {
        const LargestChange change = changeOfCycles(state, recorded, leading);
        if (std::fabs(change.percent) > 100.0 * steadyShare) {
            return {near, {}, {{}, change, false}, state.channels};
        }
    }
    return state;
}

double frequencyIn(const SteadyPart& part, const GridState& state, const Measurement& recorded) {
    return leadingFrequencyIn(part, recorded, leadingChannels(state.channels), state.frequencyHz);
}

}  // namespace rt305
