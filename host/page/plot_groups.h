#ifndef RT305_HOST_PAGE_PLOT_GROUPS_H
#define RT305_HOST_PAGE_PLOT_GROUPS_H

#include <optional>

#include "measuring/full_measurement.h"
#include "measuring/measure_all.h"
#include "output/quality_limits.h"
#include "page/plots.h"
#include "quality/results.h"
#include "recording/recording.h"

namespace rt305 {

/// The plots of a page. Their curves are views of the samples, traces and spectra. A group without panels has nothing
/// to draw; channels that are constant are left out.

/// The samples as recorded. First shown are ten cycles: around the trigger, else around the first event, else the first
/// ones.
PlotGroup waveformPlots(const Recording& recording, const FullMeasurement& full,
                        const std::optional<QualityResults>& quality);

/// RMS of each cycle and the frequency over time, with the limits of voltage and the thresholds of events that it
/// passes.
PlotGroup tracePlots(const QualityResults& quality, const PlotGroup& waveforms, const LimitSet& limits);

/// The spectra in dB.
PlotGroup spectrumPlots(const FullResults& results);

/// The channels that are measured and constant, "Ia, Ib and Ic are constant: ..."; empty without any.
std::string constantChannels(const Measurement& recorded);

/// What of a group is drawn one by one: "Every sample from 0.1 s to 1.1 s, elsewhere bands from the smallest to the
/// largest value of 0.25 s each." Empty when it is all.
std::string describeStretch(const PlotGroup& group);

}  // namespace rt305

#endif
