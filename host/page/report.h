#ifndef RT305_HOST_PAGE_REPORT_H
#define RT305_HOST_PAGE_REPORT_H

#include <string>

#include "measuring/full_measurement.h"
#include "measuring/library.h"

namespace rt305 {

/// Everything that `measure` tells of a recording, with its waveforms, spectra and harmonics, as one HTML page that
/// needs nothing beside itself. The same recording and settings give the same bytes.
std::string reportPage(const Recording& recording, const FullMeasurement& overview, const Library& library);

}  // namespace rt305

#endif
