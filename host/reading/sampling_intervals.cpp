#include "reading/sampling_intervals.h"

#include <algorithm>
#include <cmath>

namespace rt305 {

namespace {

constexpr double largestDeviation = 0.5;  // from the usual step, relative to it
constexpr std::size_t stepsPerGap = 20;   // at least; where gaps are more frequent, the stamps are unreliable

double medianOf(const std::vector<double>& steps) {
    const auto isOther = [&steps](double step) { return !(step == steps[0]); };
    if (!steps.empty() && std::none_of(steps.begin(), steps.end(), isOther)) {
        return steps[0];
    }
    std::vector<double> known;
    std::copy_if(steps.begin(), steps.end(), std::back_inserter(known), [](double step) { return !std::isnan(step); });
    if (known.empty()) {
        return 0.0;
    }
    const auto middle = known.begin() + static_cast<std::ptrdiff_t>(known.size() / 2);
    std::nth_element(known.begin(), middle, known.end());
    return *middle;
}

}  // namespace

SamplingIntervals samplingIntervalsOf(const std::vector<double>& steps) {
    SamplingIntervals intervals;
    intervals.usualStep = medianOf(steps);
    const double usual = intervals.usualStep;
    intervals.even = usual > 0.0;
    const auto excess = [&](std::size_t k) {
        return k < steps.size() && !std::isnan(steps[k]) ? steps[k] - usual : 0.0;
    };
    const auto isOff = [&](double x) { return std::fabs(x) > largestDeviation * usual; };
    for (std::size_t k = 0; intervals.even && k < steps.size(); ++k) {
        const double off = excess(k);
        const double before = k == 0 ? 0.0 : excess(k - 1);
        if (isOff(off) && isOff(off + before) && isOff(off + excess(k + 1))) {
            intervals.gaps.push_back(k + 1);
        }
    }
    if (intervals.gaps.size() > std::max<std::size_t>(1, steps.size() / stepsPerGap)) {
        intervals.even = false;
        intervals.gaps.clear();
    }
    return intervals;
}

}  // namespace rt305
