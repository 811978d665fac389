#include "output/full_document.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <iterator>
#include <limits>

#include "base/text.h"
#include "measuring/power_methods.h"
#include "measuring/thd_gate.h"
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
        table.columns.push_back({keyOf(powerMethods[method]), powerWordings[method].label, ""});
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
    std::size_t longest = 0;
    for (const auto& kind : kinds) {
        for (const Harmonics& channel : kind.channels) {
            table.columns.push_back({"order", channel.channel, "", 0, channel.channel});
            table.columns.push_back({"percent", "%", "%", 2, channel.channel});
            const auto percents = percentsOf(channel);
            const auto orders = largestHarmonics(channel, harmonicsListed);
            longest = std::max(longest, orders.size());
            for (std::size_t rank = 0; rank < harmonicsListed; ++rank) {
                const bool isGiven = rank < orders.size();
                rows[rank].push_back(isGiven ? Cell(static_cast<double>(orders[rank])) : std::nullopt);
                rows[rank].push_back(isGiven ? Cell(percents[orders[rank] - 1]) : std::nullopt);
            }
        }
    }
    for (std::size_t rank = 0; rank < longest; ++rank) {
        const std::string number = std::to_string(rank + 1);
        table.addRow({number, number, ""}, std::move(rows[rank]));
    }
    return table;
}

/// Where a derived quantity has figures.
enum class Where { total, phases, both };

struct DerivedRow {
    const char* key;
    const char* label;
    const char* unit;
    Where where;
    int mostDecimals = 6;
};
constexpr DerivedRow derivedRows[] = {
    {"frequency", "Frequency", "Hz", Where::both, 4},
    {"U", "Voltage U", "V", Where::phases},
    {"voltage_offset", "Mean of U, which is removed", "V", Where::phases},
    {"I", "Current I", "A", Where::phases},
    {"current_offset", "Mean of I, which is removed", "A", Where::phases},
    {"P", "Active power P", "W", Where::both},
    {"S", "Apparent power S = U I", "VA", Where::both},
    {"N", "Non-active power N", "var", Where::both},
    {"PF", "Power factor P / S", "", Where::both, 4},
    {"P1", "Fundamental P1", "W", Where::both},
    {"Q1", "Fundamental Q1", "var", Where::both},
    {"S1", "Fundamental S1", "VA", Where::both},
    {"DPF", "Displacement factor P1 / S1", "", Where::both, 4},
    {"S_vector", "Vector S", "VA", Where::total},
    {"S_arithmetic", "Arithmetic S", "VA", Where::total},
    {"S_effective", "Effective S", "VA", Where::total},
    {"U1", "Symmetrical component U1", "V", Where::total},
    {"U1_angle", "Angle of U1", "deg", Where::total, 2},
    {"U2", "Symmetrical component U2", "V", Where::total},
    {"U2_angle", "Angle of U2", "deg", Where::total, 2},
    {"U0", "Symmetrical component U0", "V", Where::total},
    {"U0_angle", "Angle of U0", "deg", Where::total, 2},
    {"I1", "Symmetrical component I1", "A", Where::total},
    {"I1_angle", "Angle of I1", "deg", Where::total, 2},
    {"I2", "Symmetrical component I2", "A", Where::total},
    {"I2_angle", "Angle of I2", "deg", Where::total, 2},
    {"I0", "Symmetrical component I0", "A", Where::total},
    {"I0_angle", "Angle of I0", "deg", Where::total, 2},
    {"current_lag", "Angle by which I lags U", "deg", Where::phases, 2},
    {"voltage_lag", "Angle by which U lags Ua", "deg", Where::phases, 2},
    {"voltage_unbalance_u2", "Unbalance U2 / U1", "%", Where::total, 3},
    {"voltage_unbalance_u0", "Unbalance U0 / U1", "%", Where::total, 3},
    {"current_unbalance_i2", "Unbalance I2 / I1", "%", Where::total, 3},
    {"current_unbalance_i0", "Unbalance I0 / I1", "%", Where::total, 3},
    {"sum_of_currents", "Sum of the currents", "A", Where::total},
};

/// Adds the row of that key; without a total where it is not defined for any phase.
void addRow(ResultTable& table, std::string_view key, const TotalAndPhases& values) {
    const auto* const row = std::find_if(std::begin(derivedRows), std::end(derivedRows),
                                         [key](const DerivedRow& known) { return known.key == key; });
    assert(row != std::end(derivedRows));
    std::vector<Cell> cells{values.begin(), values.end()};
    if (row->where == Where::phases) {
        cells[0] = std::nullopt;
    }
    if (row->where == Where::total) {
        std::fill(cells.begin() + 1, cells.end(), std::nullopt);
    }
    table.addRow({row->key, row->label, row->unit, row->mostDecimals}, std::move(cells));
}

