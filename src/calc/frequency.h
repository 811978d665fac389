#ifndef RT305_4_CALC_FREQUENCY_H
#define RT305_4_CALC_FREQUENCY_H

#include <string_view>
#include <vector>

#include "toolkit/gridded_dft.h"

namespace calc_modul_K9_web_ns {

/// A grid of candidate frequencies ("slots") in steps of 0.1 Hz. Only the first ones are evaluated.
struct SearchRange {
    explicit SearchRange(std::string_view option);

    double lowest;  // Hz
    int slots;
    int evaluated;
};

/// Search for the fundamental of conditioned signals, sampled every 0.0001 s: the frequency of the grid
/// f_k = fmin + 0.1 k Hz with the largest Fourier sum
///
///     S_k = sum over i of x[i] e^(-j t_i f_k 2 pi 0.0001),   t_i = 1, 2, ..., N.
///
/// "frequency_control" searches 10 ... 60 Hz, any other option 49.6 ... 50.3 Hz; the last slot of the latter grid,
/// 50.4 Hz, is never evaluated and its sum stays 0. Slots that are NaN are skipped; of equal magnitudes the one with
/// the larger phase angle wins, then the first. A signal of zeros gives fmin and amplitude 0. One search serves all
/// channels of a call.
class FrequencySearch {
public:
    /// N: sample count, as which many times are paired with the samples; with NaN every time is NaN.
    FrequencySearch(double N, std::string_view option) : FrequencySearch(N, SearchRange(option)) {}

    /// Hz
    double frequency(coder::samples x) const { return search(x, false).frequency; }

    struct Found {
        double frequency;  // Hz
        double amplitude;  // 2 |S| / N, in the unit of x
    };
    Found fundamental(coder::samples x) const { return search(x, true); }

private:
    FrequencySearch(double N, const SearchRange& range);

    Found search(coder::samples x, bool withAmplitude) const;
    std::vector<int> shortlist(coder::samples x, double total) const;
    double gridFrequency(int slot) const { return range_.lowest + 0.1 * slot; }

    double N_;
    SearchRange range_;
    coder::GriddedDft grid_;
};

}  // namespace calc_modul_K9_web_ns

#endif
