#include "toolkit/analytic_signal.h"

#include <vector>

namespace coder {

void hilbert(samples x, complex_row& y) {
    if (x.empty()) {
        y.set_size(1, 0);
        return;
    }
    hilbert(x, RealFft(static_cast<int>(x.size())), y);
}

void hilbert(samples x, const RealFft& fft, complex_row& y) {
    assert(x.size() == static_cast<std::size_t>(fft.size()));
    std::vector<creal_T> half(static_cast<std::size_t>(fft.bins()));
    fft.forward(x, half.data());

    // The Hilbert transform turns every line back by a quarter period: a factor -i on the positive frequencies. The
    // real lines at DC and half the rate become imaginary, which the inverse leaves out.
    for (creal_T& line : half) {
        line = {line.im, -line.re};
    }
    std::vector<double> quadrature(x.size());
    fft.inverse(half.data(), quadrature.data());

    y.set_size(1, fft.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        y.data()[i] = {x[i], quadrature[i]};
    }
}

}  // namespace coder
