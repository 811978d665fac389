#include "signal/harmonic_fit.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

#include "toolkit/fft.h"

namespace rt305 {

namespace {

using std::numbers::pi;

constexpr std::size_t longestSpectrum = 65536;
constexpr double leastCycles = 2.0;
constexpr double groupsPerCycle = 32.0;  // enough for ten harmonics
constexpr int mostHarmonics = 10;
constexpr int mostSteps = 30;

/// Samples averaged in groups of neighbours, which costs no accuracy and saves most of the work at high rates.
struct Groups {
    std::vector<double> means;
    std::size_t size;
    double rateHz;  // of the means

    Groups(std::span<const double> samples, double samplesPerSecond, double nearHz)
        : size(std::max<std::size_t>(1, static_cast<std::size_t>(samplesPerSecond / (groupsPerCycle * nearHz)))),
          rateHz(samplesPerSecond / static_cast<double>(size)) {
        means.reserve(samples.size() / size);
        for (std::size_t first = 0; first + size <= samples.size(); first += size) {
            double sum = 0.0;
            for (const double x : samples.subspan(first, size)) {
                sum += x;
            }
            means.push_back(sum / static_cast<double>(size));
        }
    }

    /// What averaging leaves of a sine of this frequency.
    double gain(double frequencyHz) const {
        const double half = pi * frequencyHz / (rateHz * static_cast<double>(size));
        return std::sin(half * static_cast<double>(size)) / (static_cast<double>(size) * std::sin(half));
    }
};

/// The weighted normal equations of a linear model, one observation at a time.
class NormalEquations {
public:
    explicit NormalEquations(std::size_t unknowns) : n_(unknowns), matrix_(n_ * n_), right_(n_) {}

    void add(const std::vector<double>& row, double observed, double weight) {
        for (std::size_t i = 0; i < n_; ++i) {
            const double weighted = weight * row[i];
            for (std::size_t j = 0; j <= i; ++j) {
                matrix_[i * n_ + j] += weighted * row[j];
            }
            right_[i] += weighted * observed;
        }
    }

    /// Solves by Cholesky's method. False when the unknowns cannot be told apart. `inverseOfLast` becomes the last
    /// diagonal element of the inverse matrix.
    bool solve(std::vector<double>& x, double& inverseOfLast) {
        if (!factorise()) {
            return false;
        }
        x = right_;
        for (std::size_t i = 0; i < n_; ++i) {
            for (std::size_t k = 0; k < i; ++k) {
                x[i] -= at(i, k) * x[k];
            }
            x[i] /= at(i, i);
        }
        for (std::size_t i = n_; i-- > 0;) {
            for (std::size_t k = i + 1; k < n_; ++k) {
                x[i] -= at(k, i) * x[k];
            }
            x[i] /= at(i, i);
        }
        inverseOfLast = 1.0 / (at(n_ - 1, n_ - 1) * at(n_ - 1, n_ - 1));
        return true;
    }

private:
    double& at(std::size_t row, std::size_t column) { return matrix_[row * n_ + column]; }

    /// The product of the first `count` elements of two rows.
    double product(std::size_t i, std::size_t j, std::size_t count) {
        double sum = 0.0;
        for (std::size_t k = 0; k < count; ++k) {
            sum += at(i, k) * at(j, k);
        }
        return sum;
    }

    /// Replaces the matrix by its Cholesky factor. False when it is singular but for rounding.
    bool factorise() {
        constexpr double leastPivot = 1e-12;
        for (std::size_t i = 0; i < n_; ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                at(i, j) = (at(i, j) - product(i, j, j)) / at(j, j);
            }
            const double pivot = at(i, i) - product(i, i, i);
            if (!(pivot > leastPivot * at(i, i))) {
                return false;
            }
            at(i, i) = std::sqrt(pivot);
        }
        return true;
    }