TotalAndPhases byPhase(const PerPhase<double>& values) {
    return {0.0, values[0], values[1], values[2]};
}

void addTotal(ResultTable& table, std::string_view key, double value) {
    addRow(table, key, {value, 0.0, 0.0, 0.0});
}

/// 0 stands for a frequency that was not found.
double orNan(double frequencyHz) {
    return frequencyHz > 0.0 ? frequencyHz : std::numeric_limits<double>::quiet_NaN();
}

void addPowerRows(ResultTable& table, const PowerFigures& power) {
    addRow(table, "P", power.P);
    addRow(table, "S", power.S);
    addRow(table, "N", power.N);
    addRow(table, "PF", power.PF);
    addRow(table, "P1", power.P1);
    addRow(table, "Q1", power.Q1);
    addRow(table, "S1", power.S1);
    addRow(table, "DPF", power.DPF);
    addTotal(table, "S_vector", power.vectorS);
    addTotal(table, "S_arithmetic", power.arithmeticS);
    addTotal(table, "S_effective", power.effectiveS);
}

/// Magnitudes of the symmetrical components, and their angles against the first phase.
void addSequenceRows(ResultTable& table, char quantity, const SequenceComponents& components, const Phasor& reference,
                     bool withoutZero) {
    const std::pair<const char*, Phasor> sequences[] = {
        {"1", components.forward}, {"2", components.backward}, {"0", components.zero}};
    for (const auto& [order, component] : sequences) {
        if (withoutZero && *order == '0') {
            continue;
        }
        const std::string name = quantity + std::string(order);
        addTotal(table, name, std::abs(component));
        addTotal(table, name + "_angle", lagDegrees(component, reference));
    }
}

/// Frequency, RMS values and removed means.
void addSignalRows(ResultTable& table, const FullMeasurement& full, const FullResults& results) {
    const Fundamentals& fundamentals = results.fundamentals;
    addRow(table, "frequency",
           {full.isFrequencyMeasured ? orNan(fundamentals.frequencyHz) : orNan(0.0), orNan(fundamentals.frequencies[0]),
            orNan(fundamentals.frequencies[1]), orNan(fundamentals.frequencies[2])});
    const auto offsetOf = [&full](std::size_t channel) {
        const auto& samples = full.asRecorded().samples[channel];
        return countMissing(samples) == 0 ? meanOf(samples) : std::numeric_limits<double>::quiet_NaN();
    };
    const auto offsets = [&](std::size_t first) {
        return byPhase({offsetOf(first), offsetOf(first + 1), offsetOf(first + 2)});
    };
    if (results.derived.voltages) {
        addRow(table, "U", *results.derived.voltages);
        addRow(table, "voltage_offset", offsets(0));
    }
    if (results.derived.currents) {
        addRow(table, "I", *results.derived.currents);
        addRow(table, "current_offset", offsets(phaseTotal));
    }
}

/// Unbalance, and the sum of the currents.
void addUnbalanceRows(ResultTable& table, const FullMeasurement& full, const FullResults& results) {
    const DerivedFigures& derived = results.derived;
    if (const auto& unbalance = derived.voltageUnbalance) {
        addTotal(table, "voltage_unbalance_u2", unbalance->negativePercent);
        if (!full.fromLineVoltages) {
            addTotal(table, "voltage_unbalance_u0", unbalance->zeroPercent);
        }
    }
    if (const auto& unbalance = derived.currentUnbalance) {
        addTotal(table, "current_unbalance_i2", unbalance->negativePercent);
        addTotal(table, "current_unbalance_i0", unbalance->zeroPercent);
    }
    if (derived.currentSum) {
        addTotal(table, "sum_of_currents", derived.currentSum->ofSum);
    }
}

