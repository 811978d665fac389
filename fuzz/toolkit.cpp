// Compares the numeric toolkit and the frequency search with their plain definitions.

#include "calc/frequency.h"

#include <array>
#include <bit>
#include <cmath>
#include <complex>
#include <cstring>
#include <numeric>

#include "bytes.h"
#include "calc/options.h"
#include "calc/plain_search.h"
#include "extras/elementwise.h"
#include "extras/fft_arrays.h"
#include "extras/fft_implementation_callback.h"
#include "extras/gammaln.h"
#include "extras/hilbert.h"
#include "require.h"
#include "support/plain.h"
#include "toolkit/analytic_signal.h"
#include "toolkit/bessel.h"
#include "toolkit/extremes.h"
#include "toolkit/gridded_dft.h"
#include "toolkit/harmonic_distortion.h"
#include "toolkit/non_finite.h"
#include "toolkit/peaks.h"
#include "toolkit/ranges.h"
#include "toolkit/scalar.h"
#include "toolkit/simd.h"
#include "toolkit/sums.h"
#include "toolkit/windows.h"
#include "toolkit/zoom_spectrum.h"

namespace {

using coder::creal_T;
using coder::Peak;
using coder::RealFft;
using coder::samples;
using fuzz::Bytes;
using fuzz::require;
using Row = std::vector<double>;
using LongComplex = std::complex<long double>;

using plain::same;

// --- Transforms ---

/// RMS error relative to the RMS of the spectrum, in units of 2^-53 sqrt(log2 n).
double errorOf(const creal_T* half, const std::vector<LongComplex>& exact, std::size_t n) {
    long double error = 0.0L;
    long double power = 0.0L;
    for (std::size_t k = 0; k < exact.size(); ++k) {
        error += std::norm(LongComplex(half[k].re, half[k].im) - exact[k]);
        power += std::norm(exact[k]);
    }
    const long double scale = 0x1p-53L * std::sqrt(std::max(1.0L, std::log2(static_cast<long double>(n))));
    return error == 0.0L ? 0.0 : static_cast<double>(std::sqrt(error / power) / scale);
}

coder::complex_column textbookSpectrum(const Row& x) {
    coder::column in;
    in.set_size(static_cast<int>(x.size()));
    std::copy(x.begin(), x.end(), in.begin());
    const bool useRadix2 = std::has_single_bit(x.size());
    int n2blue = 0;
    int nRows = 0;
    coder::row costab;
    coder::row sintab;
    coder::row sintabinv;
    coder::complex_column y;
    const int n = in.numel();
    coder::FFTImplementationCallback_get_algo_sizes(n, useRadix2, &n2blue, &nRows);
    coder::FFTImplementationCallback_generate_twiddle_tables(nRows, useRadix2, costab, sintab, sintabinv);
    if (useRadix2) {
        coder::FFTImplementationCallback_doHalfLengthRadix2(in, y, nRows, costab, sintab);
    } else {
        coder::FFTImplementationCallback_dobluesteinfft(in, n2blue, n, costab, sintab, sintabinv, y);
    }
    return y;
}

void transforms(Bytes& bytes) {
    const std::size_t n = 1 + bytes.upTo(255);
    Row x = bytes.tameSignal(bytes.flag() ? n : bytes.upTo(n + 9));
    const RealFft plan(static_cast<int>(n));
    const auto bins = static_cast<std::size_t>(plan.bins());
    std::vector<creal_T> half(bins);
    plan.forward(x, half.data());
    const Row given = x;
    x.resize(n);
    const auto exact = plain::transform(x, n, 0, bins);
    require(errorOf(half.data(), exact, n) <= 3.0, "the transform's error is within its bound");
    for (std::size_t i = 0; i < coder::instructionSets; ++i) {
        const coder::InstructionSet set{static_cast<std::uint8_t>(i)};
        if (isSupported(set)) {
            const coder::ForcedInstructionSet forced(set);
            std::vector<creal_T> again(bins);
            plan.forward(given, again.data());
            require(std::memcmp(half.data(), again.data(), bins * sizeof half[0]) == 0,
                    "every instruction set gives the same bits");
        }
    }
    const coder::complex_column textbook = textbookSpectrum(x);
    require(errorOf(textbook.data(), exact, n) <= 12.0, "the textbook transform gives the same spectrum");

    Row back(n);
    coder::inverse(plan, half.data(), back.data());
    const double largest = std::transform_reduce(
        x.begin(), x.end(), 0.0, [](double a, double b) { return std::max(a, b); },
        [](double value) { return std::fabs(value); });
    for (std::size_t i = 0; i < n; ++i) {
        require(std::fabs(back[i] - x[i]) <= 1e-14 * largest, "the inverse undoes the transform");
    }
}

void nanSpreads(Bytes& bytes) {
    const std::size_t n = 1 + bytes.upTo(1000);
    Row x = bytes.tameSignal(n);
    x[bytes.upTo(n - 1)] = rtNaN;
    const RealFft plan(static_cast<int>(n));
    std::vector<creal_T> half(static_cast<std::size_t>(plan.bins()));
    plan.forward(x, half.data());
    require(std::all_of(half.begin(), half.end(), [](creal_T z) { return std::isnan(z.re) || std::isnan(z.im); }),
            "a NaN spoils every bin");
}

void zoomSpectrum(Bytes& bytes) {
    static constexpr int factors[] = {2, 4, 16};
    const std::size_t n = 1 + bytes.upTo(39);
    const int factor = factors[bytes.upTo(2)];
    Row window(n, 1.0);
    if (bytes.flag()) {
        coder::column hamming;
        coder::hamming(static_cast<double>(n), hamming);
        window.assign(hamming.begin(), hamming.end());
    }
    Row x = bytes.tameSignal(n);
    coder::ZoomSpectrum zoom(static_cast<int>(n), factor, window);
    zoom.load(x);
    const auto bins = static_cast<std::size_t>(zoom.bins());
    Row found(bins);
    zoom.magnitudes(zoom.bins(), found.data());

    std::transform(x.begin(), x.end(), window.begin(), x.begin(), std::multiplies<>());
    const auto exact = plain::transform(x, n * static_cast<std::size_t>(factor), 0, bins);
    long double largest = 0.0L;
    for (const LongComplex& bin : exact) {
        largest = std::max(largest, std::abs(bin));
    }
    for (std::size_t k = 0; k < bins; ++k) {
        require(std::fabs(found[k] - std::abs(exact[k])) <= 1e-14L * largest, "a zoomed bin is within its bound");
    }
    const double known = zoom.largest({found.data(), bytes.upTo(bins)});
    require(known == *std::max_element(found.begin(), found.end()), "the largest bin is the largest of the magnitudes");
}

void analyticProducts(Bytes& bytes) {
    const std::size_t n = 1 + bytes.upTo(99);
    const Row a = bytes.tameSignal(n);
    const Row b = bytes.tameSignal(n);
    coder::complex_row A;
    coder::complex_row B;
    coder::hilbert(a, A);
    coder::hilbert(b, B);
    LongComplex plain;
    long double powerA = 0.0L;
    long double powerB = 0.0L;
    for (int i = 0; i < static_cast<int>(n); ++i) {
        const LongComplex za(A[i].re, A[i].im);
        const LongComplex zb(B[i].re, B[i].im);
        plain += za * std::conj(zb);
        powerA += std::norm(za);
        powerB += std::norm(zb);
        require(A[i].re == a[static_cast<std::size_t>(i)], "an analytic signal's real part is the signal");
    }
    const coder::RealFft shared(static_cast<int>(n));
    const creal_T sum = coder::analyticProductSum(a, b, shared);
    require(std::abs(LongComplex(sum.re, sum.im) - plain) <= 1e-14L * std::sqrt(powerA * powerB),
            "the sum over the spectra is the sum over the signals");
}

void fourierGrid(Bytes& bytes) {
    const int first = 1 + static_cast<int>(bytes.upTo(coder::GriddedDft::maxLine - 1));
    const coder::GriddedDft grid(first, coder::GriddedDft::maxLine - first + 1);
    const Row x = bytes.tameSignal(bytes.upTo(1100));
    long double total = 0.0L;
    for (const double value : x) {
        total += std::fabs(value);
    }
    if (!(total >= 1e-120L && total <= 1e120L)) {
        return;
    }
    Row found(grid.lines());
    grid.magnitudes(x, found.data());
    const std::size_t k = bytes.upTo(grid.lines() - 1);
    const auto line = static_cast<std::size_t>(first) + k;
    const LongComplex exact = plain::transform(x, coder::GriddedDft::period, line, 1)[0];
    require(std::fabs(found[k] - std::abs(exact)) <= coder::GriddedDft::errorBound(x.size()) * total,
            "a line of the frequency grid is within its bound");
}

// --- Searches ---

using calc_modul_K9_web_ns::FrequencySearch;

void frequencySearch(Bytes& bytes) {
    const bool control = bytes.flag();
    const std::size_t n = bytes.upTo(control ? 40 : 600);
    const Row x = bytes.signal(n);
    double N = static_cast<double>(n);
    if (bytes.raw<std::uint8_t>() % 8 == 1) {
        N = bytes.flag() ? rtNaN : N + bytes.raw<std::int8_t>() / 16.0;
    }
    if (std::isnan(N) && x.empty()) {
        return;  // undefined: no sample has a time
    }
    const FrequencySearch search(
        N, control ? calc_modul_K9_web_ns::option::frequencyControl : calc_modul_K9_web_ns::option::frequencyFixed);
    const auto parts = [](std::complex<double> z) { return creal_T{z.real(), z.imag()}; };
    const auto isLarger = [&](auto a, auto b) { return coder::isLarger(parts(a), parts(b)); };
    const plain::Line expected = plain::searchedLine(x, N, control, isLarger);
    const double amplitude = 2.0 * coder::rt_hypotd_snf(expected.sum.real(), expected.sum.imag()) / N;
    const auto found = search.fundamental(x);
    require(found.frequency == expected.frequency, "the search finds the frequency of the plain sums");
    require(same(found.amplitude, amplitude), "the search finds the amplitude of the plain sums");
    require(search.frequency(x) == found.frequency, "the frequency alone is the same");
}

void peaks(Bytes& bytes) {
    static const double usual[] = {0.0, -0.0, 1.0, 2.0, 3.0, rtNaN, rtInf, rtMinusInf};
    Row y(bytes.upTo(60));
    for (double& value : y) {
        value = bytes.oneOf(usual);
    }
    const double criterion = bytes.oneOf(usual);
    const int count = bytes.raw<std::int8_t>();
    const auto equal = [&](const std::vector<Peak>& found, const std::vector<std::size_t>& expected) {
        return std::equal(
            found.begin(), found.end(), expected.begin(), expected.end(),
            [&](const Peak& p, std::size_t at) { return p.value == y[at] && p.position == static_cast<int>(at) + 1; });
    };
    require(equal(coder::highestPeaks(y, count), plain::peaks(y, rtMinusInf, count, false)),
            "the highest peaks come first");
    require(equal(coder::peaksByCriterion(y, criterion, count), plain::peaks(y, criterion, count, true)),
            "peaks by criterion are in the order of the row");
}

void nearestBin(Bytes& bytes) {
    Row F(1 + bytes.upTo(40));
    for (double& f : F) {
        f = bytes.raw<std::int16_t>() / 16.0;
    }
    std::sort(F.begin(), F.end());
    F.erase(std::unique(F.begin(), F.end()), F.end());
    const double target = bytes.raw<std::int16_t>() / 32.0;
    std::size_t best = 0;
    for (std::size_t i = 1; i < F.size(); ++i) {
        best = std::fabs(F[i] - target) < std::fabs(F[best] - target) ? i : best;
    }
    require(coder::nearestBin(F, target) == best, "the nearest bin is the nearest one");
}

// --- Distortion ---

struct Tone {
    double power;
    double frequency;
    std::size_t left;
    std::size_t right;
};

Tone plainTone(const Row& P, const Row& F, double rbw, std::size_t start) {
    Tone tone{0.0, 0.0, start, start};
    while (tone.left > 0 && P[tone.left - 1] <= P[tone.left]) {
        --tone.left;
    }
    while (tone.right + 1 < P.size() && P[tone.right + 1] <= P[tone.right]) {
        ++tone.right;
    }
    double sum = P[tone.left];
    double moment = F[tone.left] * P[tone.left];
    for (std::size_t i = tone.left + 1; i <= tone.right; ++i) {
        sum += P[i];
        moment += F[i] * P[i];
    }
    tone.power = sum * ((F.back() - F.front()) / static_cast<double>(F.size() - 1));
    tone.frequency = moment / sum;
    if (rbw * P[start] > tone.power) {
        tone.power = rbw * P[start];
        tone.frequency = F[start];
    }
    return tone;
}

/// First of the largest bins from ... to; NaN is none.
std::size_t largestBin(const Row& P, std::size_t from, std::size_t to) {
    std::size_t best = from;
    for (std::size_t i = from + 1; i <= to; ++i) {
        best = P[i] > P[best] || (std::isnan(P[best]) && !std::isnan(P[i])) ? i : best;
    }
    return best;
}

coder::HarmonicResult plainDistortion(Row P, const Row& F, double rbw, std::size_t harmonics) {
    coder::HarmonicResult result{rtNaN, Row(harmonics, rtNaN), Row(harmonics, rtNaN)};
    if (harmonics == 0 || F.empty() || F.front() > 0.0 || F.back() < 0.0) {
        return result;
    }
    P[0] *= 2.0;
    const auto nearest = [&](double target) {
        std::size_t best = 0;
        for (std::size_t i = 1; i < F.size(); ++i) {
            best = std::fabs(F[i] - target) < std::fabs(F[best] - target) ? i : best;
        }
        return best;
    };
    const Tone dc = plainTone(P, F, rbw, nearest(0.0));
    std::fill(P.begin() + static_cast<std::ptrdiff_t>(dc.left), P.begin() + static_cast<std::ptrdiff_t>(dc.right + 1),
              0.0);
    const Tone fundamental = plainTone(P, F, rbw, largestBin(P, 0, P.size() - 1));
    double distortion = 0.0;
    for (std::size_t k = 1; k <= harmonics; ++k) {
        const double target = static_cast<double>(k) * fundamental.frequency;
        Tone tone = fundamental;
        if (k > 1) {
            if (!(target >= F.front() && target <= F.back())) {
                continue;
            }
            const std::size_t bin = nearest(target);
            const std::size_t from = bin - (bin > 0 ? 1 : 0);
            tone = plainTone(P, F, rbw, largestBin(P, from, std::min(bin + 1, P.size() - 1)));
            distortion += std::isnan(tone.power) ? 0.0 : tone.power;
        }
        result.harmPow[k - 1] = tone.power;
        result.harmFreq[k - 1] = tone.frequency;
    }
    result.r = 10.0 * std::log10(distortion / fundamental.power);
    return result;
}

void distortion(Bytes& bytes) {
    Row P(bytes.upTo(60));
    const double step = 0.25 * static_cast<double>(1 + bytes.upTo(255));
    const double first = bytes.flag() ? bytes.raw<std::int8_t>() : 0.0;
    Row F(P.size());
    coder::column density;
    density.set_size(static_cast<int>(P.size()));
    const bool odd = bytes.flag();
    for (std::size_t i = 0; i < P.size(); ++i) {
        F[i] = (first + static_cast<double>(i)) * step;
        P[i] = odd ? bytes.number() : bytes.raw<std::uint8_t>();
    }
    std::copy(P.begin(), P.end(), density.begin());
    const double rbw = bytes.flag() ? bytes.number() : 1.5 * step;
    const double harmonics = bytes.flag() ? bytes.raw<std::int8_t>() / 2.0 : 5.0;
    const auto count = static_cast<std::size_t>(std::max(coder::truncatedToInt(harmonics), 0));
    const auto found = coder::computeTHD(density, F, rbw, harmonics);
    const auto expected = plainDistortion(P, F, rbw, count);
    const auto equal = [](const Row& a, const Row& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), same);
    };
    require(same(found.r, expected.r), "the distortion is that of the definition");
    require(equal(found.harmPow, expected.harmPow), "the powers of harmonics are those of the definition");
    require(equal(found.harmFreq, expected.harmFreq), "the frequencies of harmonics are those of the definition");
}

