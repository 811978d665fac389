// Times of the real transform, FFTW and KISS FFT. Debian has KISS FFT in single precision only, which makes it faster.

#include <fftw3.h>
#include <kissfft/kiss_fftr.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "ratio_report.h"
#include "toolkit/fft.h"

namespace {

/// One length with the input and output of every contender.
struct Length {
    explicit Length(int length)
        : n(length),
          x(static_cast<std::size_t>(n)),
          single(x.begin(), x.end()),
          half(x.size() / 2 + 1),
          kiss(x.size()),
          plan(n) {
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double t = static_cast<double>(i);
            x[i] = std::sin(0.3 * t) + 0.1 * std::cos(0.001 * t * t);
            single[i] = static_cast<float>(x[i]);
        }
    }

    fftw_plan fftw(unsigned effort) {
        fftw_forget_wisdom();
        const std::vector<double> kept = x;
        fftw_plan made = fftw_plan_dft_r2c_1d(n, x.data(), reinterpret_cast<fftw_complex*>(half.data()),
                                              effort | FFTW_PRESERVE_INPUT);
        x = kept;  // measuring overwrites it
        return made;
    }

    int n;
    std::vector<double> x;
    std::vector<float> single;
    std::vector<coder::creal_T> half;
    std::vector<kiss_fft_cpx> kiss;
    coder::RealFft plan;
};

void addKiss(const std::string& table, const std::shared_ptr<Length>& of) {
    if (of->n % 2 == 0) {
        addContender(table, std::to_string(of->n), "KISS (float)",
                     [of, plan = kiss_fftr_alloc(of->n, 0, nullptr, nullptr)] {
                         kiss_fftr(plan, of->single.data(), of->kiss.data());
                     });
        return;
    }
    std::vector<kiss_fft_cpx> complex(of->x.size());  // its real transform takes only even lengths
    for (std::size_t i = 0; i < complex.size(); ++i) {
        complex[i] = {of->single[i], 0.0F};
    }
    addContender(table, std::to_string(of->n), "KISS (float)",
                 [of, complex, plan = kiss_fft_alloc(of->n, 0, nullptr, nullptr)] {
                     kiss_fft(plan, complex.data(), of->kiss.data());
                 });
}

}  // namespace

int main(int argc, char** argv) {
    const std::string forward = "Forward real transform, ours / peer";
    const std::string planning = "Making a plan, ours / peer";
    for (const int n : {1024, 2000, 4096, 9973, 10000, 16384, 40000, 65536, 160000, 262144, 1000000}) {
        const auto of = std::make_shared<Length>(n);
        const std::string row = std::to_string(n);
        addContender(forward, row, "ours", [of] { of->plan.forward(of->x, of->half.data()); });
        addContender(forward, row, "FFTW estimate", [plan = of->fftw(FFTW_ESTIMATE)] { fftw_execute(plan); });
        addContender(forward, row, "FFTW measure", [plan = of->fftw(FFTW_MEASURE)] { fftw_execute(plan); });
        addKiss(forward, of);
        addContender(planning, row, "ours", [n] { coder::RealFft plan(n); });
        addContender(planning, row, "FFTW estimate", [of] { fftw_destroy_plan(of->fftw(FFTW_ESTIMATE)); });
    }
    addLimit(forward, geometricMean, {1.3, 1.0});
    addLimit(forward, worst, {1.9, 1.9});
    return printRatios(argc, argv);
}
