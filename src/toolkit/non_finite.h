#ifndef RT305_4_TOOLKIT_NON_FINITE_H
#define RT305_4_TOOLKIT_NON_FINITE_H

// The non-finite numbers of the computation, exported by the plug-in under these names. They are constants of the
// image, valid before any code of the library has run.

extern "C" {
#pragma GCC visibility push(default)
extern const double rtInf;
extern const double rtMinusInf;
extern const double rtNaN;
extern const float rtInfF;
extern const float rtMinusInfF;
extern const float rtNaNF;
double rtGetInf();
double rtGetMinusInf();
double rtGetNaN();
float rtGetInfF();
float rtGetMinusInfF();
float rtGetNaNF();
#pragma GCC visibility pop
}

#endif
