#include "calc/channel_sums.h"

#include <algorithm>

namespace calc_modul_K9_web_ns {
namespace {

double sample(double a) {
    return a;
}

double square(double a) {
    return a * a;
}

double squareOfDifference(double a, double b) {
    return square(a - b);
}

double squareOfSum(double a, double b, double c) {
    return square(a + b + c);
}

/// Sum over i of valueOf(rows[i]...).
template <class Value, class... Rows>
double expandedSum(Value valueOf, const Rows&... rows) {
    int n = 1;
    ((n = coder::expandedLength(n, rows.numel())), ...);
    return coder::blockedSum<1>(static_cast<std::size_t>(n),
                                [&, ... x = coder::Expanded(rows)](std::size_t i) { return valueOf(x[i]...); });
}

/// The sum over a combination of phases, given its value for one sample of each.
template <auto valueOf, std::size_t... phase>
struct Sum {
    static double term(const std::array<const double*, coder::phases>& x, std::size_t i) {
        return valueOf(x[phase][i]...);
    }
    static double alone(const ChannelSet& set) { return expandedSum(valueOf, set[phase]...); }
};

/// Several of them: side by side when all phases have the same length.
template <class... Sums>
std::array<double, sizeof...(Sums)> sumsOf(const ConditionedSet& set) {
    if (!set.haveOneLength()) {
        const ChannelSet rows = set.rows();
        return {Sums::alone(rows)...};
    }
    return set
        .blockedSum<std::max<std::size_t>(2 * sizeof...(Sums), 12)>(
            [](const auto& x, std::size_t i) { return coder::SideBySide<sizeof...(Sums)>{{Sums::term(x, i)...}}; })
        .sums;
}

ChannelSums sumsOfVoltages(const ConditionedSet& set) {
    const auto [a, b, c, aa, bb, cc, ab, bc, ca, abc] =
        sumsOf<Sum<sample, 0>, Sum<sample, 1>, Sum<sample, 2>, Sum<square, 0>, Sum<square, 1>, Sum<square, 2>,
               Sum<squareOfDifference, 0, 1>, Sum<squareOfDifference, 1, 2>, Sum<squareOfDifference, 2, 0>,
               Sum<squareOfSum, 0, 1, 2>>(set);
    return {{a, b, c}, {aa, bb, cc}, {ab, bc, ca}, abc};
}

ChannelSums sumsOfCurrents(const ConditionedSet& set) {
    const auto [a, b, c, aa, bb, cc] =
        sumsOf<Sum<sample, 0>, Sum<sample, 1>, Sum<sample, 2>, Sum<square, 0>, Sum<square, 1>, Sum<square, 2>>(set);
    return {{a, b, c}, {aa, bb, cc}};
}

}  // namespace

SumsOfBoth::SumsOfBoth(const ConditionedSet& u, const ConditionedSet& i)
    : voltages(sumsOfVoltages(u)), currents(sumsOfCurrents(i)) {}

PerPhase sumsOfSamples(const ConditionedSet& set) {
    return sumsOf<Sum<sample, 0>, Sum<sample, 1>, Sum<sample, 2>>(set);
}

}  // namespace calc_modul_K9_web_ns
