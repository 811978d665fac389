#ifndef RT305_4_TOOLKIT_RANGES_H
#define RT305_4_TOOLKIT_RANGES_H

#include <limits>
#include <vector>

namespace coder {

/// The row a, a + d, a + 2 d, ... up to b. The end is b itself when the rounded count of steps reaches it to within
/// rounding. The row is filled from both ends, so that it is symmetric; with integer a and d element k is a + k d.
/// NaN in any argument, an infinite step, or ends that are the same infinity give the single value NaN; a step of zero,
/// or one that leads away from b, gives an empty row. Throws std::bad_array_new_length when the count exceeds 32 bits.
/// Only the first `most` >= 1 elements are written.
void eml_float_colon(double a, double d, double b, std::vector<double>& y, int most = std::numeric_limits<int>::max());

}  // namespace coder

#endif
