#include "calc/frequency.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "calc/options.h"
#include "toolkit/non_finite.h"
#include "toolkit/scalar.h"

namespace calc_modul_K9_web_ns {
namespace {

using coder::creal_T;
using coder::samples;

constexpr double samplingPeriod = 0.0001;  // s, whatever the acquisition rate

bool isNaN(creal_T z) {
    return std::isnan(z.re) || std::isnan(z.im);
}

/// The times 1, 2, ... N paired with the samples: a single one of either is paired with every one of the other.
struct Pairing {
    Pairing(samples x, double N) : values(x) {
        const int times = std::max(coder::truncatedToInt(N), 0);
        singleTime = times == 1;
        count = static_cast<std::size_t>(coder::expandedLength(static_cast<int>(x.size()), times));
    }
    double time(std::size_t i) const { return singleTime ? 1.0 : static_cast<double>(i) + 1.0; }

    coder::expanded values;
    std::size_t count = 0;
    bool singleTime = false;
};

/// The sum by its definition, left to right.
creal_T plainSum(const Pairing& pairs, double frequency) {
    creal_T sum{0.0, 0.0};
    for (std::size_t i = 0; i < pairs.count; ++i) {
        const double phase = pairs.time(i) * frequency * coder::twoPi * samplingPeriod;
        sum.re += pairs.values[i] * std::cos(phase);
        sum.im -= pairs.values[i] * std::sin(phase);
    }
    return sum;
}

}  // namespace

SearchRange::SearchRange(std::string_view option) {
    const bool control = option == option::frequencyControl;
    lowest = control ? 10.0 : 49.6;
    slots = control ? 501 : 9;
    // The quotient is truncated as it comes out in doubles: 501 for 10 ... 60 Hz, but 8 for 49.6 ... 50.4 Hz.
    const double highest = control ? 60.0 : 50.4;
    evaluated = coder::truncatedToInt(((0.1 - lowest) + highest) / 0.1);
}

/// The grid's frequencies are lines of a period of 10 s.
FrequencySearch::FrequencySearch(double N, const SearchRange& range)
    : N_(N), range_(range), grid_(static_cast<int>(std::lround(range.lowest * 10.0)), range.evaluated) {}

/// Slots among which the largest plain sum is certain to be.
///
/// Let A = sum |x|, u = 2^-53 and S the exact sum. The screened magnitude differs from |S| by at most errorBound(n) A.
/// The plain sum differs from S by at most
///   - 9 u phase <= 9 u 0.0377 n A for its phases: three rounded products, the frequency and the constants;
///   - 3 u A for sine, cosine and the product; n u A for the left-to-right sum; twice that for both parts;
///   - n times the smallest denormal for products that underflow.
/// Magnitudes add a few u A. Hence | |plain| - screened | <= d with d = (errorBound(n) + 4 u n + 1e-14) A + 1e-323 n,
/// and a slot whose screened magnitude is below the largest one's by more than 2 d cannot have the largest plain
/// magnitude, nor tie with it; a slot that is alone on the list is not 0 either. Close to the largest double a sum may
/// overflow: there every slot is on the list.
std::vector<int> FrequencySearch::shortlist(samples x, double total) const {
    std::vector<int> slots(static_cast<std::size_t>(range_.evaluated));
    std::iota(slots.begin(), slots.end(), 0);
    if (!(total <= 1e300) || static_cast<double>(x.size()) != N_) {
        return slots;
    }
    // Far from 1 the squares of magnitudes would leave the range of doubles; a power of two changes nothing else.
    const int exponent = -std::ilogb(total);
    const bool far = std::abs(exponent) > 300;
    std::vector<double> scaled;
    if (far) {
        scaled.assign(x.begin(), x.end());
        std::for_each(scaled.begin(), scaled.end(), [=](double& value) { value = std::ldexp(value, exponent); });
    }
    const double unit = far ? std::ldexp(total, exponent) : total;
    std::vector<double> magnitudes(grid_.lines());
    grid_.magnitudes(far ? samples(scaled) : x, magnitudes.data());
    const auto n = static_cast<double>(x.size());
    const double relative = coder::GriddedDft::errorBound(x.size()) + 4.0 * 1.1102230246251565e-16 * n + 1e-14;
    const double bound = relative * unit + std::ldexp(1e-323 * n, far ? exponent : 0);
    const double threshold = *std::max_element(magnitudes.begin(), magnitudes.end()) - 2.0 * bound;
    std::erase_if(slots, [&](int k) { return magnitudes[static_cast<std::size_t>(k)] < threshold; });
    return slots;
}

FrequencySearch::Fundamental FrequencySearch::search(samples x, bool withAmplitude) const {
    const Pairing pairs(x, N_);
    const double repeated = x.size() == 1 ? static_cast<double>(pairs.count) : 1.0;
    const double total = repeated * coder::blockedSum(std::min(x.size(), pairs.count),
                                                      [p = x.data()](std::size_t i) { return std::fabs(p[i]); });
    if (std::isnan(total) || std::isnan(N_)) {
        // Every evaluated slot is NaN, so the first one that is not evaluated wins.
        return range_.evaluated < range_.slots ? Fundamental{gridFrequency(range_.evaluated), 0.0 / N_}
                                               : Fundamental{range_.lowest, rtNaN};
    }
    if (total == 0.0) {
        return {range_.lowest, 0.0 / N_};
    }
    const std::vector<int> candidates = shortlist(x, total);
    if (candidates.size() == 1 && !withAmplitude) {
        return {gridFrequency(candidates.front()), rtNaN};
    }
    int best = 0;
    creal_T largest{rtNaN, rtNaN};
    const auto consider = [&](int slot, creal_T sum) {
        if (!isNaN(sum) && (isNaN(largest) || coder::isLarger(sum, largest))) {
            best = slot;
            largest = sum;
        }
    };
    for (const int slot : candidates) {
        consider(slot, plainSum(pairs, gridFrequency(slot)));
    }
    for (int slot = range_.evaluated; slot < range_.slots; ++slot) {
        consider(slot, {0.0, 0.0});
    }
    return {gridFrequency(best), 2.0 * coder::rt_hypotd_snf(largest.re, largest.im) / N_};
}

void cal_fin_u(samples x, double N, std::string_view option, double* frequency, double* amplitude) {
    const FrequencySearch search(N, option);
    const FrequencySearch::Fundamental found =
        amplitude != nullptr ? search.fundamental(x) : FrequencySearch::Fundamental{search.frequency(x), 0.0};
    *frequency = found.frequency;
    if (amplitude != nullptr) {
        *amplitude = found.amplitude;
    }
}

}  // namespace calc_modul_K9_web_ns
