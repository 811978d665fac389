#include "signal/harmonic_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>
#include <span>
#include <vector>

#include "base/sum.h"
#include "toolkit/simd.h"

namespace rt305 {

namespace {

using std::numbers::pi;

constexpr double leastCycles = 2.0;
constexpr double groupsPerCycle = 32.0;  // enough for ten harmonics
constexpr std::size_t mostHarmonics = 10;
constexpr int mostSteps = 30;
constexpr std::size_t block = 8;               // pairs of groups that are added side by side
constexpr std::size_t blocksPerRotation = 16;  // after which the angles are computed afresh

/// Samples are averaged in groups of neighbours, which costs no accuracy and saves most of the work at high rates. Two
/// groups at the same distance from the centre make a pair, as a model of even and odd functions has equal values there
/// but for signs. A group in the centre is a pair of its own, of half the weight. Signals of one length have one grid.
struct Grid {
    std::size_t count;  // of groups
    std::size_t size;
    double rateHz;                  // of the groups
    double halfSeconds;             // half the length
    std::vector<double> places{};   // of each pair from the centre on, in half lengths; padded to whole blocks
    std::vector<double> weights{};  // 0 for padding

    enum class Weight { hann, equal };

    Grid(std::size_t samples, double samplesPerSecond, double nearHz, Weight weight)
        : count(0),
          size(std::max<std::size_t>(1, static_cast<std::size_t>(samplesPerSecond / (groupsPerCycle * nearHz)))),
          rateHz(samplesPerSecond / static_cast<double>(size)),
          halfSeconds(0.0) {
        count = samples / size;
        halfSeconds = 0.5 * static_cast<double>(count) / rateHz;
        places.resize((pairs() + block - 1) / block * block);
        weights.resize(places.size());
        for (std::size_t i = 0; i < pairs(); ++i) {
            const std::size_t later = count / 2 + i;
            places[i] =
                (2.0 * static_cast<double>(later) - static_cast<double>(count - 1)) / static_cast<double>(count);
            weights[i] = (weight == Weight::hann ? 0.5 + 0.5 * std::cos(pi * places[i]) : 1.0) *
                         (later == count - 1 - later ? 0.5 : 1.0);
        }
    }

    std::size_t pairs() const { return (count + 1) / 2; }

    /// What averaging leaves of a sine of this frequency.
    double gain(double frequencyHz) const {
        const double half = pi * frequencyHz / (rateHz * static_cast<double>(size));
        return std::sin(half * static_cast<double>(size)) / (static_cast<double>(size) * std::sin(half));
    }
};

/// The groups of a signal.
struct Groups {
    const Grid& grid;
    std::vector<double> sums;         // of the means in a pair
    std::vector<double> differences;  // the later less the earlier

    Groups(std::span<const double> samples, const Grid& gridOfAll)
        : grid(gridOfAll), sums(grid.places.size()), differences(grid.places.size()) {
        for (std::size_t i = 0; i < grid.pairs(); ++i) {
            const std::size_t later = grid.count / 2 + i;
            const std::size_t earlier = grid.count - 1 - later;
            const double x = meanOf(samples.subspan(earlier * grid.size, grid.size));
            const double y = meanOf(samples.subspan(later * grid.size, grid.size));
            sums[i] = y + x;
            differences[i] = y - x;
        }
    }

