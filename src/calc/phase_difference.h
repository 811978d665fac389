#ifndef RT305_4_CALC_PHASE_DIFFERENCE_H
#define RT305_4_CALC_PHASE_DIFFERENCE_H

#include <vector>

#include "toolkit/array.h"
#include "toolkit/fft.h"
#include "toolkit/reductions.h"

namespace calc_modul_K9_web_ns {

/// Phase angle of the dominant line of signals of one length. Made once, it serves any number of them.
class DominantPhase {
public:
    explicit DominantPhase(int n);

    int length() const { return window_.numel(); }

    /// Angle in radians, in [-pi, pi], of the largest line in the spectrum of x[n] under a periodic Hann window, after
    /// removal of the mean. Only the lower half of the spectrum is searched: there the angle is that of the
    /// positive-frequency component, whatever rounding does to the mirror line. The first of equal lines counts.
    /// NaN if x is empty or holds NaN.
    double of(coder::samples x) const;

private:
    coder::RealFft transform_;
    coder::column window_;
};

/// Phase of y's dominant line minus that of x's in radians, not wrapped: in (-2 pi, 2 pi).
double phdiffmeasure(coder::samples x, coder::samples y);

/// The same for several pairs: signals of the shared length need no preparation of their own.
double phdiffmeasure(coder::samples x, coder::samples y, const DominantPhase& shared);

}  // namespace calc_modul_K9_web_ns

#endif
