#include "extras/fft_implementation_callback.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "toolkit/scalar.h"

namespace coder {
namespace {

creal_T minus(creal_T a, creal_T b) {
    return {a.re - b.re, a.im - b.im};
}
creal_T conjugate(creal_T a) {
    return {a.re, -a.im};
}

/// z[length], z[m] = x[2m] + i x[2m+1]; what x lacks is 0.
void packPairs(const column& x, int length, complex_column& z) {
    z.set_size(length);
    for (int m = 0; m < length; ++m) {
        const int at = 2 * m;
        z[m] = {at < x.numel() ? x[at] : 0.0, at + 1 < x.numel() ? x[at + 1] : 0.0};
    }
}

/// Full spectrum y[n] of n real samples from the transform z[n/2] of their pairs; root(k) = e^(-2 pi i k / n).
template <class Root>
void splitPairs(const complex_column& z, complex_column& y, Root root) {
    const int half = z.numel();
    y.set_size(2 * half);
    y[0] = {z[0].re + z[0].im, 0.0};
    y[half] = {z[0].re - z[0].im, 0.0};
    for (int k = 1; k < half; ++k) {
        const creal_T mirror = conjugate(z[half - k]);
        const creal_T even = z[k] + mirror;
        const creal_T odd = minus(z[k], mirror);
        const creal_T turned = times(root(k), {odd.im, -odd.re});
        y[k] = {0.5 * (even.re + turned.re), 0.5 * (even.im + turned.im)};
        y[k + half] = {0.5 * (even.re - turned.re), 0.5 * (even.im - turned.im)};
    }
}

/// The chirp e^(-pi i k^2 / length), k = 0 ... length-1. The phase k^2 mod 2 length is a sum of odd numbers, so the
/// angle stays exact for large k.
complex_column makeChirp(int length) {
    complex_column chirp;
    chirp.set_size(length);
    const std::int64_t turn = 2 * static_cast<std::int64_t>(length);
    std::int64_t phase = 0;
    for (int k = 0; k < length; ++k) {
        const double angle = -pi * static_cast<double>(phase) / length;
        chirp[k] = {std::cos(angle), std::sin(angle)};
        phase = (phase + 2 * static_cast<std::int64_t>(k) + 1) % turn;
    }
    return chirp;
}

/// Transform y[z.numel()] of z as a circular convolution of length `size`, with e^(-2 pi i k m / L) =
/// c[k] c[m] conj(c[k-m]) for the chirp c.
void chirpTransform(const complex_column& z, int size, const row& costab, const row& sintab, const row& sintabinv,
                    complex_column& y) {
    const int length = z.numel();
    const complex_column chirp = makeChirp(length);
    complex_column a;
    complex_column kernel;
    a.set_size(size);
    kernel.set_size(size);
    std::fill(a.begin(), a.end(), creal_T{});
    std::fill(kernel.begin(), kernel.end(), creal_T{});
    for (int k = 0; k < length; ++k) {
        a[k] = times(z[k], chirp[k]);
        kernel[k] = conjugate(chirp[k]);
        kernel[(size - k) & (size - 1)] = conjugate(chirp[k]);
    }
    complex_column spectrum;
    complex_column response;
    FFTImplementationCallback_r2br_r2dit_trig_impl(a, size, costab, sintab, spectrum);
    FFTImplementationCallback_r2br_r2dit_trig_impl(kernel, size, costab, sintab, response);
    for (int k = 0; k < size; ++k) {
        spectrum[k] = times(spectrum[k], response[k]);
    }
    FFTImplementationCallback_r2br_r2dit_trig_impl(spectrum, size, costab, sintabinv, a);
    y.set_size(length);
    const double scale = 1.0 / size;
    for (int k = 0; k < length; ++k) {
        y[k] = times({a[k].re * scale, a[k].im * scale}, chirp[k]);
    }
}

/// cos(2 pi k / n), k = 0 ... n/4, from angles up to pi/4; {1, 0} for n < 4.
row quarterWave(int n) {
    const int last = std::max(n / 4, 1);
    row wave;
    wave.set_size(1, last + 1);
    const double step = twoPi / n;
    for (int k = 1; k < last; ++k) {
        wave[k] = k <= n / 8 ? std::cos(step * k) : std::sin(step * (last - k));
    }
    wave[0] = 1.0;
    wave[last] = 0.0;
    return wave;
}

}  // namespace

void FFTImplementationCallback_get_algo_sizes(int nfft, bool useRadix2, int* n2blue, int* nRows) {
    assert(nfft >= 1);
    *n2blue = 1;
    *nRows = nfft;
    if (useRadix2) {
        return;
    }
    const std::int64_t wanted = 2 * static_cast<std::int64_t>(nfft) - 1;
    if (wanted > std::int64_t{1} << 30) {
        throw std::bad_array_new_length();
    }
    while (*n2blue < wanted) {
        *n2blue *= 2;
    }
    *nRows = *n2blue;
}

void FFTImplementationCallback_generate_twiddle_tables(int nRows, bool useRadix2, row& costab, row& sintab,
                                                       row& sintabinv) {
    assert(std::has_single_bit(static_cast<unsigned>(nRows)));
    const int last = nRows / 2;
    const row wave = quarterWave(nRows);
    costab.set_size(1, last + 1);
    sintab.set_size(1, last + 1);
    sintabinv.set_size(1, useRadix2 ? 0 : last + 1);
    for (int k = 0; k <= last; ++k) {
        const int fromQuarter = nRows < 4 ? 1 : std::abs(nRows / 4 - k);
        costab[k] = 2 * k <= last ? wave[k] : -wave[last - k];
        sintab[k] = 0.0 - wave[fromQuarter];
        if (!useRadix2) {
            sintabinv[k] = wave[fromQuarter];
        }
    }
}

void FFTImplementationCallback_r2br_r2dit_trig_impl(const complex_column& x, int nRows, const row& costab,
                                                    const row& sintab, complex_column& y) {
    assert(std::has_single_bit(static_cast<unsigned>(nRows)) && 2 * (costab.numel() - 1) % nRows == 0);
    y.set_size(nRows);
    for (int i = 0, reversed = 0; i < nRows; ++i) {
        y[reversed] = i < x.numel() ? x[i] : creal_T{};
        int bit = nRows / 2;
        for (; bit > 0 && (reversed & bit) != 0; bit /= 2) {
            reversed -= bit;
        }
        reversed += bit;
    }
    const int period = 2 * (costab.numel() - 1);
    for (int span = 1; span < nRows; span *= 2) {
        const int step = period / (2 * span);
        for (int from = 0; from < nRows; from += 2 * span) {
            for (int j = 0; j < span; ++j) {
                creal_T& upper = y[from + j];
                creal_T& lower = y[from + j + span];
                const creal_T turned = times(lower, {costab[j * step], sintab[j * step]});
                lower = minus(upper, turned);
                upper = upper + turned;
            }
        }
    }
}

void FFTImplementationCallback_doHalfLengthRadix2(const column& x, complex_column& y, int nRows, const row& costab,
                                                  const row& sintab) {
    assert(std::has_single_bit(static_cast<unsigned>(nRows)));
    if (nRows == 1) {
        y.set_size(1);
        y[0] = {x.numel() > 0 ? x[0] : 0.0, 0.0};
        return;
    }
    complex_column pairs;
    complex_column z;
    packPairs(x, nRows / 2, pairs);
    FFTImplementationCallback_r2br_r2dit_trig_impl(pairs, nRows / 2, costab, sintab, z);
    splitPairs(z, y, [&](int k) { return creal_T{costab[k], sintab[k]}; });
}

void FFTImplementationCallback_dobluesteinfft(const column& x, int n2blue, int nfft, const row& costab,
                                              const row& sintab, const row& sintabinv, complex_column& y) {
    assert(nfft >= 1 && std::has_single_bit(static_cast<unsigned>(n2blue)) && n2blue >= 2 * nfft - 1);
    complex_column z;
    complex_column transformed;
    if (nfft % 2 == 0) {
        packPairs(x, nfft / 2, z);
        chirpTransform(z, n2blue / 2, costab, sintab, sintabinv, transformed);
        splitPairs(transformed, y, [step = twoPi / nfft](int k) {
            return creal_T{std::cos(step * k), -std::sin(step * k)};
        });
        return;
    }
    z.set_size(nfft);
    for (int k = 0; k < nfft; ++k) {
        z[k] = {k < x.numel() ? x[k] : 0.0, 0.0};
    }
    chirpTransform(z, n2blue, costab, sintab, sintabinv, y);
}

}  // namespace coder
