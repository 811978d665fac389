#include "toolkit/gridded_dft.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "toolkit/bessel.h"
#include "toolkit/scalar.h"
#include "toolkit/simd.h"

namespace coder {
namespace {

constexpr std::ptrdiff_t step = 50;  // D, samples between grid points
constexpr std::ptrdiff_t points = GriddedDft::period / step;
constexpr std::ptrdiff_t taps = 16;  // grid points that a sample is spread over
constexpr std::ptrdiff_t halfSupport = taps / 2;

// Half the kernel's bandwidth in radians per point: just below pi * taps * 0.7, where the first alias of line 600
// begins.
constexpr double beta = 34.8;
constexpr double i0OfBeta = 88135626522684.86;

/// Blocks of D samples each; block b lies after grid point first + b and is added to the points around it:
/// grid[first + b + m] += sum over s of x[D b + s] kernel[s][m], m < taps.
struct Spreading {
    const double* x;
    std::ptrdiff_t blocks;
    std::ptrdiff_t first;
    const double* kernel;
    double* grid;
};

struct Spread {
    template <int width>
    ALWAYS_INLINE static void run(const Spreading& work) {
        constexpr int group = width / 2;  // blocks at a time: their sums fill eight vectors
        std::ptrdiff_t done = 0;
        for (; done + group <= work.blocks; done += group) {
            add<width, group>(work, done);
        }
        for (; done < work.blocks; ++done) {
            add<width, 1>(work, done);
        }
    }

private:
    template <int width, int group>
    ALWAYS_INLINE static void add(const Spreading& work, std::ptrdiff_t from) {
        using Vector = typename Lanes<width>::type;
        constexpr std::ptrdiff_t vectors = taps / width;
        Vector sums[group][vectors] = {};
        const double* const x = work.x + from * step;
        for (std::ptrdiff_t s = 0; s < step; ++s) {
            Vector weights[vectors];
            std::memcpy(weights, work.kernel + s * taps, sizeof weights);
            unroll<group>([&](auto g) ALWAYS_INLINE {
                unroll<vectors>([&](auto v) ALWAYS_INLINE { sums[g][v] += x[g * step + s] * weights[v]; });
            });
        }
        unroll<group>([&](auto g) ALWAYS_INLINE {
            double* const point = work.grid + (work.first + from + g) % points;
            unroll<vectors>([&](auto v) ALWAYS_INLINE {
                Vector sum;
                std::memcpy(&sum, point + v * width, sizeof sum);
                sum += sums[g][v];
                std::memcpy(point + v * width, &sum, sizeof sum);
            });
        });
    }
};

/// The kernel at the distances 0 ... halfSupport * step samples.
std::vector<double> kernelHalf() {
    constexpr std::ptrdiff_t last = halfSupport * step;
    std::vector<double> squares;
    for (std::ptrdiff_t i = 0; i <= last; ++i) {
        const double u = static_cast<double>(i) / last;
        squares.push_back(beta * beta * (1.0 - u) * (1.0 + u));
    }
    std::vector<double> values(squares.size());
    besseliOfSquare(squares, std::vector<double>(squares.size()), values.data());
    for (double& value : values) {
        value /= i0OfBeta;
    }
    return values;
}

/// The kernel's Fourier transform at a line. s > 30, so exp(s) / 2 is sinh(s) to the last bit.
double transformAt(int line) {
    const double x = pi * taps * line / points;
    const double s = std::sqrt(beta * beta - x * x);
    return taps * std::exp(s) / (2.0 * s * i0OfBeta);
}

}  // namespace

GriddedDft::GriddedDft(int firstLine, int lines)
    : firstLine_(static_cast<std::size_t>(firstLine)),
      fft_(static_cast<int>(points)),
      kernel_(static_cast<std::size_t>(step * taps)) {
    assert(firstLine > 0 && firstLine + lines - 1 <= maxLine);
    const std::vector<double> half = kernelHalf();
    for (std::ptrdiff_t s = 0; s < step; ++s) {
        for (std::ptrdiff_t m = 0; m < taps; ++m) {
            const std::ptrdiff_t distance = std::abs(s - (m - halfSupport + 1) * step);
            kernel_[static_cast<std::size_t>(s * taps + m)] = half[static_cast<std::size_t>(distance)];
        }
    }
    for (int line = firstLine; line < firstLine + lines; ++line) {
        transform_.push_back(transformAt(line));
    }
}

void GriddedDft::magnitudes(samples x, double* out) const {
    // The grid is shifted by halfSupport - 1 points, so that no sample adds to a point before its start. A shift
    // changes no magnitude. Behind the end are `taps` more points, which are then added to the first ones.
    std::vector<double> grid(static_cast<std::size_t>(points + taps));
    const auto whole = static_cast<std::ptrdiff_t>(x.size()) / step;
    double last[step] = {};
    std::copy(x.begin() + whole * step, x.end(), last);
    vectorized<Spread>(Spreading{x.data(), whole, 0, kernel_.data(), grid.data()});
    vectorized<Spread>(Spreading{last, 1, whole, kernel_.data(), grid.data()});
    for (std::ptrdiff_t m = 0; m < taps; ++m) {
        grid[static_cast<std::size_t>(m)] += grid[static_cast<std::size_t>(m + points)];
    }
    std::vector<creal_T> spectrum(static_cast<std::size_t>(points / 2 + 1));
    fft_.forward(samples(grid).first(static_cast<std::size_t>(points)), spectrum.data());
    assert(firstLine_ + transform_.size() <= spectrum.size());
    for (std::size_t k = 0; k < transform_.size(); ++k) {
        const creal_T line = spectrum[firstLine_ + k];
        out[k] = std::sqrt(line.re * line.re + line.im * line.im) / transform_[k];
    }
}

}  // namespace coder
