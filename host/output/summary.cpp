#include "output/summary.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "base/text.h"
#include "measuring/power_methods.h"
#include "measuring/thd_gate.h"

namespace rt305 {

namespace {

using Cells = decltype(SummaryRow::figures);

/// Figures of the phases that are measured.
Cells byPhase(const PerPhase<double>& values, const Measurement& measurement, std::size_t firstChannel) {
    Cells figures{};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (measurement.measures(firstChannel + phase)) {
            figures[1 + phase] = values[phase];
        }
    }
    return figures;
}

Cells byPhase(const TotalAndPhases& values, const Measurement& measurement, std::size_t firstChannel) {
    return byPhase(PerPhase<double>{values[1], values[2], values[3]}, measurement, firstChannel);
}

void addVoltages(std::vector<SummaryRow>& rows, const FullMeasurement& full, const DerivedFigures& derived) {
    const Measurement& recorded = full.asRecorded();
    rows.push_back({"U", full.fromLineVoltages ? "Voltage U to the virtual neutral" : "Voltage U", "V", -1,
                    topic::voltage, 0.0, byPhase(*derived.voltages, recorded, 0)});
    if (derived.lineVoltages) {
        rows.push_back({"U_line", "Line voltage ab, bc, ca", "V", -1, topic::voltage, 0.0,
                        byPhase(*derived.lineVoltages, recorded, 0)});
    }
}

SummaryRow frequencyRow(const FullMeasurement& full, const Fundamentals& fundamentals) {
    SummaryRow row{"f", "Frequency f", "Hz", 3, topic::frequency};
    const bool isMeasured = full.isFrequencyMeasured && fundamentals.frequencyHz > 0.0;
    row.figures[0] = isMeasured ? fundamentals.frequencyHz : std::numeric_limits<double>::quiet_NaN();
    if (!isMeasured) {
        row.reasons[0] = full.frequencyHz > 0.0 ? "no two steady cycles" : "no fundamental";
    }
    return row;
}

/// Powers of all phases that have both channels, and in total.
void addPower(std::vector<SummaryRow>& rows, const Measurement& recorded, const PowerFigures& power) {
    const auto figures = [&recorded](const TotalAndPhases& values) {
        Cells all{values[0]};
        for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
            if (recorded.measures(phase) && recorded.measures(phaseTotal + phase)) {
                all[1 + phase] = values[1 + phase];
            }
        }
        return all;
    };
    double largest = 0.0;
    for (const double apparent : power.S) {
        largest = std::fmax(largest, apparent);
    }
    rows.push_back({"P", "Active power P", "W", -1, topic::activePower, largest, figures(power.P)});
    rows.push_back({"Q1", "Reactive power Q1", "var", -1, topic::reactivePower, largest, figures(power.Q1)});
    rows.push_back({"S", "Apparent power S", "VA", -1, topic::apparentPower, largest, figures(power.S)});
    rows.push_back({"PF", "Power factor PF", "", 3, topic::powerFactor, 0.0, figures(power.PF)});
}

SummaryRow thdRow(const Measurement& recorded, const FullResults& results, const ThdSet& set) {
    const bool ofCurrents = isCurrent(set.firstChannel);
    PerPhase<double> values{};
    SummaryRow row{ofCurrents ? "THD_I" : "THD_U", ofCurrents ? "THD of current" : "THD of voltage", "%", 2,
                   ofCurrents ? topic::currentThd : topic::voltageThd};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        row.reasons[1 + phase] = results.distortionDoubts[set.firstChannel + phase];
        values[phase] = row.reasons[1 + phase].empty()
                            ? parameterNamed(results.parameters[complexThreeWattmeter], set.parameters[phase]).value
                            : std::numeric_limits<double>::quiet_NaN();
    }
    row.figures = byPhase(values, recorded, set.firstChannel);
    return row;
}

/// Why there is no unbalance.
std::string reasonWithout(const std::optional<Unbalance>& unbalance, const FullMeasurement& full) {
    if (unbalance) {
        return std::isnan(unbalance->negativePercent) ? "samples are missing" : "";
    }
    const std::string obstacle = full.obstacleToComponents();
    return obstacle.empty() ? "there is hardly a fundamental" : obstacle;
}

