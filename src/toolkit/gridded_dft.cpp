#include "toolkit/gridded_dft.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "toolkit/scalar.h"
#include "toolkit/special_functions.h"
#include "toolkit/vector_code.h"

namespace coder {
namespace {

constexpr int step = 50;  // D, samples between thinned points
constexpr int points = GriddedDft::period / step;
constexpr int taps = 16;  // points that a sample adds to
constexpr int reach = taps / 2;

// Half the kernel's bandwidth: just inside pi * taps * 0.7, where the first alias of line 600 begins.
constexpr double beta = 34.8;
constexpr double i0OfBeta = 88135626522684.86;

/// Stretches of D samples, the first of which begins at point `first`; each adds to the points around it:
/// thinned[point + m] += sum over s of x[s] kernel[s][m], m < taps.
struct Thinning {
    const double* x;
    std::size_t stretches;
    std::size_t first;
    const double* kernel;
    double* thinned;
};

struct Thin {
    template <int width>
    ALWAYS_INLINE static void run(const Thinning& work) {
        constexpr int group = width / 2;  // as many stretches at once as fill eight vectors with their sums
        std::size_t done = 0;
        for (; done + group <= work.stretches; done += group) {
            add<width, group>(work, done);
        }
        for (; done < work.stretches; ++done) {
            add<width, 1>(work, done);
        }
    }

private:
    template <int width, int group>
    ALWAYS_INLINE static void add(const Thinning& work, std::size_t from) {
        using Vector = typename Lanes<width>::type;
        constexpr int vectors = taps / width;
        Vector sums[group][vectors] = {};
        const double* const x = work.x + from * step;
        for (int s = 0; s < step; ++s) {
            Vector weights[vectors];
            std::memcpy(weights, work.kernel + s * taps, sizeof weights);
            unroll<group>([&](auto g) ALWAYS_INLINE {
                unroll<vectors>([&](auto v) ALWAYS_INLINE { sums[g][v] += x[g * step + s] * weights[v]; });
            });
        }
        unroll<group>([&](auto g) ALWAYS_INLINE {
            double* const point = work.thinned + (work.first + from + g) % points;
            unroll<vectors>([&](auto v) ALWAYS_INLINE {
                Vector sum;
                std::memcpy(&sum, point + v * width, sizeof sum);
                sum += sums[g][v];
                std::memcpy(point + v * width, &sum, sizeof sum);
            });
        });
    }
};

/// The kernel, at the distances 0 ... reach * step samples.
std::vector<double> kernelHalf() {
    std::vector<double> squares;
    for (int i = 0; i <= reach * step; ++i) {
        const double u = static_cast<double>(i) / (reach * step);
        squares.push_back(beta * beta * (1.0 - u) * (1.0 + u));
    }
    std::vector<double> values(squares.size());
    besseliOfSquare(squares, std::vector<double>(squares.size()), values.data());
    for (double& value : values) {
        value /= i0OfBeta;
    }
    return values;
}

/// The kernel's Fourier transform at a line. sinh(s) is exp(s) / 2 to the last bit: s > 30.
double transformAt(int line) {
    const double x = pi * taps * line / points;
    const double s = std::sqrt(beta * beta - x * x);
    return taps * std::exp(s) / (2.0 * s * i0OfBeta);
}

}  // namespace

GriddedDft::GriddedDft(int firstLine, int lines)
    : firstLine_(static_cast<std::size_t>(firstLine)), fft_(points), kernel_(step * taps) {
    assert(firstLine > 0 && firstLine + lines - 1 <= maxLine);
    const std::vector<double> half = kernelHalf();
    for (int s = 0; s < step; ++s) {
        for (int m = 0; m < taps; ++m) {
            const int distance = std::abs(s - (m - reach + 1) * step);
            kernel_[static_cast<std::size_t>(s * taps + m)] = half[static_cast<std::size_t>(distance)];
        }
    }
    for (int line = firstLine; line < firstLine + lines; ++line) {
        transform_.push_back(transformAt(line));
    }
}

void GriddedDft::magnitudes(samples x, double* out) const {
    // All points stand reach - 1 places late, which changes no magnitude, lest the first ones lie before the period.
    std::vector<double> thinned(points + taps);
    const std::size_t whole = x.size() / step;
    double last[step] = {};
    std::copy(x.begin() + static_cast<std::ptrdiff_t>(whole * step), x.end(), last);
    runWidest<Thin>(Thinning{x.data(), whole, 0, kernel_.data(), thinned.data()});
    runWidest<Thin>(Thinning{last, 1, whole, kernel_.data(), thinned.data()});
    for (std::size_t m = 0; m < taps; ++m) {
        thinned[m] += thinned[m + points];
    }
    std::vector<creal_T> spectrum(points / 2 + 1);
    fft_.forward(samples(thinned).first(points), spectrum.data());
    for (std::size_t k = 0; k < transform_.size(); ++k) {
        const creal_T line = spectrum[firstLine_ + k];
        out[k] = std::sqrt(line.re * line.re + line.im * line.im) / transform_[k];
    }
}

}  // namespace coder
