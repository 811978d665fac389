#include "toolkit/scalar.h"

#include <algorithm>

#include "toolkit/non_finite.h"

namespace coder {

double rt_atan2d_snf(double y, double x) {
    if (std::isnan(y) || std::isnan(x)) {
        return rtNaN;
    }
    if (x == 0.0) {
        return y == 0.0 ? 0.0 : std::copysign(pi / 2.0, y);
    }
    return std::atan2(y, x);
}

double rt_powd_snf(double e) {
    if (std::isnan(e)) {
        return rtNaN;
    }
    if (e == -1.0) {
        return 0.1;
    }
    if (e == 0.5) {
        return 3.1622776601683795;
    }
    return std::pow(10.0, e);
}

int truncatedToInt(double x) {
    if (std::isnan(x)) {
        return 0;
    }
    return static_cast<int>(std::clamp(x, -2147483648.0, 2147483647.0));
}

bool isLarger(creal_T a, creal_T b) {
    constexpr double halfRange = 8.988465674311579e+307;
    const auto nearOverflow = [](creal_T z) { return std::fabs(z.re) > halfRange || std::fabs(z.im) > halfRange; };
    const double scale = nearOverflow(a) || nearOverflow(b) ? 0.5 : 1.0;
    const double magnitudeA = rt_hypotd_snf(a.re * scale, a.im * scale);
    const double magnitudeB = rt_hypotd_snf(b.re * scale, b.im * scale);
    if (magnitudeA != magnitudeB) {
        return magnitudeA > magnitudeB;
    }
    return rt_atan2d_snf(a.im, a.re) > rt_atan2d_snf(b.im, b.re);
}

}  // namespace coder
