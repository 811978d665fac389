#include "measuring/nominal_frequency.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "signal/harmonic_fit.h"

namespace rt305 {

namespace {

constexpr double standardFrequencies[] = {50.0 / 3.0, 25.0, 50.0, 60.0, 400.0};
constexpr double nearby = 0.1;

constexpr double lowestHz = 10.0;

double highestHz(double rateHz) {
    return std::min(1100.0, rateHz / 3.0);
}

using Estimate = double(const LineSearch& search, std::span<const double> samples, double rateHz);

double fundamentalBy(const LineSearch& search, std::span<const double> samples, double rateHz) {
    const auto fit = findFundamental(search, samples, rateHz, lowestHz, highestHz(rateHz));
    return fit ? fit->frequencyHz : 0.0;
}

double strongestLineBy(const LineSearch& search, std::span<const double> samples, double rateHz) {
    constexpr double fewestCycles = 2.0;
    const double line = search.strongestLine(samples, rateHz, lowestHz, highestHz(rateHz)).value_or(0.0);
    return line * static_cast<double>(samples.size()) >= fewestCycles * rateHz ? line : 0.0;
}

/// A search in signals as long as the longest; the others are empty.
LineSearch searchIn(const ChannelSpans& samples) {
    std::size_t longest = 0;
    for (const auto& each : samples) {
        longest = std::max(longest, each.size());
    }
    return LineSearch(longest);
}

}  // namespace

double fundamentalOf(std::span<const double> samples, double rateHz) {
    return fundamentalBy(LineSearch(samples.size()), samples, rateHz);
}

PerChannel<double> fundamentalsOf(const ChannelSpans& samples, double rateHz) {
    const LineSearch search = searchIn(samples);
    PerChannel<double> frequencies{};
    std::transform(samples.begin(), samples.end(), frequencies.begin(),
                   [&](std::span<const double> each) { return fundamentalBy(search, each, rateHz); });
    return frequencies;
}

double commonFundamental(const ChannelSpans& samples, double rateHz) {
    const LineSearch search = searchIn(samples);
    for (Estimate* const estimate : {fundamentalBy, strongestLineBy}) {
        for (const std::size_t first : {std::size_t{0}, phaseTotal}) {
            std::vector<double> found;
            for (std::size_t channel = first; channel < first + phaseTotal; ++channel) {
                if (const double frequency = estimate(search, samples[channel], rateHz); frequency > 0.0) {
                    found.push_back(frequency);
                }
            }
            if (!found.empty()) {
                std::sort(found.begin(), found.end());
                return found[found.size() / 2];
            }
        }
    }
    return 0.0;
}

double nominalFrequencyFor(double fundamentalHz) {
    if (!(fundamentalHz > 0.0)) {
        return 50.0;
    }
    const auto distance = [fundamentalHz](double nominal) { return std::fabs(fundamentalHz / nominal - 1.0); };
    const double nearest = *std::min_element(std::begin(standardFrequencies), std::end(standardFrequencies),
                                             [&](double one, double other) { return distance(one) < distance(other); });
    return distance(nearest) <= nearby ? nearest : fundamentalHz;
}

}  // namespace rt305
