#ifndef RT305_4_TESTS_CALC_PLAIN_SEARCH_H
#define RT305_4_TESTS_CALC_PLAIN_SEARCH_H

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

namespace plain {

struct Line {
    double frequency;  // Hz
    std::complex<double> sum;
};

/// The frequency search in doubles: every slot of the grid by a sum from left to right, then one scan. A single sample,
/// or a single time, pairs with all of the other; 50.4 Hz is never evaluated.
template <class Larger>
Line searchedLine(const std::vector<double>& x, double N, bool control, Larger isLarger) {
    const auto times = static_cast<std::size_t>(std::fmax(N, 0.0));
    const bool oneTime = times == 1 || std::isnan(N);
    const std::size_t pairs = oneTime ? x.size() : x.size() == 1 ? times : std::min(x.size(), times);
    Line best{control ? 10.0 : 49.6, {NAN, NAN}};
    for (int k = 0; k < (control ? 501 : 9); ++k) {
        Line line{(control ? 10.0 : 49.6) + 0.1 * k, 0.0};
        for (std::size_t i = 0; i < pairs && (control || k < 8); ++i) {
            const double time = std::isnan(N) ? N : oneTime ? 1.0 : static_cast<double>(i + 1);
            const double phase = time * line.frequency * 6.283185307179586 * 0.0001;
            const double sample = x[x.size() == 1 ? 0 : i];
            line.sum += std::complex<double>(sample * std::cos(phase), -(sample * std::sin(phase)));
        }
        const bool valid = !std::isnan(line.sum.real()) && !std::isnan(line.sum.imag());
        if (valid && (std::isnan(best.sum.real()) || isLarger(line.sum, best.sum))) {
            best = line;
        }
    }
    return best;
}

}  // namespace plain

#endif