    std::size_t n_;
    std::vector<double> matrix_;  // the lower triangle
    std::vector<double> right_;
};

/// The model and where its fit has got to. Unknowns: offset, drift over half the length, then cosine and sine of each
/// harmonic, and last the correction of the frequency in units of 1 / half the length.
class Fit {
public:
    Fit(const Groups& groups, double nearHz)
        : groups_(groups),
          center_(0.5 * static_cast<double>(groups.means.size() - 1)),
          halfSeconds_((center_ + 0.5) / groups.rateHz),
          frequency_(nearHz),
          harmonics_(
              static_cast<std::size_t>(std::clamp(static_cast<int>(0.45 * groups.rateHz / nearHz), 1, mostHarmonics))) {
    }

    /// Fits everything but the frequency. False when there are too few samples.
    bool runAtFixedFrequency() { return step(2 + 2 * harmonics_); }

    /// Fits the frequency too. False when it does not settle.
    bool run() {
        std::size_t steps = 0;
        if (!runAtFixedFrequency()) {
            return false;
        }
        const double start = frequency_;
        double change = 1.0;
        while (std::fabs(change) > 1e-8 * frequency_) {
            if (++steps > mostSteps || !step(3 + 2 * harmonics_)) {
                return false;
            }
            change = std::clamp(solution_.back() / halfSeconds_, -0.25 / halfSeconds_, 0.25 / halfSeconds_);
            frequency_ += change;
            if (!(std::fabs(frequency_ - start) < 1.0 / halfSeconds_) || !(frequency_ > 0.0)) {
                return false;
            }
        }
        return true;
    }

    FundamentalFit result() const {
        const double gain = groups_.gain(frequency_);
        const double firstSample =
            -(center_ * static_cast<double>(groups_.size) + 0.5 * static_cast<double>(groups_.size - 1)) /
            (groups_.rateHz * static_cast<double>(groups_.size));
        // a cos + b sin = Re((a - jb) e^(j w t)); a sine has the angle of j times that
        const Phasor atCenter = Phasor(0.0, 1.0) * Phasor(solution_[2], -solution_[3]) / (std::numbers::sqrt2 * gain);
        const double variance = residual_ * residual_;
        constexpr double hannNoise = 0.75;  // sum of squares over sum of the weights
        return {frequency_, std::sqrt(variance * hannNoise * inverse_) / halfSeconds_,
                atCenter * std::polar(1.0, 2.0 * pi * frequency_ * firstSample), residual_};
    }

private:
    /// Solves for the first `count` unknowns with the present frequency.
    bool step(std::size_t count) {
        NormalEquations equations(count);
        std::vector<double> row(count);
        double weights = 0.0;
        double squares = 0.0;
        for (std::size_t k = 0; k < groups_.means.size(); ++k) {
            const double u = (static_cast<double>(k) - center_) / (center_ + 0.5);
            const double weight = 0.5 + 0.5 * std::cos(pi * u);
            const double model = fillRow(u, row);
            const double rest = groups_.means[k] - model;
            weights += weight;
            squares += weight * rest * rest;
            equations.add(row, groups_.means[k], weight);
        }
        residual_ = std::sqrt(squares / weights);
        return equations.solve(solution_, inverse_);
    }

    /// One row of the model at u half lengths from the centre; gives the value of the present solution there.
    double fillRow(double u, std::vector<double>& row) const {
        const std::complex<double> turn = std::polar(1.0, 2.0 * pi * frequency_ * halfSeconds_ * u);
        std::complex<double> z = 1.0;
        row[0] = 1.0;
        row[1] = u;
        double slope = 0.0;
        for (std::size_t h = 1; h <= harmonics_; ++h) {
            z *= turn;
            row[2 * h] = z.real();
            row[2 * h + 1] = z.imag();
            if (!solution_.empty()) {
                slope += static_cast<double>(h) * (solution_[2 * h + 1] * z.real() - solution_[2 * h] * z.imag());
            }
        }
        if (row.size() > 2 + 2 * harmonics_) {
            row.back() = 2.0 * pi * u * slope;
        }
        double value = 0.0;
        for (std::size_t i = 0; i < std::min(solution_.size(), 2 + 2 * harmonics_); ++i) {
            value += solution_[i] * row[i];
        }
        return value;
    }

