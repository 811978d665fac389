#ifndef RT305_4_TOOLKIT_FFT_H
#define RT305_4_TOOLKIT_FFT_H

#include <memory>

#include "toolkit/array.h"

namespace coder {

/// Discrete Fourier transform of real signals of one length n >= 1. One plan transforms any number of signals, one at a
/// time: it owns its working memory, so threads must not share it. Plans are cheap and share nothing.
/// RMS error relative to the RMS of the spectrum, u = 2^-53: below 1.5 u sqrt(log2 n) for lengths whose prime factors
/// are at most 13, below 3 u sqrt(log2 n) for the others, which take four to ten times as long.
/// Throws std::bad_array_new_length, before anything is allocated, when a working array would exceed 2^31 - 1 elements.
class RealFft {
public:
    explicit RealFft(int n);
    RealFft(RealFft&&) noexcept;
    RealFft& operator=(RealFft&&) noexcept;
    ~RealFft();

    int size() const { return n_; }
    int bins() const { return n_ / 2 + 1; }

    /// x -> half[n/2+1], half[k] = sum x[m] e^(-2 pi i k m / n), unscaled; the bins above n/2 are the conjugates of
    /// those below. A shorter x is padded with zeros; of a longer x the first n samples are used. NaN spreads.
    /// half must not overlap x.
    void forward(samples x, creal_T* half) const;

    /// Memory of the plan for n + 2 numbers, undefined until they are written. It does not overlap the spectrum of the
    /// last transform, if that is given.
    double* workspace(const creal_T* spectrum = nullptr) const;

    /// The transform of the n samples in workspace(), which it overwrites: half[n/2+1], in the plan's memory as well,
    /// valid until the next transform.
    const creal_T* forward() const;

private:
    struct Plan;

    int n_;
    std::unique_ptr<Plan> plan_;
};

}  // namespace coder

#endif