// --- Sums and functions ---

void sums(Bytes& bytes) {
    const Row x = bytes.signal(bytes.upTo(20000));
    double total = 0.0;
    for (std::size_t from = 0; from < x.size(); from += 1024) {
        double block = x[from];
        for (std::size_t i = from + 1; i < std::min(from + 1024, x.size()); ++i) {
            block += x[i];
        }
        total = from == 0 ? block : total + block;
    }
    require(same(coder::combineVectorElements(x), total), "sums are taken in blocks of 1024");
    if (x.empty()) {
        return;
    }
    std::size_t largest = 0;
    std::size_t smallest = 0;
    for (std::size_t i = 1; i < x.size(); ++i) {
        const auto replaces = [&](std::size_t best) { return std::isnan(x[best]) && !std::isnan(x[i]); };
        largest = x[i] > x[largest] || replaces(largest) ? i : largest;
        smallest = x[i] < x[smallest] || replaces(smallest) ? i : smallest;
    }
    double value = 0.0;
    int position = 0;
    coder::maximum(x, &value, &position);
    require(same(value, x[largest]) && position == static_cast<int>(largest) + 1, "the largest is the first largest");
    coder::minimum(x, &value, &position);
    require(same(value, x[smallest]) && position == static_cast<int>(smallest) + 1, "the smallest is the first one");
    require(same(coder::peak2peak(x), x[largest] - x[smallest]), "peak to peak is largest minus smallest");
}

