#ifndef RT305_4_TOOLKIT_EXTREMES_H
#define RT305_4_TOOLKIT_EXTREMES_H

#include "toolkit/array.h"

namespace coder {

/// Largest (smallest) element of a non-empty vector with its 1-based position. NaN is skipped; of equal elements the
/// first counts; a vector of NaN gives NaN at position 1.
void maximum(samples x, double* value, int* index);
void minimum(samples x, double* value, int* index);

}  // namespace coder

#endif
