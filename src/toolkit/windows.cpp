#include "toolkit/windows.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>

#include "toolkit/bessel.h"
#include "toolkit/polynomial.h"
#include "toolkit/scalar.h"
#include "toolkit/simd.h"

namespace coder {
namespace {

/// Sets the size of w to the rounded length and returns it. A window of one point is then complete.
int prepare(double length, column& w) {
    const int n = std::max(truncatedToInt(std::round(length)), 0);
    w.set_size(n);
    if (n == 1) {
        w[0] = 1.0;
    }
    return n;
}

/// Copies the first half of w, reversed, over the second.
void mirror(double* w, int n) {
    std::reverse_copy(w, w + n / 2, w + (n + 1) / 2);
}

/// (1 - cos(pi sqrt(y))) / (2 y) for y <= 1/4 by its power series; the terms left out are below 1e-18 of the sum.
constexpr auto raisedCosineSeries = [] {
    std::array<long double, 12> c{piL * piL / 4.0L};
    for (std::size_t i = 1; i < c.size(); ++i) {
        c[i] = -c[i - 1] * piL * piL / static_cast<long double>((2 * i + 1) * (2 * i + 2));
    }
    return rounded(c);
}();

/// w[k] = (1 - cos(2 pi (first + k) / period)) / 2 for k < (n + 1) / 2; exact at a quarter, a third and a half of the
/// period. The argument of the series is the squared distance to 0 or to half the period, whichever is nearer.
ALWAYS_INLINE inline void raisedCosineHalf(double* w, int n, int first, double period) {
    const double square = period * period;
    for (int i = 0; i < (n + 1) / 2; ++i) {
        const double fromEdge = 2.0 * (first + i);
        const double fromMiddle = period - fromEdge;
        const bool rises = fromEdge < fromMiddle;
        const double distance = rises ? fromEdge : fromMiddle;
        const double y = distance * distance / square;
        const double value = y * polynomial(raisedCosineSeries, y);
        w[i] = rises ? value : 1.0 - value;
    }
}

/// The raised cosine for k < n, symmetric about the middle of w.
void raisedCosine(double* w, int n, int first, double period) {
    assert(n >= 1 && 2 * first + n - 1 == period);
    vectorized<raisedCosineHalf>(w, n, first, period);
    mirror(w, n);
}

struct KaiserShape {
    double beta;
    double i0OfBeta;
};

/// The squares of the arguments beta sqrt(1 - r^2) of I0, r = (last - 2 (first + k)) / last, as square[k] +
/// squareLow[k]. v = beta r is split into vHigh + vLow: the square of vHigh and its product with last are exact, so
/// vLow has full precision.
ALWAYS_INLINE inline void kaiserArguments(double beta, double last, int first, int count, double* square,
                                          double* squareLow) {
    const double betaSquare = beta * beta;
    const double perLast = 1.0 / last;
    for (int k = 0; k < count; ++k) {
        const double scaled = beta * (last - 2.0 * (first + k));
        const double vHigh = head(scaled * perLast);
        const double vLow = (scaled - vHigh * last) * perLast;
        const double difference = betaSquare - vHigh * vHigh;
        const double remainder = (betaSquare - difference) - vHigh * vHigh - vLow * (2.0 * vHigh + vLow);
        square[k] = difference + remainder;
        squareLow[k] = (difference - square[k]) + remainder;
    }
}

void kaiserWindow(double length, const KaiserShape& shape, column& w) {
    const int n = prepare(length, w);
    if (n < 2) {
        return;
    }
    constexpr int atOnce = 256;
    const int half = n / 2;
    double square[atOnce];
    double squareLow[atOnce];
    for (int done = 0; done < half; done += atOnce) {
        const int some = std::min(atOnce, half - done);
        vectorized<kaiserArguments>(shape.beta, n - 1.0, done, some, &square[0], &squareLow[0]);
        const auto count = static_cast<std::size_t>(some);
        besseliOfSquare({square, count}, {squareLow, count}, w.data() + done);
    }
    std::for_each_n(w.begin(), half, [&](double& value) { value /= shape.i0OfBeta; });
    w[half] = 1.0;
    mirror(w.data(), n);
}

}  // namespace

void hanning(double n, column& w) {
    const int length = prepare(n, w);
    if (length > 1) {
        raisedCosine(w.data(), length, 1, length + 1.0);
    }
}

void b_hanning(double n, column& w) {
    const int length = prepare(n, w);
    if (length > 1) {
        w[0] = 0.0;
        raisedCosine(w.data() + 1, length - 1, 1, length);
    }
}

void hamming(double n, column& w) {
    const int length = prepare(n, w);
    if (length > 1) {
        raisedCosine(w.data(), length, 0, length - 1.0);
        for (double& value : w) {
            value = 0.08 + 0.92 * value;
        }
    }
}

void kaiser(double n, column& w) {
    kaiserWindow(n, {0.5, 1.0634833707413236}, w);
}

void b_kaiser(double n, column& w) {
    kaiserWindow(n, {38.0, 2068504714851045.0}, w);
}

}  // namespace coder