void ranges(Bytes& bytes) {
    const double a = bytes.number();
    const double d = bytes.number();
    const double b = bytes.number();
    if (std::fabs((b - a) / d) > 5000.0) {
        return;
    }
    Row y;
    coder::eml_float_colon(a, d, b, y);
    if (std::isnan(b - a) || !std::isfinite(d)) {
        require(y.size() == 1 && std::isnan(y[0]), "a range that is not one is NaN");
        return;
    }
    const double slack = 0x4p-53 * std::max(std::fabs(a), std::fabs(b));
    for (std::size_t k = 0; k < y.size(); ++k) {
        require(std::fabs(y[k] - (a + static_cast<double>(k) * d)) <= slack, "a range has even steps");
        require(d > 0.0 ? y[k] <= b + slack : y[k] >= b - slack, "a range ends at its end");
    }
}

void functions(Bytes& bytes) {
    const double x = bytes.number();
    if (std::fabs(x) <= 720.0) {
        require(plain::ulps(coder::besseli(x), plain::besselI0(x)) <= 4.0, "I0 is within its bound");
    }
    if (x > 0.0) {
        require(plain::ulps(coder::gammaln(x), std::lgamma(static_cast<long double>(x))) <= 1.0,
                "ln Gamma is within its bound");
    }
    const double y = bytes.number();
    if (std::isfinite(x) && std::isfinite(y)) {
        const long double exact = std::hypot(static_cast<long double>(x), static_cast<long double>(y));
        require(plain::ulps(coder::rt_hypotd_snf(x, y), exact) <= 4.0, "the hypotenuse is close");
    }
    require(std::isnan(x) || std::isnan(y) || std::fabs(coder::rt_atan2d_snf(x, y)) <= coder::pi, "an angle is one");
    const int whole = coder::truncatedToInt(x);
    require(std::isnan(x) ? whole == 0 : std::fabs(x) >= 2147483648.0 || whole == std::trunc(x), "counts truncate");
    require(!coder::isLarger({x, y}, {x, y}), "nothing is larger than itself");
    require(coder::isLarger({x, y}, {y, x}) + coder::isLarger({y, x}, {x, y}) < 2, "larger has one direction");
}