    const Groups& groups_;
    double center_;       // of the groups, in groups
    double halfSeconds_;  // half the length
    double frequency_;    // Hz
    std::size_t harmonics_;
    std::vector<double> solution_{};
    double inverse_ = 0.0;
    double residual_ = 0.0;
};

bool canBeFitted(std::size_t count, double rateHz, double nearHz) {
    return nearHz > 0.0 && rateHz > 4.0 * nearHz && static_cast<double>(count) / rateHz * nearHz >= leastCycles;
}

}  // namespace

std::optional<double> strongestLine(std::span<const double> samples, double rateHz, double lowestHz, double highestHz) {
    const std::size_t count = std::min(samples.size(), longestSpectrum);
    if (count < 4) {
        return std::nullopt;
    }
    const auto middle = samples.subspan((samples.size() - count) / 2, count);
    double mean = 0.0;
    for (const double x : middle) {
        mean += x / static_cast<double>(count);
    }
    int length = 8;
    while (static_cast<std::size_t>(length) < 2 * count) {
        length *= 2;
    }
    std::vector<double> weighted(count);
    for (std::size_t k = 0; k < count; ++k) {
        const double hann =
            0.5 - 0.5 * std::cos(2.0 * pi * (static_cast<double>(k) + 0.5) / static_cast<double>(count));
        weighted[k] = hann * (middle[k] - mean);
    }
    const coder::RealFft transform(length);
    std::vector<coder::creal_T> bins(static_cast<std::size_t>(transform.bins()));
    transform.forward(weighted, bins.data());
    const double binHz = rateHz / length;
    const auto magnitude = [&bins](std::size_t k) { return std::hypot(bins[k].re, bins[k].im); };
    const auto first = static_cast<std::size_t>(std::clamp(std::ceil(lowestHz / binHz), 1.0, 1.0 * length));
    const auto end = static_cast<std::size_t>(
        std::clamp(std::floor(highestHz / binHz) + 1.0, 0.0, static_cast<double>(bins.size() - 1)));
    std::size_t best = 0;
    for (std::size_t k = first; k < end; ++k) {
        best = magnitude(k) > (best == 0 ? 0.0 : magnitude(best)) ? k : best;
    }
    if (best == 0) {
        return std::nullopt;
    }
    const double before = std::log(magnitude(best - 1));
    const double at = std::log(magnitude(best));
    const double behind = std::log(magnitude(best + 1));
    const double curvature = before - 2.0 * at + behind;
    const double shift = curvature < 0.0 ? 0.5 * (before - behind) / curvature : 0.0;
    return (static_cast<double>(best) + std::clamp(std::isfinite(shift) ? shift : 0.0, -0.5, 0.5)) * binHz;
}

std::optional<FundamentalFit> fitFundamental(std::span<const double> samples, double rateHz, double nearHz) {
    if (!canBeFitted(samples.size(), rateHz, nearHz)) {
        return std::nullopt;
    }
    const Groups groups(samples, rateHz, nearHz);
    Fit fit(groups, nearHz);
    if (!fit.run()) {
        return std::nullopt;
    }
    return fit.result();
}

Phasor phasorAt(std::span<const double> samples, double rateHz, double frequencyHz) {
    if (canBeFitted(samples.size(), rateHz, frequencyHz)) {
        const Groups groups(samples, rateHz, frequencyHz);
        Fit fit(groups, frequencyHz);
        if (fit.runAtFixedFrequency()) {
            return fit.result().phasor;
        }
    }
    return phasorOf(samples, frequencyHz, rateHz);
}

}  // namespace rt305
