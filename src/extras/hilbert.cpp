#include "extras/hilbert.h"

#include <vector>

#include "extras/fft_arrays.h"

namespace coder {

void hilbert(samples x, complex_row& y) {
    const int n = static_cast<int>(x.size());
    y.set_size(1, n);
    if (n == 0) {
        return;
    }
    const RealFft plan(n);
    std::vector<creal_T> half(static_cast<std::size_t>(plan.bins()));
    plan.forward(x, half.data());

    // The Hilbert transform delays every component by a quarter period: a factor -i at positive frequencies. The real
    // bins at DC and half the rate become imaginary, and the inverse ignores them.
    for (creal_T& bin : half) {
        bin = {bin.im, -bin.re};
    }
    std::vector<double> quadrature(x.size());
    inverse(plan, half.data(), quadrature.data());
    for (std::size_t i = 0; i < x.size(); ++i) {
        y.data()[i] = {x[i], quadrature[i]};
    }
}

}  // namespace coder
