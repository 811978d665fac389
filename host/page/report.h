#ifndef RT305_HOST_PAGE_REPORT_H
#define RT305_HOST_PAGE_REPORT_H

#include <string>

#include "measuring/full_measurement.h"
#include "measuring/measure_all.h"
#include "recording/recording.h"

namespace rt305 {

/// The results of `rt305 measure` with waveforms, spectra and harmonics, as one HTML page that needs no other file. The
/// same recording and settings give the same bytes. `results` include spectra and statistics.
std::string reportPage(const Recording& recording, const FullMeasurement& full, const FullResults& results);

}  // namespace rt305

#endif
