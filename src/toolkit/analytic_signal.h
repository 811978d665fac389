#ifndef RT305_4_TOOLKIT_ANALYTIC_SIGNAL_H
#define RT305_4_TOOLKIT_ANALYTIC_SIGNAL_H

#include "toolkit/fft.h"

namespace coder {

/// sum over k of A[k] conj(B[k]) for the analytic signals A, B of rows a[n], b[n], with singleton expansion; 0 when
/// empty. By Parseval's theorem the sum is taken over the spectra, where bins strictly between DC and half the rate
/// count four times; the analytic signals themselves are not computed. Rows of the length of `shared` use it, others
/// make a plan of their own.
creal_T analyticProductSum(samples a, samples b, const RealFft& shared);

/// The same sum, given the half spectra of both rows of n samples.
creal_T analyticProductSum(const creal_T* A, const creal_T* B, int n);

}  // namespace coder

#endif
