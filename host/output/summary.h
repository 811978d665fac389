#ifndef RT305_HOST_OUTPUT_SUMMARY_H
#define RT305_HOST_OUTPUT_SUMMARY_H

#include <array>
#include <string>
#include <vector>

#include "measuring/full_measurement.h"
#include "measuring/measure_all.h"
#include "output/result_table.h"

namespace rt305 {

/// A quantity that people look for first.
struct SummaryRow {
    std::string key;  // "U", "P"
    std::string label;
    std::string unit;    // V, A, Hz, W, var, VA, %; empty for a factor
    int decimals;        // of the figures; negative: as many as show five digits of the largest, with a metric prefix
    unsigned topics;     // of the remarks that concern it
    double scale = 0.0;  // that decides on digits and prefix beside the figures
    std::array<ResultTable::Cell, 1 + phaseTotal> figures{};  // total, a, b, c
    std::array<std::string, 1 + phaseTotal> reasons{};        // why a figure is missing, in a few words; or empty

    /// Whether the remarks on it matter: it has a figure, or misses one without a reason of its own.
    bool needsRemarks() const;
};

/// The figures of a row as texts, empty where it is not defined, "-" where it is missing; and the unit with its prefix.
struct SummaryTexts {
    std::array<std::string, 1 + phaseTotal> figures{};
    std::string unit{};
};
SummaryTexts textsOf(const SummaryRow& row);

/// Voltages, currents, frequency, power by IEEE Std 1459, THD and unbalance, as far as they are measured. RMS values
/// and powers are those of the samples at their own rate, THD is the library's.
std::vector<SummaryRow> summaryOf(const FullMeasurement& full, const FullResults& results);

/// Channels with a mean of 5 % of their RMS or more, which these figures leave out; nothing when there are none.
std::vector<Remark> remarksOnOffsets(const FullMeasurement& full, const DerivedFigures& derived);

}  // namespace rt305

#endif
