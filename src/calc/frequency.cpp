#include "calc/frequency.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numeric>

#include "calc/frequency_window.h"
#include "toolkit/broadcasting.h"
#include "toolkit/non_finite.h"
#include "toolkit/scalar.h"
#include "toolkit/sums.h"

namespace calc_modul_K9_web_ns {
namespace {

using coder::creal_T;
using coder::samples;

constexpr double samplingPeriod = 0.0001;  // s, whatever the acquisition rate

bool isNaN(creal_T z) {
    return std::isnan(z.re) || std::isnan(z.im);
}

/// The times 1, 2, ... N paired with the samples. A single time or sample is paired with all of the others.
struct Pairing {
    Pairing(samples x, double N) : values(x) {
        const int times = std::max(coder::truncatedToInt(N), 0);
        singleTime = times == 1;
        count = static_cast<std::size_t>(coder::expandedLength(static_cast<int>(x.size()), times));
    }
    double time(std::size_t i) const { return singleTime ? 1.0 : static_cast<double>(i) + 1.0; }

    coder::Expanded values;
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

/// A signal multiplied by a power of two where needed, so that squares of its Fourier sums are in the range of doubles.
/// Powers of two change nothing else.
struct ScaledSignal {
    samples values;
    double total;  // sum of magnitudes
    int exponent;  // of the power of two
};

/// total: the sum of magnitudes of x, greater than 0. The values are x itself or are stored in `storage`.
ScaledSignal scaledToUnit(samples x, double total, std::vector<double>& storage) {
    assert(total > 0.0);
    const int exponent = -std::ilogb(total);
    if (std::abs(exponent) <= 300) {
        return {x, total, 0};
    }
    storage.resize(x.size());
    std::transform(x.begin(), x.end(), storage.begin(), [=](double value) { return std::ldexp(value, exponent); });
    return {storage, std::ldexp(total, exponent), exponent};
}

/// Bound of | |plain| - screened |, where `plain` is the plain sum of a slot and `screened` its magnitude by
/// GriddedDft.
///
/// Let A = sum |x|, u = 2^-53 and S the exact sum. The screened magnitude differs from |S| by at most errorBound(n) A.
/// The plain sum differs from S by at most
///   - 9 u phase <= 9 u 0.0377 n A for its phases: three rounded products, the frequency and the constants;
///   - 3 u A for sine, cosine and the product; n u A for the left-to-right sum; twice that for both parts;
///   - n times the smallest denormal for products that underflow.
/// Magnitudes add a few u A. Together at most (errorBound(n) + 4 u n + 1e-14) A + 1e-323 n; the last term is scaled
/// like the signal.
double screeningBound(const ScaledSignal& x) {
    constexpr double u = 0x1p-53;
    const auto n = static_cast<double>(x.values.size());
    const double relative = coder::GriddedDft::errorBound(x.values.size()) + 4.0 * u * n + 1e-14;
    return relative * x.total + std::ldexp(1e-323 * n, x.exponent);
}

}  // namespace

SearchRange::SearchRange(std::string_view option) {
    const bool control = option == option::frequencyControl;
    const FrequencyWindow window = frequencyWindow(option);
    lowest = window.lowest;
    slots = control ? 501 : 9;
    // The quotient is truncated as it comes out in doubles: 501 for 10 ... 60 Hz, but 8 for 49.6 ... 50.4 Hz.
    evaluated = coder::truncatedToInt(((0.1 - window.lowest) + window.highest) / 0.1);
    assert(evaluated <= slots);
}

/// Frequencies of the grid are multiples of 0.1 Hz: lines of a period of 10 s.
FrequencySearch::FrequencySearch(double N, const SearchRange& range)
    : N_(N), range_(range), grid_(static_cast<int>(std::lround(range.lowest * 10.0)), range.evaluated) {}

/// Slots that certainly include the one with the largest plain sum. A slot whose screened magnitude is below the
/// largest by more than twice screeningBound() can neither win nor tie. If one candidate remains, its sum is nonzero.
/// Close to the largest double a sum may overflow, so every slot is a candidate there.
std::vector<int> FrequencySearch::shortlist(samples x, double total) const {
    std::vector<int> slots(static_cast<std::size_t>(range_.evaluated));
    std::iota(slots.begin(), slots.end(), 0);
    if (!(total <= 1e300) || static_cast<double>(x.size()) != N_) {
        return slots;
    }
    std::vector<double> storage;
    const ScaledSignal scaled = scaledToUnit(x, total, storage);
    std::vector<double> magnitudes(grid_.lines());
    grid_.magnitudes(scaled.values, magnitudes.data());
    assert(magnitudes.size() == slots.size());
    const double threshold = *std::max_element(magnitudes.begin(), magnitudes.end()) - 2.0 * screeningBound(scaled);
    std::erase_if(slots, [&](int k) { return magnitudes[static_cast<std::size_t>(k)] < threshold; });
    return slots;
}

FrequencySearch::Found FrequencySearch::search(samples x, bool withAmplitude) const {
    const Pairing pairs(x, N_);
    const double repeated = x.size() == 1 ? static_cast<double>(pairs.count) : 1.0;
    const double total = repeated * coder::sumOfMagnitudes(x.first(std::min(x.size(), pairs.count)));
    if (std::isnan(total) || std::isnan(N_)) {
        // Every evaluated slot is NaN, so the first slot that is not evaluated wins.
        return range_.evaluated < range_.slots ? Found{gridFrequency(range_.evaluated), 0.0 / N_}
                                               : Found{range_.lowest, rtNaN};
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

}  // namespace calc_modul_K9_web_ns