/// Two rows; one with the reason when there is none.
void addUnbalance(std::vector<SummaryRow>& rows, const FullMeasurement& full, const std::optional<Unbalance>& unbalance,
                  bool ofCurrents) {
    const std::string name = ofCurrents ? "Unbalance of current " : "Unbalance of voltage ";
    const std::string letter = ofCurrents ? "I" : "U";
    SummaryRow row{ofCurrents ? "i2" : "u2", name + letter + "2/" + letter + "1", "%", 2,
                   ofCurrents ? topic::currentUnbalance : topic::voltageUnbalance};
    row.figures[0] = unbalance ? unbalance->negativePercent : std::numeric_limits<double>::quiet_NaN();
    row.reasons[0] = reasonWithout(unbalance, full);
    rows.push_back(row);
    if (unbalance && (ofCurrents || !full.fromLineVoltages)) {
        row.key = ofCurrents ? "i0" : "u0";
        row.label = name + letter + "0/" + letter + "1";
        row.figures[0] = unbalance->zeroPercent;
        rows.push_back(std::move(row));
    }
}

/// A figure with its unit, three digits and a metric prefix.
std::string withUnit(double value, const char* unit) {
    const auto [factor, symbol] = metricPrefixFor(std::fabs(value));
    return formatFixed(value / factor, decimalsFor(std::fabs(value / factor), 3)) + " " + symbol + unit;
}

}  // namespace

bool SummaryRow::needsRemarks() const {
    for (std::size_t i = 0; i < figures.size(); ++i) {
        if (figures[i] && (!std::isnan(*figures[i]) || reasons[i].empty())) {
            return true;
        }
    }
    return false;
}

SummaryTexts textsOf(const SummaryRow& row) {
    double largest = row.scale;
    for (const ResultTable::Cell& figure : row.figures) {
        largest = std::fmax(largest, std::fabs(figure.value_or(0.0)));
    }
    const MetricPrefix prefix = row.decimals < 0 ? metricPrefixFor(largest) : MetricPrefix{};
    const int decimals = row.decimals < 0 ? decimalsFor(largest / prefix.factor, 5) : row.decimals;
    SummaryTexts texts{.unit = prefix.symbol + row.unit};
    for (std::size_t i = 0; i < row.figures.size(); ++i) {
        texts.figures[i] = row.figures[i] ? formatFixed(*row.figures[i] / prefix.factor, decimals) : "";
    }
    return texts;
}

std::vector<SummaryRow> summaryOf(const FullMeasurement& full, const FullResults& results) {
    const Measurement& recorded = full.asRecorded();
    const DerivedFigures& derived = results.derived;
    std::vector<SummaryRow> rows;
    if (derived.voltages) {
        addVoltages(rows, full, derived);
    }
    if (derived.currents) {
        rows.push_back(
            {"I", "Current I", "A", -1, topic::current, 0.0, byPhase(*derived.currents, recorded, phaseTotal)});
    }
    rows.push_back(frequencyRow(full, results.fundamentals));
    if (derived.power) {
        addPower(rows, recorded, *derived.power);
    }
    for (const ThdSet& set : thdSets) {
        if (recorded.measures(set.firstChannel)) {
            rows.push_back(thdRow(recorded, results, set));
        }
    }
    if (recorded.measures(2)) {
        addUnbalance(rows, full, derived.voltageUnbalance, false);
    }
    if (recorded.measures(phaseTotal + 2)) {
        addUnbalance(rows, full, derived.currentUnbalance, true);
    }
    return rows;
}

std::vector<Remark> remarksOnOffsets(const FullMeasurement& full, const DerivedFigures& derived) {
    constexpr double notable = 0.05;
    std::vector<Remark> remarks;
    for (const auto& [rms, first, unit] :
         {std::tuple{&derived.voltages, std::size_t{0}, "V"}, {&derived.currents, phaseTotal, "A"}}) {
        std::vector<std::string> offsets;
        for (std::size_t phase = 0; *rms && phase < phaseTotal; ++phase) {
            const double mean = meanOf(full.asRecorded().samples[first + phase]);
            if (std::fabs(mean) >= notable * (**rms)[1 + phase]) {
                offsets.push_back(std::string(channelNames[first + phase]) + " " + withUnit(mean, unit));
            }
        }
        if (!offsets.empty()) {
            remarks.emplace_back("Without the mean, which is large: " + joined(offsets) + ".",
                                 isCurrent(first) ? topic::current : topic::voltage);
        }
    }
    return remarks;
}

}  // namespace rt305
