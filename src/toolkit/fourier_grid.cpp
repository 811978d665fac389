#include "toolkit/fourier_grid.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "toolkit/vector_clones.h"

namespace coder {
namespace {

constexpr int block = FourierGrid::block;
constexpr int half = block / 2;
constexpr int moments = FourierGrid::moments;
constexpr int group = FourierGrid::group;
constexpr std::size_t lanes = 8;

/// J_m(z) for m < moments and a vector of z, at m * stride: downward recurrence J_(m-1) = (2m/z) J_m - J_(m+1),
/// normalised by J_0 + 2 (J_2 + J_4 + ...) = 1. J. C. P. Miller, British Association Mathematical Tables 10 (1952).
[[gnu::always_inline]] inline void besselVector(const double* z, std::size_t stride, double* rows) {
    constexpr int startOrder = 2 * moments;
    double next[lanes] = {};
    double here[lanes];
    double norm[lanes] = {};
    std::fill_n(here, lanes, 1e-250);
    for (int m = startOrder; m > 0; --m) {
        const double weight = m % 2 == 0 ? 2.0 : 0.0;
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            norm[lane] += weight * here[lane];
            const double below = 2.0 * m / z[lane] * here[lane] - next[lane];
            next[lane] = here[lane];
            here[lane] = below;
        }
        if (m <= moments) {
            std::copy_n(here, lanes, rows + static_cast<std::size_t>(m - 1) * stride);
        }
    }
    for (std::size_t m = 0; m < moments; ++m) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            rows[m * stride + lane] /= norm[lane] + here[lane];
        }
    }
}

RT305_4_VECTOR_CLONES void besselRows(const double* z, std::size_t count, double* rows) {
    for (std::size_t from = 0; from < count; from += lanes) {
        besselVector(z + from, count, rows + from);
    }
}

/// result[m] = sum over the block of x T_m. Folded about the middle: T_m is even or odd like m.
RT305_4_VECTOR_CLONES void blockMoments(const double* x, const double* chebyshev, double* result) {
    double folded[2][half];
    for (int i = 0; i < half; ++i) {
        const double upper = x[half + i];
        const double lower = x[half - 1 - i];
        folded[0][i] = upper + lower;
        folded[1][i] = upper - lower;
    }
    for (int m = 0; m < moments; ++m) {
        const double* const values = folded[m % 2];
        const double* const weights = chebyshev + static_cast<std::ptrdiff_t>(m) * half;
        double sums[lanes] = {};
        for (int i = 0; i < half; i += static_cast<int>(lanes)) {
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                sums[lane] += values[static_cast<std::size_t>(i) + lane] * weights[static_cast<std::size_t>(i) + lane];
            }
        }
        result[m] = ((sums[0] + sums[4]) + (sums[2] + sums[6])) + ((sums[1] + sums[5]) + (sums[3] + sums[7]));
    }
}

/// Adds a group of consecutive blocks at every frequency and rotates the phase factors past them.
RT305_4_VECTOR_CLONES void addBlocks(const double (*values)[moments], const double* coefficients, std::size_t count,
                                     const double* stepCos, const double* stepSin, double* phaseCos, double* phaseSin,
                                     double* re, double* im) {
    for (std::size_t from = 0; from < count; from += lanes) {
        double even[group][lanes] = {};
        double odd[group][lanes] = {};
        for (std::size_t m = 0; m < moments; m += 2) {
            const double* const a = coefficients + m * count + from;
            const double* const b = a + count;
            for (int g = 0; g < group; ++g) {
                for (std::size_t lane = 0; lane < lanes; ++lane) {
                    even[g][lane] += values[g][m] * a[lane];
                    odd[g][lane] += values[g][m + 1] * b[lane];
                }
            }
        }
        for (int g = 0; g < group; ++g) {
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                const std::size_t k = from + lane;
                const double c = phaseCos[k];
                const double s = phaseSin[k];
                re[k] += even[g][lane] * c - odd[g][lane] * s;
                im[k] -= even[g][lane] * s + odd[g][lane] * c;
                phaseCos[k] = c * stepCos[k] - s * stepSin[k];
                phaseSin[k] = s * stepCos[k] + c * stepSin[k];
            }
        }
    }
}

}  // namespace

FourierGrid::FourierGrid(std::span<const double> angles)
    : count_(angles.size()), padded_((angles.size() + lanes - 1) / lanes * lanes) {
    std::vector<double> padded(angles.begin(), angles.end());
    padded.resize(padded_, maxAngle);
    assert(std::all_of(padded.begin(), padded.end(), [](double angle) { return angle > 0.0 && angle <= maxAngle; }));

    chebyshev_.resize(static_cast<std::size_t>(moments) * half);
    for (std::size_t i = 0; i < half; ++i) {
        const double u = (2.0 * static_cast<double>(i) + 1.0) / (block - 1);
        double before = u;  // T_(-1)
        double value = 1.0;
        for (std::size_t m = 0; m < moments; ++m) {
            chebyshev_[m * half + i] = value;
            const double next = 2.0 * u * value - before;
            before = value;
            value = next;
        }
    }

    std::vector<double> z(padded_);
    std::transform(padded.begin(), padded.end(), z.begin(), [](double angle) { return angle * ((block - 1) / 2.0); });
    coefficients_.resize(moments * padded_);
    besselRows(z.data(), padded_, coefficients_.data());
    for (std::size_t m = 0; m < moments; ++m) {
        const double factor = (m == 0 ? 1.0 : 2.0) * (m / 2 % 2 == 0 ? 1.0 : -1.0);
        for (std::size_t k = 0; k < padded_; ++k) {
            coefficients_[m * padded_ + k] *= factor;
        }
    }

    for (const double angle : padded) {
        start_.cosines.push_back(std::cos(angle * ((block + 1) / 2.0)));
        start_.sines.push_back(std::sin(angle * ((block + 1) / 2.0)));
        step_.cosines.push_back(std::cos(angle * block));
        step_.sines.push_back(std::sin(angle * block));
    }
}

void FourierGrid::evaluate(samples x, double* re, double* im) const {
    Rotation phase = start_;
    std::vector<double> sumRe(padded_, 0.0);
    std::vector<double> sumIm(padded_, 0.0);
    for (std::size_t from = 0; from < x.size();) {
        double values[group][moments] = {};
        for (int g = 0; g < group && from < x.size(); ++g, from += block) {
            if (x.size() - from >= block) {
                blockMoments(x.data() + from, chebyshev_.data(), values[g]);
            } else {
                double last[block] = {};
                std::copy(x.begin() + static_cast<std::ptrdiff_t>(from), x.end(), last);
                blockMoments(last, chebyshev_.data(), values[g]);
            }
        }
        addBlocks(values, coefficients_.data(), padded_, step_.cosines.data(), step_.sines.data(), phase.cosines.data(),
                  phase.sines.data(), sumRe.data(), sumIm.data());
    }
    std::copy_n(sumRe.begin(), count_, re);
    std::copy_n(sumIm.begin(), count_, im);
}

}  // namespace coder
