#ifndef RT305_4_BENCH_REFERENCE_TRANSFORM_H
#define RT305_4_BENCH_REFERENCE_TRANSFORM_H

#include <fftw3.h>

#include <complex>
#include <vector>

/// The unit T of whole calls: the time of FFTW's real transform of 10,000 points with an estimated plan.
class ReferenceTransform {
public:
    ReferenceTransform()
        : plan_(fftw_plan_dft_r2c_1d(n, x_.data(), reinterpret_cast<fftw_complex*>(half_.data()),
                                     FFTW_ESTIMATE | FFTW_PRESERVE_INPUT)) {}
    ~ReferenceTransform() { fftw_destroy_plan(plan_); }
    ReferenceTransform(const ReferenceTransform&) = delete;
    ReferenceTransform& operator=(const ReferenceTransform&) = delete;

    void operator()() const { fftw_execute(plan_); }

private:
    static constexpr int n = 10000;
    std::vector<double> x_ = std::vector<double>(n, 1.0);
    std::vector<std::complex<double>> half_ = std::vector<std::complex<double>>(n / 2 + 1);
    fftw_plan plan_;
};

#endif