    static double meanOf(std::span<const double> samples) {
        return std::accumulate(samples.begin(), samples.end(), 0.0) / static_cast<double>(samples.size());
    }
};

using Block = std::array<double, block>;

/// Weighted sums over the groups for a model of the fundamental and its harmonics. With z = e^(j angle) at the place u,
/// and the sum s and the difference d of the means in a pair, each has one value for a power m of z. Value: double, or
/// Block to add up several pairs side by side.
template <class Value>
struct Moments {
    std::array<Value, 2 * mostHarmonics + 1> cosine{};             // 2 Re z^m
    std::array<Value, 2 * mostHarmonics + 1> placeSine{};          // 2 u Im z^m
    std::array<Value, 2 * mostHarmonics + 1> squareCosine{};       // 2 u^2 Re z^m
    std::array<Value, mostHarmonics + 1> sumCosine{};              // s Re z^m
    std::array<Value, mostHarmonics + 1> sumPlaceSine{};           // s u Im z^m
    std::array<Value, mostHarmonics + 1> differenceSine{};         // d Im z^m
    std::array<Value, mostHarmonics + 1> differencePlaceCosine{};  // d u Re z^m
};

double totalOf(const Block& each) {
    return std::accumulate(each.begin(), each.end(), 0.0);
}

template <std::size_t count>
std::array<double, count> totals(const std::array<Block, count>& blocks) {
    std::array<double, count> sums;
    std::transform(blocks.begin(), blocks.end(), sums.begin(), totalOf);
    return sums;
}

ALWAYS_INLINE inline Block product(const Block& x, const Block& y, double factor = 1.0) {
    Block result;
    for (std::size_t i = 0; i < block; ++i) {
        result[i] = factor * x[i] * y[i];
    }
    return result;
}

ALWAYS_INLINE inline void addProduct(const Block& x, const Block& y, Block& sums) {
    for (std::size_t i = 0; i < block; ++i) {
        sums[i] += x[i] * y[i];
    }
}

ALWAYS_INLINE inline Block blockAt(const std::vector<double>& values, std::size_t first) {
    Block result;
    std::copy_n(values.data() + first, block, result.data());
    return result;
}

/// The turns of a block of pairs.
struct Turns {
    Block real;
    Block imaginary;

