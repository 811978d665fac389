#ifndef RT305_HOST_RESAMPLER_H
#define RT305_HOST_RESAMPLER_H

#include <cstddef>
#include <vector>

namespace rt305 {

/// The share of half the lower of the two rates up to which resampling keeps amplitudes.
inline constexpr double resampledBandwidth = 0.91;

/// A stretch of samples as it would have been taken at another rate: round(count * toHz / fromHz) of them, the first at
/// the time of samples[first], without the filter's delay.
///
/// Linear phase, flat to `resampledBandwidth` of half the lower of the two rates and shut from that half on, with
/// errors below 1e-7 of the amplitude away from the ends of `samples`. What lies before and behind the stretch is used
/// where there is any; beyond the ends the samples are continued by their reflection in the end point, which a sine
/// follows to a few parts in a hundred within the first sample or two. NaN are bridged by straight lines, and the new
/// samples in the gap are NaN. Equal rates give the stretch as it is.
std::vector<double> resampled(const std::vector<double>& samples, std::size_t first, std::size_t count, double fromHz,
                              double toHz);

}  // namespace rt305

#endif
