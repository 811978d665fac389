#ifndef RT305_4_CALC_PHASE_DIFFERENCE_H
#define RT305_4_CALC_PHASE_DIFFERENCE_H

#include "toolkit/array.h"
#include "toolkit/fft.h"

namespace calc_modul_K9_web_ns {

/// Phase angle of the dominant line of signals of one length. One object measures any number of them, one at a time.
class DominantPhase {
public:
    explicit DominantPhase(int n);

    int length() const { return window_.numel(); }

    /// Angle in radians, in [-pi, pi], of the largest line in the spectrum of x[n] under a periodic Hann window, after
    /// removal of the mean. Only the lower half of the spectrum is searched, so rounding cannot select the mirror line
    /// with the opposite angle. The first of equal lines counts. NaN if x is empty or contains NaN.
    double of(coder::samples x) const;

    /// The same for the n samples in row(), of which the mean is known.
    double ofRow(double mean) const;
    double* row() const { return transform_.workspace(); }

private:
    coder::RealFft transform_;
    coder::column window_;
};

/// Phase of the dominant line of y minus that of x in radians, not wrapped: in (-2 pi, 2 pi).
double phdiffmeasure(coder::samples x, coder::samples y);

}  // namespace calc_modul_K9_web_ns

#endif
