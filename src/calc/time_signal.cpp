#include "calc/time_signal.h"

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "toolkit/extremes.h"
#include "toolkit/sums.h"

namespace calc_modul_K9_web_ns {
namespace {

using coder::samples;

std::array<double, coder::table::rows> statisticsOf(samples x) {
    const auto n = static_cast<double>(x.size());
    const double mean = coder::combineVectorElements(x) / n;
    const double squares = coder::blockedSum(x.size(), [p = x.data()](std::size_t i) { return p[i] * p[i]; });
    const double rms = std::sqrt(squares / n);
    if (x.empty()) {
        return {mean, rms, rtNaN, rtNaN};
    }
    double largest = 0.0;
    double smallest = 0.0;
    int index = 0;
    coder::maximum(x, &largest, &index);
    coder::minimum(x, &smallest, &index);
    const double peak = std::fmax(std::fabs(largest), std::fabs(smallest));
    return {mean, rms, peak / rms, largest - smallest};
}

}  // namespace

void measureTimeSignals(const ConditionedSet& set, const ChannelKind& kind, coder::b_table& record) {
    record.prefill(kind);
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        std::vector<double> signal(set.length(phase));
        set.write(phase, signal.data());
        record.variables.statistics[phase].values = statisticsOf(signal);
        record.variables.signals[phase] = std::make_shared<const std::vector<double>>(std::move(signal));
    }
}

}  // namespace calc_modul_K9_web_ns