    ALWAYS_INLINE void multiply(const Turns& by) {
        for (std::size_t i = 0; i < block; ++i) {
            const double product = real[i] * by.real[i] - imaginary[i] * by.imaginary[i];
            imaginary[i] = real[i] * by.imaginary[i] + imaginary[i] * by.real[i];
            real[i] = product;
        }
    }
};

Turns turnsBy(const Block& angles) {
    Turns turns;
    for (std::size_t i = 0; i < block; ++i) {
        const auto z = std::polar(1.0, angles[i]);
        turns.real[i] = z.real();
        turns.imaginary[i] = z.imag();
    }
    return turns;
}

/// Calls visit(first pair, turns) for each block; the angle at the place u is u `angle`.
template <class Visit>
ALWAYS_INLINE inline void forBlocks(const Grid& grid, double angle, Visit visit) {
    Block ones;
    ones.fill(1.0);
    Block step;
    step.fill(angle * 2.0 * static_cast<double>(block) / static_cast<double>(grid.count));
    const Turns stepTurns = turnsBy(step);
    Turns turns{};
    for (std::size_t first = 0; first < grid.places.size(); first += block) {
        if (first / block % blocksPerRotation == 0) {
            turns = turnsBy(product(blockAt(grid.places, first), ones, angle));
        } else {
            turns.multiply(stepTurns);
        }
        visit(first, turns);
    }
}

ALWAYS_INLINE inline void addMoments(const Groups* groups, double angle, std::size_t harmonics,
                                     Moments<Block>* moments) {
    forBlocks(groups->grid, angle, [=](std::size_t first, const Turns& turns) ALWAYS_INLINE {
        const Block u = blockAt(groups->grid.places, first);
        const Block weight = blockAt(groups->grid.weights, first);
        const Block one = product(weight, {1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0}, 2.0);
        const Block place = product(one, u);
        const Block square = product(place, u);
        const Block sum = product(weight, blockAt(groups->sums, first));
        const Block difference = product(weight, blockAt(groups->differences, first));
        const Block sumPlace = product(sum, u);
        const Block differencePlace = product(difference, u);
        Turns power = {{1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0}, {}};
        for (std::size_t m = 0; m <= 2 * harmonics; ++m) {
            addProduct(one, power.real, moments->cosine[m]);
            addProduct(place, power.imaginary, moments->placeSine[m]);
            addProduct(square, power.real, moments->squareCosine[m]);
            if (m <= harmonics) {
                addProduct(sum, power.real, moments->sumCosine[m]);
                addProduct(sumPlace, power.imaginary, moments->sumPlaceSine[m]);
                addProduct(difference, power.imaginary, moments->differenceSine[m]);
                addProduct(differencePlace, power.real, moments->differencePlaceCosine[m]);
            }
            power.multiply(turns);
        }
    });
}

/// The correlation of a signal without its mean with the powers of z from 1 on.
struct HarmonicSums {
    const double* samples;
    double mean;
    std::vector<Block> cosines;
    std::vector<Block> sines;
};

/// Adds up the correlations of signals on a grid of single samples. `powers` has room for those of a block.
ALWAYS_INLINE inline void addHarmonics(const Grid* grid, double angle, std::span<Turns> powers,
                                       std::span<HarmonicSums> signals) {
    forBlocks(*grid, angle, [=](std::size_t first, const Turns& turns) ALWAYS_INLINE {
        Turns power = turns;
        for (Turns& each : powers) {
            each = power;
            power.multiply(turns);
        }
        const Block weight = blockAt(grid->weights, first);
        const std::size_t pairs = std::min(block, grid->pairs() - first);
        for (HarmonicSums& signal : signals) {
            const double* const later = signal.samples + grid->count / 2 + first;
            const double* const earlier = signal.samples + (grid->count - 1) / 2 - first;
            Block sum{};
            Block difference{};
            for (std::size_t i = 0; i < pairs; ++i) {
                sum[i] = weight[i] * (later[i] + *(earlier - i) - 2.0 * signal.mean);
                difference[i] = weight[i] * (later[i] - *(earlier - i));
            }
            Block* const cosines = signal.cosines.data();
            Block* const sines = signal.sines.data();
            for (std::size_t i = 0; i < powers.size(); ++i) {
                addProduct(sum, powers[i].real, cosines[i]);
                addProduct(difference, powers[i].imaginary, sines[i]);
            }
        }
    });
}

/// The weighted RMS of what a model leaves: offset and the cosine of each harmonic; drift and, as far as these go,
/// their sines.
ALWAYS_INLINE inline double residual(const Groups* groups, double angle, std::span<const double> cosines,
                                     std::span<const double> sines) {
    double squares = 0.0;
    double weights = 0.0;
    forBlocks(groups->grid, angle, [&, groups, cosines, sines](std::size_t first, const Turns& turns) ALWAYS_INLINE {
        Turns power = turns;
        Block even = blockAt(groups->sums, first);
        Block odd = blockAt(groups->differences, first);
        for (std::size_t i = 0; i < block; ++i) {
            even[i] = 0.5 * even[i] - cosines[0];
            odd[i] = 0.5 * odd[i] - sines[0] * groups->grid.places[first + i];
        }
        for (std::size_t h = 1; h < cosines.size(); ++h, power.multiply(turns)) {
            for (std::size_t i = 0; i < block; ++i) {
                even[i] -= cosines[h] * power.real[i];
                odd[i] -= sines[h] * power.imaginary[i];
            }
        }
        for (std::size_t i = 0; i < block; ++i) {
            const double weight = groups->grid.weights[first + i];
            weights += weight;
            squares += weight * (even[i] * even[i] + odd[i] * odd[i]);
        }
    });
    return std::sqrt(squares / weights);
}

/// Normal equations. The first `evenCount` unknowns do not meet the next `evenCount`; others meet all.
class NormalEquations {
public:
    NormalEquations(std::size_t unknowns, std::size_t evenCount)
        : right(unknowns), n_(unknowns), evenCount_(evenCount), matrix_(n_ * n_) {}

    /// An element of the lower triangle.
    double& at(std::size_t row, std::size_t column) { return matrix_[row * n_ + column]; }

