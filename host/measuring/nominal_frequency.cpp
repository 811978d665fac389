#include "measuring/nominal_frequency.h"

#include <algorithm>
#include <cmath>

#include "signal/fundamental.h"

namespace rt305 {

namespace {

constexpr double standardFrequencies[] = {50.0 / 3.0, 25.0, 50.0, 60.0, 400.0};
constexpr double nearby = 0.1;

/// The middle one of the fundamentals of three channels; 0 for none.
double medianFundamental(const PerChannel<std::vector<double>>& samples, std::size_t firstChannel, double rateHz) {
    std::vector<double> found;
    for (std::size_t channel = firstChannel; channel < firstChannel + phaseTotal; ++channel) {
        if (const auto fundamental = estimateFundamental(samples[channel], rateHz)) {
            found.push_back(*fundamental);
        }
    }
    std::sort(found.begin(), found.end());
    return found.empty() ? 0.0 : found[found.size() / 2];
}

}  // namespace

double commonFundamental(const PerChannel<std::vector<double>>& samples, double rateHz) {
    const double ofVoltages = medianFundamental(samples, 0, rateHz);
    return ofVoltages > 0.0 ? ofVoltages : medianFundamental(samples, phaseTotal, rateHz);
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
