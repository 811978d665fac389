#ifndef RT305_4_TESTS_TOOLKIT_LONG_DOUBLE_FFT_H
#define RT305_4_TESTS_TOOLKIT_LONG_DOUBLE_FFT_H

#include <fftw3.h>

#include <algorithm>
#include <cassert>
#include <complex>
#include <vector>

/// Half spectra of real rows, padded with zeros to one length, by the long double build of FFTW. Tests that use it
/// REQUIRE_EXTENDED_PRECISION.
class LongDoubleFft {
public:
    explicit LongDoubleFft(std::size_t length)
        : in_(length),
          bins_(length / 2 + 1),
          plan_(fftwl_plan_dft_r2c_1d(static_cast<int>(length), in_.data(),
                                      reinterpret_cast<fftwl_complex*>(bins_.data()), FFTW_ESTIMATE)) {}
    LongDoubleFft(const LongDoubleFft&) = delete;
    LongDoubleFft& operator=(const LongDoubleFft&) = delete;
    ~LongDoubleFft() { fftwl_destroy_plan(plan_); }

    template <class Row>
    const std::vector<std::complex<long double>>& transform(const Row& x) {
        assert(x.size() <= in_.size());
        std::fill(std::copy(x.begin(), x.end(), in_.begin()), in_.end(), 0.0L);
        fftwl_execute(plan_);
        return bins_;
    }

private:
    std::vector<long double> in_;
    std::vector<std::complex<long double>> bins_;
    fftwl_plan plan_;
};

#endif
