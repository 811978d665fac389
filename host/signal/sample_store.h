#ifndef RT305_HOST_SIGNAL_SAMPLE_STORE_H
#define RT305_HOST_SIGNAL_SAMPLE_STORE_H

#include <array>
#include <span>
#include <vector>

#include "recording/channels.h"

namespace rt305 {

/// A block of samples of each channel, of one length; empty for a channel that is not measured.
using SampleBlock = PerChannel<std::span<const double>>;

/// The latest samples of a stream. A sample keeps its number, counted from the first of the stream.
class SampleStore {
public:
    void append(const SampleBlock& block);

    /// Forgets the samples before this number. Costs no more than appending them did.
    void dropBefore(std::size_t sample);

    std::size_t end() const { return end_; }

    /// The sample with this number, and those behind it.
    const double* from(std::size_t channel, std::size_t sample) const {
        return samples_[channel].data() + (sample - first_);
    }

private:
    PerChannel<std::vector<double>> samples_{};
    std::size_t first_ = 0;
    std::size_t end_ = 0;
};

/// The integrals of the four cubic Lagrange polynomials on -1, 0, 1 and 2 from 0 to u: an integral over part of the
/// step between two samples, from those two and their neighbours.
std::array<double, 4> integralOverPart(double u);

/// Weights of samples first, first + 1, ...
struct IntegralWeights {
    std::size_t first = 0;
    std::vector<double> weights{};
};

/// The weights whose sum of products with samples is the integral of a signal from `begin` to `end`, in units of a
/// sample: that of the cubic through each four samples. Needs the samples from floor(begin) - 1 to floor(end) + 2;
/// 1 <= begin, begin + 4 <= end. For a sine of 16 samples a cycle the mean square over a cycle is within 0.01 %.
void setIntegral(double begin, double end, IntegralWeights& result);

}  // namespace rt305

#endif
