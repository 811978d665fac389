#ifndef RT305_HOST_OUTPUT_FULL_DOCUMENT_H
#define RT305_HOST_OUTPUT_FULL_DOCUMENT_H

#include <span>

#include "measuring/full_measurement.h"
#include "measuring/measure_all.h"
#include "output/document.h"
#include "recording/recording.h"

namespace rt305 {

/// The document of `rt305 measure`. Its tables: "parameters"; "power" of voltages and currents, otherwise "signals";
/// then "derived" and "highest_harmonics".
ResultDocument fullDocument(const Recording& recording, const FullMeasurement& full, const FullResults& results);

/// The figures of the wide CSV of `rt305 measure`, the same for every recording: all of "parameters", "power" and
/// "derived".
std::span<const FigureName> figuresOfFullDocument();

}  // namespace rt305

#endif
