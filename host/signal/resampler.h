#ifndef RT305_HOST_SIGNAL_RESAMPLER_H
#define RT305_HOST_SIGNAL_RESAMPLER_H

#include <cstddef>
#include <vector>

namespace rt305 {

/// Resampling keeps amplitudes up to this share of half the lower of the two rates.
inline constexpr double resampledBandwidth = 0.91;

/// Resamples `count` samples from `first` on: round(count * toHz / fromHz) samples, without filter delay. The first one
/// is at the time of samples[first], exactly for ratios of small integers, otherwise to within 0.3 % of a new period.
/// The shift is equal for channels of equal rate, so angles between them are exact.
///
/// The filter has linear phase; its passband ends at `resampledBandwidth` of half the lower rate, its stopband begins
/// at that half; errors are below 1e-6 of the amplitude. It also uses the samples before and after the given ones, and
/// linear prediction beyond the ends of `samples`, so that sines keep this accuracy up to the last sample. NaN are
/// interpolated linearly for the filter; the new samples in their place are NaN. Equal rates give an exact copy. Time
/// and memory grow with the old and new samples; throws std::bad_alloc when memory runs out.
std::vector<double> resampled(const std::vector<double>& samples, std::size_t first, std::size_t count, double fromHz,
                              double toHz);

}  // namespace rt305

#endif
