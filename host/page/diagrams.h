#ifndef RT305_HOST_PAGE_DIAGRAMS_H
#define RT305_HOST_PAGE_DIAGRAMS_H

#include <string>
#include <vector>

#include "measuring/fundamentals.h"
#include "measuring/result_texts.h"
#include "quality/results.h"

namespace rt305 {

/// Drawings for the page as SVG, in the colours of its style sheet.

/// The fundamentals as arrows. Ua, or else Ia, points to the right, and angles count counter-clockwise. The largest
/// voltage reaches the outer circle, the largest current the inner one.
std::string phasorDiagram(const Fundamentals& fundamentals);

/// The harmonics from the second on in percent of the fundamental, channels side by side at each order.
std::string harmonicBars(const std::vector<Harmonics>& channels);

/// Duration, on a logarithmic axis from 10 ms to a minute, and residual or largest voltage of each dip, swell and
/// interruption, with the thresholds as lines.
std::string eventDiagram(const QualityResults& results);

}  // namespace rt305

#endif
