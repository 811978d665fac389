#ifndef RT305_4_CALC_FREQUENCY_H
#define RT305_4_CALC_FREQUENCY_H

#include <string_view>
#include <vector>

#include "toolkit/gridded_dft.h"
#include "toolkit/reductions.h"

namespace calc_modul_K9_web_ns {

/// A grid of candidate frequencies in steps of 0.1 Hz, of which only the first ones are evaluated.
struct SearchRange {
    explicit SearchRange(std::string_view option);

    double lowest;  // Hz
    int slots;
    int evaluated;
};

/// Search for the fundamental of conditioned signals: the frequency of the grid f_k = fmin + 0.1 k Hz with the largest
/// Fourier sum S_k = sum over i of x[i] e^(-j t_i f_k 2 pi 0.0001), t_i = 1, 2, ..., N, for samples 0.0001 s apart.
/// "frequency_control" searches 10 ... 60 Hz; any other option 49.6 ... 50.3 Hz, on a grid whose last slot (50.4 Hz)
/// is never evaluated and stays 0. Slots that are NaN are skipped; of equal ones the larger phase angle, then the first
/// wins. A signal of zeros gives fmin and amplitude 0.
/// Made once per call, the search serves all its channels.
class FrequencySearch {
public:
    /// N: sample count that pairs times with samples; NaN pairs every sample with a time that is NaN.
    FrequencySearch(double N, std::string_view option) : FrequencySearch(N, SearchRange(option)) {}

    /// Hz
    double frequency(coder::samples x) const { return search(x, false).frequency; }

    struct Fundamental {
        double frequency;  // Hz
        double amplitude;  // 2 |S| / N, in the unit of x
    };
    Fundamental fundamental(coder::samples x) const { return search(x, true); }

private:
    FrequencySearch(double N, const SearchRange& range);

    Fundamental search(coder::samples x, bool withAmplitude) const;
    std::vector<int> shortlist(coder::samples x, double total) const;
    double gridFrequency(int slot) const { return range_.lowest + 0.1 * slot; }

    double N_;
    SearchRange range_;
    coder::GriddedDft grid_;
};

/// The search for one signal alone. amplitude may be null when it is not wanted.
void cal_fin_u(coder::samples x, double N, std::string_view option, double* frequency, double* amplitude);

}  // namespace calc_modul_K9_web_ns

#endif