void windows(Bytes& bytes) {
    const double length = bytes.flag() ? bytes.number() : static_cast<double>(bytes.upTo(500));
    if (length > 2000.0) {
        return;
    }
    const auto n = static_cast<std::size_t>(length >= 0.5 ? std::round(length) : 0.0);
    const auto check = [&](void (*make)(double, coder::column&), auto formula) {
        coder::column w;
        make(length, w);
        require(static_cast<std::size_t>(w.numel()) == n, "a window has the rounded length");
        for (std::size_t k = 0; k < n; ++k) {
            require(n == 1 ? w.data()[k] == 1.0 : plain::ulps(w.data()[k], formula(k)) <= 4.0,
                    "a window is within its bound");
        }
    };
    check(coder::hanning, [&](std::size_t k) { return plain::raisedCosine(k + 1, n + 1); });
    check(coder::b_hanning, [&](std::size_t k) { return plain::raisedCosine(k, n); });
    check(coder::hamming, [&](std::size_t k) { return 0.08L + 0.92L * plain::raisedCosine(k, n - 1); });
    check(coder::kaiser, [&](std::size_t k) { return plain::kaiser(k, n, 0.5L); });
    check(coder::b_kaiser, [&](std::size_t k) { return plain::kaiser(k, n, 38); });
}

constexpr void (*checks[])(Bytes&) = {
    transforms, nanSpreads, zoomSpectrum, analyticProducts, fourierGrid, frequencySearch, peaks,
    nearestBin, distortion, sums,         ranges,           functions,   windows,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    checks[bytes.upTo(std::size(checks) - 1)](bytes);
    return 0;
}
