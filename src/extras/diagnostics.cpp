#include "extras/diagnostics.h"

#include <algorithm>

#include "toolkit/scalar.h"

namespace calc_modul_K9_web_ns {
namespace {

double countDropouts(coder::samples x) {
    constexpr int window = 32;
    int zerosInARow = 0;
    double count = 0.0;
    for (std::size_t i = 1; i < x.size(); ++i) {
        zerosInARow = x[i] == 0.0 ? zerosInARow + 1 : 0;
        count += zerosInARow >= window ? 1.0 : 0.0;
    }
    return count;
}

}  // namespace

ConditioningDiagnostics diagnose(const RawChannelSet& raw, double N) {
    ConditioningDiagnostics found;
    const auto examined = static_cast<std::size_t>(std::max(coder::truncatedToInt(N), 0));
    for (std::size_t phase = 0; phase < coder::phases; ++phase) {
        const coder::samples x = raw[phase].samples;
        const coder::samples first = x.first(std::min(x.size(), examined));
        found.zeroCount[phase] = static_cast<double>(std::count(first.begin(), first.end(), 0.0));
        found.dropoutCount[phase] = countDropouts(x);
    }
    return found;
}

}  // namespace calc_modul_K9_web_ns
