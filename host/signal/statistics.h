#ifndef RT305_HOST_SIGNAL_STATISTICS_H
#define RT305_HOST_SIGNAL_STATISTICS_H

#include <span>

namespace rt305 {

/// NaN where a value is not finite.
struct Statistics {
    double mean;
    double rms;
    double crestFactor;
    double range;  // the largest less the smallest sample
};

/// The statistics of a signal, as the library's time signals have them and to the same bits: samples that are exactly 0
/// count as missing and get the mean of the others, then the mean is subtracted, then each is multiplied by the
/// coefficient. The library would write every sample as text beside them. Makes no copy of the samples.
Statistics statisticsOf(std::span<const double> samples, double coefficient);

}  // namespace rt305

#endif
