#ifndef RT305_HOST_SIGNAL_LINE_SEARCH_H
#define RT305_HOST_SIGNAL_LINE_SEARCH_H

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace coder {
class RealFft;
}

namespace rt305 {

/// The middle 65536 of the samples, or all.
std::span<const double> middleOf(std::span<const double> samples);

/// Searches signals of one length for their strongest line. They share a window and a transform.
class LineSearch {
public:
    explicit LineSearch(std::size_t count);  // samples of each signal
    ~LineSearch();
    LineSearch(LineSearch&&) noexcept;
    LineSearch& operator=(LineSearch&&) noexcept;

    /// The strongest line between two frequencies in Hz, to a fraction of a bin: under a Hann window, the largest peak
    /// and a parabola through the logarithms of its neighbours. Nothing when the range holds no peak, the rate is not a
    /// positive number, or the samples are constant, hold NaN or are of another number. Of a long signal the middle is
    /// looked at.
    std::optional<double> strongestLine(std::span<const double> samples, double rateHz, double lowestHz,
                                        double highestHz) const;

private:
    std::size_t count_;
    std::vector<double> window_;
    std::unique_ptr<coder::RealFft> transform_;
};

/// The same for one signal.
inline std::optional<double> strongestLine(std::span<const double> samples, double rateHz, double lowestHz,
                                           double highestHz) {
    return LineSearch(samples.size()).strongestLine(samples, rateHz, lowestHz, highestHz);
}

}  // namespace rt305

#endif
