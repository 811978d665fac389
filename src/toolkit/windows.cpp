#include "toolkit/windows.h"

#include <cmath>
#include <vector>

#include "toolkit/scalar.h"
#include "toolkit/special_functions.h"

namespace coder {
namespace {

/// Sets w to the rounded length and returns it. The window of one point is complete with that.
int prepare(double length, column& w) {
    const int n = std::max(truncatedToInt(std::round(length)), 0);
    w.set_size(n);
    if (n == 1) {
        w[0] = 1.0;
    }
    return n;
}

/// Writes the first half of w, the middle included, over the second.
void mirror(double* w, int n) {
    std::reverse_copy(w, w + n / 2, w + (n + 1) / 2);
}

/// w[k] = (1 - cos(2 pi (first + k) / period)) / 2 for k < n, symmetric about the middle of w. As sin^2 near 0, where
/// 1 - cos would cancel; exact at a quarter, a third and a half of the period. The angles are rounded once.
void raisedCosine(double* w, int n, int first, double period) {
    const long double step = piL / static_cast<long double>(period);
    for (int i = 0; i < (n + 1) / 2; ++i) {
        const double k = first + i;
        if (4.0 * k < period) {
            const double sine = std::sin(static_cast<double>(step * static_cast<long double>(k)));
            w[i] = sine * sine;
        } else {
            w[i] = 0.5 + 0.5 * std::sin(static_cast<double>(step * static_cast<long double>(2.0 * k - 0.5 * period)));
        }
    }
    mirror(w, n);
}

struct KaiserShape {
    double beta;
    double i0OfBeta;
};

/// The argument of I0 is beta sqrt(1 - r^2) with r = (n - 1 - 2k) / (n - 1); its square goes to I0 in two parts. Of
/// v = beta r, vHigh has an exact square and an exact product with n - 1, so that vLow is v - vHigh to full precision.
void kaiserWindow(double length, const KaiserShape& shape, column& w) {
    const int n = prepare(length, w);
    if (n < 2) {
        return;
    }
    const std::size_t half = static_cast<std::size_t>(n / 2);
    const double last = n - 1.0;
    const double betaSquare = shape.beta * shape.beta;
    std::vector<double> square(half);
    std::vector<double> squareLow(half);
    for (std::size_t k = 0; k < half; ++k) {
        const double scaled = shape.beta * (last - 2.0 * static_cast<double>(k));
        const double vHigh = head(scaled / last);
        const double vLow = (scaled - vHigh * last) / last;
        const double difference = betaSquare - vHigh * vHigh;
        const double remainder = (betaSquare - difference) - vHigh * vHigh - vLow * (2.0 * vHigh + vLow);
        square[k] = difference + remainder;
        squareLow[k] = (difference - square[k]) + remainder;
    }
    besseliOfSquare(square, squareLow, w.data());
    for (std::size_t k = 0; k < half; ++k) {
        w.data()[k] /= shape.i0OfBeta;
    }
    w[n / 2] = 1.0;
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
