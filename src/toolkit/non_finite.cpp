#include "toolkit/non_finite.h"

#include <limits>

const double rtInf = std::numeric_limits<double>::infinity();
const double rtMinusInf = -std::numeric_limits<double>::infinity();
const double rtNaN = std::numeric_limits<double>::quiet_NaN();
const float rtInfF = std::numeric_limits<float>::infinity();
const float rtMinusInfF = -std::numeric_limits<float>::infinity();
const float rtNaNF = std::numeric_limits<float>::quiet_NaN();

double rtGetInf() {
    return rtInf;
}
double rtGetMinusInf() {
    return rtMinusInf;
}
double rtGetNaN() {
    return rtNaN;
}
float rtGetInfF() {
    return rtInfF;
}
float rtGetMinusInfF() {
    return rtMinusInfF;
}
float rtGetNaNF() {
    return rtNaNF;
}
