#ifndef RT305_HOST_PAGE_REPORT_H
#define RT305_HOST_PAGE_REPORT_H

#include <string>

#include "measuring/full_measurement.h"
#include "measuring/measure_all.h"
#include "output/quality_limits.h"
#include "page/page_texts.h"
#include "recording/recording.h"

namespace rt305 {

struct Report {
    std::string page;
    std::string row;  // of it in an index
};

/// The results of `rt305 measure` with waveforms, spectra and harmonics, as one HTML page that needs no other file. The
/// same recording, settings, texts and limits give the same bytes. `results` include spectra and statistics. `pageName`
/// is what the index links to. Waveforms and events are those of all samples, also behind the last whole cycle.
Report reportOf(const Recording& recording, FullMeasurement full, const FullResults& results, const PageTexts& texts,
                const LimitSet& limits, const std::string& pageName);

}  // namespace rt305

#endif
