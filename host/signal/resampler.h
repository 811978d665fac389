#ifndef RT305_HOST_SIGNAL_RESAMPLER_H
#define RT305_HOST_SIGNAL_RESAMPLER_H

#include <cstddef>
#include <vector>

namespace rt305 {

/// The share of half the lower of the two rates up to which resampling keeps amplitudes.
inline constexpr double resampledBandwidth = 0.91;

/// A stretch of samples as it would have been taken at another rate: round(count * toHz / fromHz) of them, without the
/// filter's delay. The first is at the time of samples[first] to within 0.3 % of a new period, and exactly for ratios
/// of small numbers; channels of one rate keep their angles whatever it is.
///
/// Linear phase, flat to `resampledBandwidth` of half the lower of the two rates and shut from that half on, with
/// errors below 1e-6 of the amplitude. What lies before and behind the stretch is used where there is any, and linear
/// prediction beyond the ends of `samples`, so that sines keep that accuracy to the last sample. NaN are bridged by
/// straight lines, and the new samples in their place are NaN. Equal rates give the stretch as it is.
std::vector<double> resampled(const std::vector<double>& samples, std::size_t first, std::size_t count, double fromHz,
                              double toHz);

}  // namespace rt305

#endif