    /// Solves by Cholesky's method. False when the unknowns cannot be told apart. `inverseOfLast` becomes the last
    /// diagonal element of the inverse matrix.
    bool solve(std::vector<double>& x, double& inverseOfLast) {
        if (!factorise()) {
            return false;
        }
        x = right;
        for (std::size_t i = 0; i < n_; ++i) {
            for (std::size_t k = firstOf(i); k < i; ++k) {
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

    std::vector<double> right;

private:
    /// The first column with an element in a row.
    std::size_t firstOf(std::size_t row) const { return row < evenCount_ || row >= 2 * evenCount_ ? 0 : evenCount_; }

    /// The product of the first `count` elements of two rows.
    double product(std::size_t i, std::size_t j, std::size_t count) {
        double sum = 0.0;
        for (std::size_t k = std::max(firstOf(i), firstOf(j)); k < count; ++k) {
            sum += at(i, k) * at(j, k);
        }
        return sum;
    }

    /// Replaces the matrix by its Cholesky factor. False when it is singular but for rounding.
    bool factorise() {
        constexpr double leastPivot = 1e-12;
        for (std::size_t i = 0; i < n_; ++i) {
            for (std::size_t j = firstOf(i); j < i; ++j) {
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
    std::size_t evenCount_;
    std::vector<double> matrix_;
};

/// The model and where its fit has got to. Unknowns: offset and the cosine of each harmonic; drift over half the length
/// and the sine of each; and last the correction of the frequency in units of 1 / half the length. Sums of products of
/// sines and cosines are those of their sums and differences, so the matrix takes 20 powers of a turn for each group.
class Fit {
public:
    Fit(const Groups& groups, double nearHz)
        : groups_(groups),
          frequency_(nearHz),
          harmonics_(static_cast<std::size_t>(
              std::clamp(static_cast<int>(0.45 * groups.grid.rateHz / nearHz), 1, static_cast<int>(mostHarmonics)))) {}

    /// Fits everything but the frequency. False when there are too few samples.
    bool runAtFixedFrequency() {
        findMoments();
        return step(false);
    }

    /// Fits the frequency too. False when it does not settle.
    bool run() {
        std::size_t steps = 0;
        if (!runAtFixedFrequency()) {
            return false;
        }
        const double halfSeconds = groups_.grid.halfSeconds;
        const double start = frequency_;
        for (double change = frequency_; std::fabs(change) > 1e-8 * frequency_;) {
            if (steps > 0) {
                findMoments();
            }
            if (++steps > mostSteps || !step(true)) {
                return false;
            }
            change = std::clamp(solution_.back() / halfSeconds, -0.25 / halfSeconds, 0.25 / halfSeconds);
            frequency_ += change;
            if (!(std::fabs(frequency_ - start) < 1.0 / halfSeconds) || !(frequency_ > 0.0)) {
                return false;
            }
        }
        return true;
    }

    Phasor phasor() const {
        const double firstSample =
            0.5 / (groups_.grid.rateHz * static_cast<double>(groups_.grid.size)) - groups_.grid.halfSeconds;
        // a cos + b sin = Re((a - jb) e^(j w t)); a sine has the angle of j times that
        const Phasor atCenter = Phasor(0.0, 1.0) * Phasor(solution_[1], -solution_[sineOf(1)]) /
                                (std::numbers::sqrt2 * groups_.grid.gain(frequency_));
        return atCenter * std::polar(1.0, 2.0 * pi * frequency_ * firstSample);
    }

    FundamentalFit result() const {
        const double residual = residualOf();
        constexpr double hannNoise = 0.75;  // sum of squares over sum of the weights
        return {frequency_, std::sqrt(residual * residual * hannNoise * inverse_) / groups_.grid.halfSeconds, phasor(),
                residual};
    }

private:
    /// The place of the sine of a harmonic among the unknowns; of the drift for 0.
    std::size_t sineOf(std::size_t harmonic) const { return harmonics_ + 1 + harmonic; }
    double angle() const { return 2.0 * pi * frequency_ * groups_.grid.halfSeconds; }

    void findMoments() {
        Moments<Block> sums;
        coder::vectorized<addMoments>(&groups_, angle(), harmonics_, &sums);
        moments_ = {totals(sums.cosine),
                    totals(sums.placeSine),
                    totals(sums.squareCosine),
                    totals(sums.sumCosine),
                    totals(sums.sumPlaceSine),
                    totals(sums.differenceSine),
                    totals(sums.differencePlaceCosine)};
    }

    /// Solves for the unknowns, or for all but the last, with the moments of the present frequency.
    bool step(bool withFrequency) {
        const std::size_t evenCount = harmonics_ + 1;
        NormalEquations equations(2 * evenCount + (withFrequency ? 1 : 0), evenCount);
        for (std::size_t h = 0; h <= harmonics_; ++h) {
            for (std::size_t k = 0; k <= h; ++k) {
                const double near = moments_.cosine[h - k];
                const double far = moments_.cosine[h + k];
                equations.at(h, k) = 0.5 * (near + far);
                equations.at(sineOf(h), sineOf(k)) = 0.5 * (near - far);
            }
            equations.at(sineOf(h), sineOf(0)) = moments_.placeSine[h];
            equations.right[h] = moments_.sumCosine[h];
            equations.right[sineOf(h)] = moments_.differenceSine[h];
        }
        equations.at(sineOf(0), sineOf(0)) = moments_.squareCosine[0];
        equations.right[sineOf(0)] = moments_.differencePlaceCosine[0];
        if (withFrequency) {
            addFrequency(equations);
        }
        return equations.solve(solution_, inverse_);
    }

    /// The last row, of 2 pi u times the sum of h (b cos - a sin), where a and b are the present solution.
    void addFrequency(NormalEquations& equations) const {
        const std::size_t last = 2 * (harmonics_ + 1);
        const auto a = [this](std::size_t h) { return 2.0 * pi * static_cast<double>(h) * solution_[h]; };
        const auto b = [this](std::size_t h) { return 2.0 * pi * static_cast<double>(h) * solution_[sineOf(h)]; };
        for (std::size_t h = 1; h <= harmonics_; ++h) {
            equations.at(last, 0) -= a(h) * moments_.placeSine[h];
            equations.at(last, sineOf(0)) += b(h) * moments_.squareCosine[h];
            for (std::size_t k = 1; k <= harmonics_; ++k) {
                const double sum = moments_.placeSine[h + k];
                const double difference = placeSineOfDifference(h, k);
                equations.at(last, k) -= 0.5 * a(h) * (sum + difference);
                equations.at(last, sineOf(k)) += 0.5 * b(h) * (sum - difference);
                const double far = moments_.squareCosine[h + k];
                const double near = moments_.squareCosine[std::max(h, k) - std::min(h, k)];
                equations.at(last, last) += 0.5 * (b(h) * b(k) * (near + far) + a(h) * a(k) * (near - far));
            }
            equations.right[last] += b(h) * moments_.differencePlaceCosine[h] - a(h) * moments_.sumPlaceSine[h];
        }
    }

    /// The moment of u Im z^(h - k).
    double placeSineOfDifference(std::size_t h, std::size_t k) const {
        return h >= k ? moments_.placeSine[h - k] : -moments_.placeSine[k - h];
    }

    /// The weighted RMS of what the solution leaves.
    double residualOf() const {
        return coder::vectorized<residual>(&groups_, angle(), std::span(solution_).first(sineOf(0)),
                                           std::span(solution_).subspan(sineOf(0)));
    }

    const Groups& groups_;
    double frequency_;  // Hz
    std::size_t harmonics_;
    Moments<double> moments_{};
    std::vector<double> solution_{};
    double inverse_ = 0.0;
};

/// Least squares of offset and sine.
Phasor sineIn(std::span<const double> samples, double rateHz, double frequencyHz) {
    NormalEquations equations(3, 0);
    for (std::size_t k = 0; k < samples.size(); ++k) {
        const Phasor z = std::polar(1.0, 2.0 * pi * frequencyHz * static_cast<double>(k) / rateHz);
        const std::array<double, 3> row{1.0, z.real(), z.imag()};
        for (std::size_t i = 0; i < row.size(); ++i) {
            for (std::size_t j = 0; j <= i; ++j) {
                equations.at(i, j) += row[i] * row[j];
            }
            equations.right[i] += row[i] * samples[k];
        }
    }
    std::vector<double> solution;
    double unused = 0.0;
    return equations.solve(solution, unused) ? Phasor(solution[2], solution[1]) / std::numbers::sqrt2 : 0.0;
}

bool canBeFitted(std::size_t count, double rateHz, double nearHz) {
    return nearHz > 0.0 && rateHz > 4.0 * nearHz && static_cast<double>(count) / rateHz * nearHz >= leastCycles;
}

}  // namespace

std::optional<FundamentalFit> fitFundamental(std::span<const double> samples, double rateHz, double nearHz) {
    if (!canBeFitted(samples.size(), rateHz, nearHz)) {
        return std::nullopt;
    }
    const Grid grid(samples.size(), rateHz, nearHz, Grid::Weight::hann);
    const Groups groups(samples, grid);
    Fit fit(groups, nearHz);
    if (!fit.run()) {
        return std::nullopt;
    }
    return fit.result();
}

std::optional<FundamentalFit> findFundamental(const LineSearch& search, std::span<const double> samples, double rateHz,
                                              double lowestHz, double highestHz) {
    const auto line = search.strongestLine(samples, rateHz, lowestHz, highestHz);
    auto fit = line ? fitFundamental(middleOf(samples), rateHz, *line) : std::nullopt;
    return fit && fit->residual <= std::abs(fit->phasor) ? fit : std::nullopt;
}

Phasor phasorAt(std::span<const double> samples, double rateHz, double frequencyHz) {
    if (canBeFitted(samples.size(), rateHz, frequencyHz)) {
        const Grid grid(samples.size(), rateHz, frequencyHz, Grid::Weight::equal);
        const Groups groups(samples, grid);
        Fit fit(groups, frequencyHz);
        if (fit.runAtFixedFrequency()) {
            return fit.phasor();
        }
    }
    return sineIn(samples, rateHz, frequencyHz);
}

std::vector<std::vector<double>> harmonicLevels(const std::vector<std::span<const double>>& signals, double rateHz,
                                                double frequencyHz, std::size_t orders) {
    if (signals.empty()) {
        return {};
    }
    const std::size_t length = signals[0].size();
    const auto count = static_cast<double>(length);
    const Grid single(length, rateHz, rateHz, Grid::Weight::hann);
    std::vector<HarmonicSums> sums;
    sums.reserve(signals.size());
    for (const std::span<const double> samples : signals) {
        const double mean = sumOf(length, [samples](std::size_t k) { return samples[k]; }) / count;
        sums.push_back({samples.data(), mean, std::vector<Block>(orders), std::vector<Block>(orders)});
    }
    std::vector<Turns> powers(orders);
    coder::vectorized<addHarmonics>(&single, 2.0 * pi * frequencyHz * single.halfSeconds, std::span(powers),
                                    std::span(sums));
    std::vector<std::vector<double>> levels(signals.size(), std::vector<double>(orders));
    for (std::size_t i = 0; i < signals.size(); ++i) {
        for (std::size_t order = 1; order <= orders; ++order) {
            const bool isThere = static_cast<double>(order) * frequencyHz < 0.5 * rateHz;
            const double sum = std::hypot(totalOf(sums[i].cosines[order - 1]), totalOf(sums[i].sines[order - 1]));
            levels[i][order - 1] = isThere ? 2.0 * sum * std::numbers::sqrt2 / count : 0.0;
        }
    }
    return levels;
}

}  // namespace rt305
