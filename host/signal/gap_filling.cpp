#include "signal/gap_filling.h"

#include <algorithm>
#include <cmath>

#include "signal/linear_prediction.h"

namespace rt305 {

namespace {

constexpr std::size_t mostContext = 1024;  // samples on one side of a gap
constexpr std::size_t leastContext = 16;

/// A run of NaN.
struct Gap {
    std::size_t begin;
    std::size_t end;

    std::size_t length() const { return end - begin; }
};

std::vector<Gap> gapsIn(const std::vector<double>& x) {
    std::vector<Gap> gaps;
    for (std::size_t k = 0; k < x.size(); ++k) {
        if (std::isnan(x[k])) {
            const std::size_t begin = k;
            while (k < x.size() && std::isnan(x[k])) {
                ++k;
            }
            gaps.push_back({begin, k});
        }
    }
    return gaps;
}

/// Puts a straight line into the gap, or the only neighbour; nothing when there is none.
void bridge(std::vector<double>& x, Gap gap) {
    if (gap.length() == x.size()) {
        return;
    }
    const double after = gap.end < x.size() ? x[gap.end] : x[gap.begin - 1];
    const double before = gap.begin > 0 ? x[gap.begin - 1] : after;
    for (std::size_t k = gap.begin; k < gap.end; ++k) {
        const double share = static_cast<double>(k - gap.begin + 1) / static_cast<double>(gap.length() + 1);
        x[k] = before + share * (after - before);
    }
}

/// The samples before the gap or, in reverse, those behind it: at most `most`, up to the next NaN.
std::vector<double> contextOf(const std::vector<double>& x, Gap gap, bool behind, std::size_t most) {
    const std::size_t left = behind ? x.size() - gap.end : gap.begin;
    const auto at = [&](std::size_t i) { return behind ? x[gap.end + i] : x[gap.begin - 1 - i]; };
    std::vector<double> context;
    while (context.size() < std::min(left, most) && !std::isnan(at(context.size()))) {
        context.push_back(at(context.size()));
    }
    std::reverse(context.begin(), context.end());
    return context;
}

void fill(std::vector<double>& x, Gap gap, std::size_t most) {
    const auto before = contextOf(x, gap, false, most);
    const auto behind = contextOf(x, gap, true, most);
    const bool hasBefore = before.size() >= leastContext;
    const bool hasBehind = behind.size() >= leastContext;
    if (!hasBefore && !hasBehind) {
        bridge(x, gap);
        return;
    }
    const std::size_t n = gap.length();
    const auto forward = predicted(hasBefore ? before : behind, n);
    const auto backward = predicted(hasBehind ? behind : before, n);
    for (std::size_t i = 0; i < n; ++i) {
        const double share = static_cast<double>(i + 1) / static_cast<double>(n + 1);
        const double weight = !hasBehind ? 0.0 : !hasBefore ? 1.0 : share;
        x[gap.begin + i] = (1.0 - weight) * forward[i] + weight * backward[n - 1 - i];
    }
}

}  // namespace

std::size_t fillGaps(std::vector<double>& x, std::size_t longest) {
    const std::vector<Gap> gaps = gapsIn(x);
    const std::size_t most = std::min(mostContext, x.size() / std::max<std::size_t>(1, gaps.size()));
    std::size_t filled = 0;
    for (const Gap& gap : gaps) {
        if (gap.length() <= longest && gap.length() < x.size()) {
            fill(x, gap, most);
            filled += gap.length();
        }
    }
    return filled;
}

std::vector<double> bridged(std::vector<double> x) {
    for (const Gap& gap : gapsIn(x)) {
        bridge(x, gap);
    }
    return x;
}

}  // namespace rt305
