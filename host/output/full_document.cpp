#include "output/full_document.h"

#include <cmath>

#include "measuring/power_methods.h"
#include "output/remarks.h"
#include "output/result_tables.h"

namespace rt305 {

namespace {

using Cell = ResultTable::Cell;

constexpr std::size_t harmonicsListed = 5;

/// What a power method's figures mean, briefly; docs/power-methods.md has the details. In the order of powerMethods.
struct PowerWording {
    const char* label;
    const char* meaning;
};
constexpr PowerWording powerWordings[] = {
    {"3 W complex",
     "true P; Q summed over the harmonics (Budeanu), positive when the current lags; S = hypot(P, Q) per phase."},
    {"3 W", "true P; Q = sqrt(S^2 - P^2) per phase, all power that is not active, unsigned; S = U I per phase."},
    {"2 W",
     "from Uab, Ucb, Ia and Ic, so without the power of a neutral current: total RMS values at the angle of the "
     "fundamentals; S = hypot(P, Q)."},
    {"2 W phase", "like 2 W, but magnitudes only: P is right up to 60 degrees, Q from 30 degrees on."},
};
static_assert(std::size(powerWordings) == std::size(powerMethods));

/// Power by all methods; values of a phase where a method gives them.
ResultTable powerTable(const std::vector<Parameters>& byMethod) {
    ResultTable table{.name = "power", .title = "Power by method"};
    for (std::size_t method = 0; method < byMethod.size(); ++method) {
        table.columns.push_back({powerMethods[method].name, powerWordings[method].label, ""});
    }
    const char* const where[] = {"", ", a", ", b", ", c"};
    for (const QuantityRow& quantity : powerRows) {
        for (std::size_t i = 0; i < quantity.names.size(); ++i) {
            const std::string name = quantity.names[i];
            if (parameterNamed(byMethod[0], name).unit.empty()) {
                continue;  // a phase that is not measured
            }
            std::vector<Cell> cells;
            for (std::size_t method = 0; method < byMethod.size(); ++method) {
                const bool isGiven = i == 0 || powerMethods[method].givesPhases;
                cells.push_back(isGiven ? Cell(parameterNamed(byMethod[method], name).value) : std::nullopt);
            }
            table.addRow({name, quantity.label + std::string(where[i]), parameterNamed(byMethod[0], name).unit},
                         std::move(cells));
        }
    }
    return table;
}

/// The largest harmonics of every channel by order and percent, without the fundamental.
ResultTable highestHarmonicsTable(const std::vector<KindResults<Harmonics>>& kinds) {
    ResultTable table{.name = "highest_harmonics",
                      .title = "Highest harmonics, order and % of the fundamental",
                      .unitsByColumn = true};
    std::vector<std::vector<Cell>> rows(harmonicsListed);
    for (const auto& kind : kinds) {
        for (const Harmonics& channel : kind.channels) {
            table.columns.push_back({channel.channel + "_order", channel.channel, "", 0});
            table.columns.push_back({channel.channel + "_percent", "%", "%", 2});
            const auto percents = percentsOf(channel);
            const auto orders = largestHarmonics(channel, harmonicsListed);
            for (std::size_t rank = 0; rank < harmonicsListed; ++rank) {
                const bool isGiven = rank < orders.size();
                rows[rank].push_back(isGiven ? Cell(static_cast<double>(orders[rank])) : std::nullopt);
                rows[rank].push_back(isGiven ? Cell(percents[orders[rank] - 1]) : std::nullopt);
            }
        }
    }
    for (std::size_t rank = 0; rank < harmonicsListed; ++rank) {
        const std::string number = std::to_string(rank + 1);
        table.addRow({number, number, ""}, std::move(rows[rank]));
    }
    return table;
}

std::vector<Cell> byPhase(const PerPhase<double>& values, bool isThreePhase) {
    return isThreePhase ? std::vector<Cell>{std::nullopt, values[0], values[1], values[2]}
                        : std::vector<Cell>{std::nullopt, values[0], std::nullopt, std::nullopt};
}

std::vector<Cell> inTotal(double value) {
    return {value, std::nullopt, std::nullopt, std::nullopt};
}

ResultTable derivedTable(const FullMeasurement& full, const FullResults& results) {
    const DerivedFigures& derived = results.derived;
    const bool isThreePhase = full.measurement.isThreePhase();
    ResultTable table = phaseTable("derived", "Computed by rt305, not by the library");
    table.addRow({"fine_frequency", "Fundamental", "Hz", 4}, byPhase(results.fundamentals.frequencies, isThreePhase));
    const auto offsets = [&full, isThreePhase](std::size_t first) {
        const auto* const samples = &full.asRecorded.samples[first];
        return byPhase({meanOf(samples[0]), meanOf(samples[1]), meanOf(samples[2])}, isThreePhase);
    };
    if (full.measurement.hasVoltages()) {
        table.addRow({"voltage_offset", "Mean of U, which is removed", "V"}, offsets(0));
    }
    if (full.measurement.hasCurrents()) {
        table.addRow({"current_offset", "Mean of I, which is removed", "A"}, offsets(phaseTotal));
    }
    if (const auto& factors = derived.powerFactors) {
        auto cells = byPhase({(*factors)[1], (*factors)[2], (*factors)[3]}, isThreePhase);
        cells[0] = (*factors)[0];
        table.addRow({"power_factor", "Power factor P / (U I)", "", 4}, std::move(cells));
    }
    if (derived.currentLags) {
        table.addRow({"current_lag", "Angle by which I lags U", "deg", 2}, byPhase(*derived.currentLags, isThreePhase));
    }
    if (derived.voltageLags) {
        table.addRow({"voltage_lag", "Angle by which U lags Ua", "deg", 2},
                     byPhase(*derived.voltageLags, isThreePhase));
    }
    if (const auto& unbalance = derived.voltageUnbalance) {
        table.addRow({"voltage_unbalance_u2", "Unbalance U2 / U1", "%", 3}, inTotal(unbalance->negativePercent));
        if (!full.fromLineVoltages) {
            table.addRow({"voltage_unbalance_u0", "Unbalance U0 / U1", "%", 3}, inTotal(unbalance->zeroPercent));
        }
    }
    if (const auto& unbalance = derived.currentUnbalance) {
        table.addRow({"current_unbalance_i2", "Unbalance I2 / I1", "%", 3}, inTotal(unbalance->negativePercent));
        table.addRow({"current_unbalance_i0", "Unbalance I0 / I1", "%", 3}, inTotal(unbalance->zeroPercent));
    }
    if (derived.currentSum) {
        table.addRow({"sum_of_currents", "Sum of the currents", "A"}, inTotal(derived.currentSum->ofSum));
    }
    removeEmptyColumns(table);
    return table;
}

/// The parameters, and power where there are voltages and currents.
void addParameters(const FullMeasurement& full, const FullResults& results, ResultDocument& document) {
    const Parameters& parameters = results.parameters[complexThreeWattmeter];
    document.tables.push_back(electricalTable(parameters));
    document.settings = describeWiring(full.measurement, full.fromLineVoltages) + ", fundamental inside " +
                        full.measurement.window().text();
    Measurement measured = full.measurement;
    if (measured.isCombined()) {
        document.tables.push_back(powerTable(results.parameters));
        measured.settings.flags |= powerMethods[complexThreeWattmeter].flag;
    }
    const auto remarks = remarksOn(parameters, measured);
    document.remarks.insert(document.remarks.end(), remarks.begin(), remarks.end());
    if (!std::isnan(parameterNamed(parameters, "P").value)) {
        for (std::size_t method = 0; method < results.parameters.size(); ++method) {
            const auto& [label, meaning] = powerWordings[method];
            document.remarks.push_back(std::string(label) + " (" + powerMethods[method].name + "): " + meaning);
        }
    }
}

}  // namespace

ResultDocument fullDocument(const Recording& recording, const FullMeasurement& full, const FullResults& results) {
    const Measurement& measurement = full.measurement;
    ResultDocument document = documentOf(recording, measurement, results.libraryVersion);
    for (const std::string& sentence : results.wiring) {
        document.remarks.push_back("Wiring: " + sentence);
    }
    document.rawTexts = results.parameterTexts;
    addParameters(full, results, document);
    if (!measurement.isCombined()) {
        const auto& signals = results.signals.at(0);
        document.rawTexts.push_back(signals.text);
        document.tables.push_back(signalTable("signals", signals.channels));
    }
    for (const auto& kind : results.harmonics) {
        document.rawTexts.push_back(kind.text);
    }
    document.tables.push_back(derivedTable(full, results));
    document.tables.push_back(highestHarmonicsTable(results.harmonics));
    return document;
}

}  // namespace rt305