ResultTable derivedTable(const FullMeasurement& full, const FullResults& results) {
    const DerivedFigures& derived = results.derived;
    const Fundamentals& fundamentals = results.fundamentals;
    const Phasor& reference = full.measurement.hasVoltages() ? fundamentals.voltages[0] : fundamentals.currents[0];
    ResultTable table = phaseTable("derived", "Computed by rt305, not by the library");
    addSignalRows(table, full, results);
    if (derived.power) {
        addPowerRows(table, *derived.power);
    }
    if (derived.voltageSequence) {
        addSequenceRows(table, 'U', *derived.voltageSequence, reference, full.fromLineVoltages);
    }
    if (derived.currentSequence) {
        addSequenceRows(table, 'I', *derived.currentSequence, reference, false);
    }
    if (derived.currentLags) {
        addRow(table, "current_lag", byPhase(*derived.currentLags));
    }
    if (derived.voltageLags) {
        addRow(table, "voltage_lag", byPhase(*derived.voltageLags));
    }
    addUnbalanceRows(table, full, results);
    if (!full.measurement.isThreePhase()) {
        for (auto& row : table.cells) {
            row[2] = row[3] = std::nullopt;
        }
    }
    removeEmptyColumns(table);
    return table;
}

/// Where the library's harmonics, which count all that lies around them, differ from those alone.
std::string remarkOnNoise(const FullResults& results) {
    constexpr double agreement = 0.2;  // percentage points
    std::vector<std::string> figures;
    for (const auto& kind : results.harmonics) {
        for (std::size_t phase = 0; phase < kind.channels.size(); ++phase) {
            const std::size_t channel = phase + (kind.areCurrents ? phaseTotal : 0);
            const auto& plain = results.plainHarmonics[channel];
            const auto percents = percentsOf(kind.channels[phase]);
            double difference = 0.0;
            double squares = 0.0;
            for (std::size_t i = 1; i < std::min(plain.size(), percents.size()); ++i) {
                difference = std::fmax(difference, std::fabs(plain[i] - percents[i]));
                squares += plain[i] * plain[i];
            }
            const double thd = parameterNamed(results.parameters[0], thdSets[kind.areCurrents].parameters[phase]).value;
            if (std::fmax(difference, std::fabs(std::sqrt(squares) - thd)) > agreement && squares > 0.0) {
                figures.push_back(formatNumber(std::sqrt(squares), 3) + " % for " + std::string(channelNames[channel]));
            }
        }
    }
    return figures.empty() ? ""
                           : "The library's harmonics count noise and interharmonics around them, the more the shorter "
                             "the record; THD of the harmonics alone is " +
                                 joined(figures) + ".";
}

/// When the active powers by the methods differ by more than one percent; one method gives magnitudes.
std::string remarkOnDisagreement(const std::vector<Parameters>& byMethod) {
    constexpr double agreement = 0.01;
    const double active = parameterNamed(byMethod[0], "P").value;
    double largest = 0.0;
    for (std::size_t method = 1; method < byMethod.size(); ++method) {
        const double other = parameterNamed(byMethod[method], "P").value;
        const bool isMagnitude = powerMethods[method].flag == RT305_4_POWER_TWO_WATTMETER_PHASE;
        largest = std::fmax(largest, std::fabs(other - (isMagnitude ? std::fabs(active) : active)));
    }
    if (!(largest > agreement * std::fabs(active))) {
        return {};
    }
    return "The methods disagree on P by " + formatFixed(100.0 * largest / std::fabs(active), 0) +
           " %. Trust the three-wattmeter figures, which are the mean of u i; two wattmeters miss what flows through a "
           "neutral, and err when signals are distorted or not steady.";
}

/// The parameters, and power where there are voltages and currents.
void addParameters(const FullMeasurement& full, const FullResults& results, ResultDocument& document) {
    const Parameters& parameters = results.parameters[complexThreeWattmeter];
    document.tables.push_back(
        electricalTable(withoutDoubtful(parameters, results.distortionDoubts, full.measurement.hasVoltages())));
    document.settings = describeWiring(full.measurement, full.fromLineVoltages) + ", fundamental inside " +
                        full.measurement.window().text();
    std::uint32_t powerFlag = full.measurement.powerFlag();
    if (full.measurement.isCombined()) {
        document.tables.push_back(powerTable(results.parameters));
        powerFlag |= powerMethods[complexThreeWattmeter].flag;
    }
    const auto remarks =
        remarksOn(parameters, full.measurement, full.cyclesThere(), powerFlag, results.distortionDoubts);
    document.remarks.insert(document.remarks.end(), remarks.begin(), remarks.end());
    for (const Remark& remark : {Remark(remarkOnNoise(results), topic::thd),
                                 Remark(remarkOnDisagreement(results.parameters), topic::library)}) {
        if (!remark.text.empty()) {
            document.remarks.push_back(remark);
        }
    }
    if (!std::isnan(parameterNamed(parameters, "P").value)) {
        for (std::size_t method = 0; method < results.parameters.size(); ++method) {
            const auto& [label, meaning] = powerWordings[method];
            document.remarks.emplace_back(std::string(label) + " (" + powerMethods[method].name + "): " + meaning,
                                          topic::library);
        }
    }
}

/// Which samples are measured. `frequencyHz` is that of the fundamental in them.
Remark describeSamples(const FullMeasurement& full, double frequencyHz) {
    const Measurement& recorded = full.asRecorded();
    const double start = recorded.settings.startSeconds;
    const std::string range = counted(recorded.length, "sample") + " at " + formatNumber(recorded.rateHz, 9) +
                              " Hz, from " + formatFixed(start, 4) + " s to " +
                              formatFixed(start + recorded.durationSeconds(), 4) + " s";
    if (full.cycles == 0) {
        const bool isPart = full.cyclesThere() < 0.95;
        return {
            "Measured: " + range +
                (isPart ? "; this is less than one cycle: RMS values, powers and the means that are removed are those "
                          "of these samples, not of the signals."
                        : "."),
            isPart ? topic::voltage | topic::current | topic::power : 0U};
    }
    return "Measured: " + std::to_string(full.cycles) + (full.cycles == 1 ? " cycle" : " whole cycles") + " of " +
           formatFixed(frequencyHz, 4) + " Hz, " + range + "; --all-samples takes all.";
}

constexpr const char* phaseColumns[] = {"total", "a", "b", "c"};

void addElectricalFigures(std::vector<FigureName>& figures) {
    for (const QuantityRow& row : electricalRows) {
        for (std::size_t i = 0; i < row.names.size(); ++i) {
            if (*row.names[i] != '\0') {
                figures.push_back({"parameters", row.key, phaseColumns[i]});
            }
        }
    }
}

void addPowerFigures(std::vector<FigureName>& figures) {
    for (const QuantityRow& quantity : powerRows) {
        for (std::size_t i = 0; i < quantity.names.size(); ++i) {
            for (const PowerMethod& method : powerMethods) {
                if (i == 0 || method.givesPhases) {
                    figures.push_back({"power", quantity.names[i], keyOf(method)});
                }
            }
        }
    }
}

void addDerivedFigures(std::vector<FigureName>& figures) {
    for (const DerivedRow& row : derivedRows) {
        const std::size_t first = row.where == Where::phases ? 1 : 0;
        const std::size_t end = row.where == Where::total ? 1 : std::size(phaseColumns);
        for (std::size_t i = first; i < end; ++i) {
            figures.push_back({"derived", row.key, phaseColumns[i]});
        }
    }
}

}  // namespace

std::span<const FigureName> figuresOfFullDocument() {
    static const std::vector<FigureName> figures = [] {
        std::vector<FigureName> all;
        addElectricalFigures(all);
        addPowerFigures(all);
        addDerivedFigures(all);
        return all;
    }();
    return figures;
}

ResultDocument fullDocument(const Recording& recording, const FullMeasurement& full, const FullResults& results) {
    const Measurement& measurement = full.measurement;
    ResultDocument document = documentOf(recording, measurement, results.libraryVersion);
    document.figures = figuresOfFullDocument();
    if (!full.isSteady()) {
        document.warnings.emplace_back(full.unsteadiness, topic::voltage | topic::current | topic::power);
    }
    document.remarks.push_back(describeSamples(full, results.fundamentals.frequencyHz));
    constexpr double nominalTolerance = 0.1;
    if (full.isFrequencyMeasured &&
        std::fabs(full.frequencyHz - measurement.nominalHz) > nominalTolerance * measurement.nominalHz) {
        document.remarks.emplace_back("Frequency: " + formatFixed(full.frequencyHz, 2) +
                                          " Hz is far from the nominal " + formatNumber(measurement.nominalHz, 4) +
                                          " Hz; check --nominal and the sample rate.",
                                      topic::frequency);
    }
    if (!full.frequencySource.empty()) {
        document.remarks.emplace_back("Frequency: " + full.frequencySource + ".",
                                      topic::frequency | topic::reactivePower);
    }
    if (const std::string obstacle = full.obstacleToComponents(); !obstacle.empty()) {
        document.remarks.emplace_back(std::string("Symmetrical components and angles not shown") +
                                          (full.isSteady() ? "" : ", and P1 and Q1 are means over the cycles") + ": " +
                                          obstacle + ".",
                                      full.isSteady() ? topic::unbalance : topic::reactivePower | topic::unbalance);
    }
    for (const Remark& remark : remarksOnDoubts(results.distortionDoubts, measurement)) {
        document.remarks.push_back(remark);
    }
    for (const Remark& verdict : results.wiring) {
        document.remarks.emplace_back("Wiring: " + verdict.text, verdict.topics);
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
