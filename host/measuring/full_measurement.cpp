#include "measuring/full_measurement.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

#include "base/failure.h"
#include "base/text.h"
#include "output/remarks.h"
#include "output/result_tables.h"
#include "signal/fundamental.h"
#include "signal/phasors.h"

namespace rt305 {

namespace {

using Cell = ResultTable::Cell;
using Parameters = std::vector<NamedValue>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t harmonicsListed = 5;
constexpr double leastPercent = 0.01;  // of the fundamental, for a harmonic to be among the highest

/// What a power method's figures mean, in a few words. docs/power-methods.md has the rest.
struct PowerColumn {
    const char* method;
    const char* label;
    bool byPhase;
    const char* meaning;
};
constexpr PowerColumn powerColumns[] = {
    {"three-wattmeter-complex", "3 W complex", true,
     "P true; Q the sum over the harmonics (Budeanu), positive when the current lags; S = hypot(P, Q) by phase."},
    {"three-wattmeter", "3 W", true,
     "P true; Q all that is not active, sqrt(S^2 - P^2) by phase, unsigned; S = U I by phase."},
    {"two-wattmeter", "2 W", false,
     "from Uab, Ucb, Ia and Ic, so without what flows through a neutral: total RMS values at the angle of the "
     "fundamentals; S = hypot(P, Q)."},
    {"two-wattmeter-phase", "2 W phase", false,
     "the same in magnitudes, unsigned: P right up to 60 degrees, Q from 30 on."},
};

using Samples = std::vector<double>;

Samples combined(const Samples& x, const Samples& y, double xFactor, double yFactor) {
    Samples sum(x.size());
    std::transform(x.begin(), x.end(), y.begin(), sum.begin(),
                   [=](double p, double q) { return xFactor * p + yFactor * q; });
    return sum;
}

void applyCoefficients(Measurement& measurement) {
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        double& factor = measurement.settings.coefficients[channel];
        for (double& x : measurement.samples[channel]) {
            x *= factor;
        }
        factor = 1.0;
    }
}

bool hasVoltages(const Measurement& measurement) {
    return measurement.inputType != RT305_4_INPUT_CURRENTS;
}

/// Phase voltages against the middle of the line voltages ab, bc and ca: Ua = (Uab - Uca) / 3 and so on.
void formPhaseVoltages(Measurement& measurement) {
    const auto line = measurement.samples;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const std::size_t before = (phase + phaseTotal - 1) % phaseTotal;
        measurement.samples[phase] = combined(line[phase], line[before], 1.0 / 3.0, -1.0 / 3.0);
    }
    measurement.settings.flags |= RT305_4_FOUR_WIRE;
}

/// The line voltages that two wattmeters take, ab and cb, with the third. The method gives Q with the opposite sign.
Measurement forTwoWattmeters(const Measurement& measurement) {
    Measurement lines = measurement;
    const auto& u = measurement.samples;
    lines.samples[0] = combined(u[0], u[1], 1.0, -1.0);
    lines.samples[1] = combined(u[2], u[1], 1.0, -1.0);
    lines.samples[2] = combined(u[2], u[0], 1.0, -1.0);
    lines.settings.flags = (lines.settings.flags & ~RT305_4_FOUR_WIRE) | RT305_4_NEGATE_REACTIVE_POWER;
    return lines;
}

/// The wider window for grids that are not at 50 Hz.
void chooseWindow(Measurement& measurement) {
    for (const Samples& samples : measurement.samples) {
        const double fundamental =
            samples.empty() ? 0.0 : estimateFundamental(samples, measurement.assumedRateHz()).value_or(0.0);
        if (controlWindow.contains(fundamental) && !fixedWindow.contains(fundamental)) {
            measurement.settings.flags |= RT305_4_FREQUENCY_CONTROL;
        }
    }
}

Measurement sliced(const Measurement& measurement, double startSeconds, double durationSeconds) {
    const auto first = static_cast<std::ptrdiff_t>(std::llround(startSeconds * measurement.rateHz));
    const auto count = static_cast<std::ptrdiff_t>(std::llround(durationSeconds * measurement.rateHz));
    if (first < 0 || count < 1 || first + count > static_cast<std::ptrdiff_t>(measurement.length)) {
        failInput("a window of " + formatNumber(durationSeconds) + " s from " + formatNumber(startSeconds) +
                  " s on does not lie inside the recording");
    }
    Measurement part{measurement.settings,
                     {},
                     static_cast<std::size_t>(count),
                     measurement.rateHz,
                     measurement.recordedRateHz,
                     measurement.inputType,
                     {},
                     measurement.warnings};
    part.settings.startSeconds += startSeconds;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const Samples& samples = measurement.samples[channel];
        if (!samples.empty()) {
            part.samples[channel].assign(samples.begin() + first, samples.begin() + first + count);
        }
    }
    return part;
}

Parameters parametersBy(const std::string& method, const Measurement& measurement, const Library& library,
                        ResultDocument& document) {
    const std::uint32_t flag = powerMethods.at(method);
    Measurement fed = flag == RT305_4_POWER_TWO_WATTMETER ? forTwoWattmeters(measurement) : measurement;
    fed.settings.flags |= flag;
    document.rawTexts.push_back(library.measure(fed, RT305_4_OPERATION_PARAMETERS).parameters);
    return readParameters(document.rawTexts.back());
}

/// Power by all methods; a phase's figures where a method gives them.
ResultTable powerTable(const std::vector<Parameters>& byMethod) {
    ResultTable table{"power", "Power by method", "", false, {}, {}, {}};
    for (const PowerColumn& column : powerColumns) {
        table.columns.push_back({column.method, column.label, ""});
    }
    const char* const where[] = {"", ", a", ", b", ", c"};
    for (const QuantityRow& quantity : powerRows) {
        for (std::size_t i = 0; i < quantity.names.size(); ++i) {
            std::vector<Cell> cells;
            for (std::size_t method = 0; method < byMethod.size(); ++method) {
                const bool isThere = i == 0 || powerColumns[method].byPhase;
                cells.push_back(isThere ? Cell(parameterNamed(byMethod[method], quantity.names[i]).value)
                                        : std::nullopt);
            }
            const std::string name = quantity.names[i];
            table.addRow({name, quantity.label + std::string(where[i]), parameterNamed(byMethod[0], name).unit},
                         std::move(cells));
        }
    }
    return table;
}

/// The largest harmonics of every channel by order and percent, the fundamental left out.
ResultTable highestHarmonics(const std::vector<Harmonics>& channels) {
    ResultTable table{"highest_harmonics", "Highest harmonics, order and % of the fundamental", "", true, {}, {}, {}};
    std::vector<std::vector<Cell>> rows(harmonicsListed);
    for (const Harmonics& channel : channels) {
        table.columns.push_back({channel.channel + "_order", channel.channel, "", 0});
        table.columns.push_back({channel.channel + "_percent", "%", "%", 2});
        const auto percents = percentsOf(channel);
        std::vector<std::size_t> order;
        for (std::size_t k = 1; k < percents.size(); ++k) {
            if (percents[k] >= leastPercent) {
                order.push_back(k);
            }
        }
        std::stable_sort(order.begin(), order.end(),
                         [&](std::size_t k, std::size_t l) { return percents[k] > percents[l]; });
        for (std::size_t rank = 0; rank < harmonicsListed; ++rank) {
            const bool isThere = rank < order.size();
            rows[rank].push_back(isThere ? Cell(static_cast<double>(order[rank] + 1)) : std::nullopt);
            rows[rank].push_back(isThere ? Cell(percents[order[rank]]) : std::nullopt);
        }
    }
    for (std::size_t rank = 0; rank < harmonicsListed; ++rank) {
        const std::string number = std::to_string(rank + 1);
        table.addRow({number, number, ""}, std::move(rows[rank]));
    }
    return table;
}

/// The fundamental of a channel as the library's harmonics have it, else roughly from the samples; 0 for none.
double fundamentalOf(std::size_t channel, const Measurement& measurement, const std::vector<Harmonics>& harmonics) {
    const std::size_t place = channel - (hasVoltages(measurement) ? 0 : phaseTotal);
    const bool isThere = place < harmonics.size() && !harmonics[place].frequencies.empty();
    const double fine = isThere ? harmonics[place].frequencies[0] : nan;
    return fine > 0.0 && measurement.isAtAssumedRate()
               ? fine
               : estimateFundamental(measurement.samples[channel], measurement.rateHz).value_or(0.0);
}

/// The fundamentals of the first set that is there.
Frequencies frequenciesOf(const Measurement& measurement, const std::vector<Harmonics>& harmonics) {
    Frequencies frequencies{};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        frequencies[phase] = fundamentalOf(phase + (hasVoltages(measurement) ? 0 : phaseTotal), measurement, harmonics);
    }
    return frequencies;
}

/// RMS of the sum of three currents, and their largest RMS, in A.
std::pair<double, double> sumOfCurrents(const Measurement& measurement) {
    const auto rms = [](const Samples& x) {
        return std::sqrt(std::inner_product(x.begin(), x.end(), x.begin(), 0.0) / static_cast<double>(x.size()));
    };
    const Samples* const i = &measurement.samples[phaseTotal];
    return {rms(combined(combined(i[0], i[1], 1.0, 1.0), i[2], 1.0, 1.0)), std::max({rms(i[0]), rms(i[1]), rms(i[2])})};
}

/// P / S by phase and in total, where S is U I.
std::vector<Cell> powerFactors(const Parameters& threeWattmeter) {
    std::vector<Cell> cells;
    for (std::size_t i = 0; i < powerRows[0].names.size(); ++i) {
        cells.emplace_back(parameterNamed(threeWattmeter, powerRows[0].names[i]).value /
                           parameterNamed(threeWattmeter, powerRows[2].names[i]).value);
    }
    return cells;
}

std::vector<Cell> lags(const Phasors& from, const Phasors& to) {
    std::vector<Cell> cells{std::nullopt};
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        cells.emplace_back(std::abs(to[phase]) > 0.0 && std::abs(from[phase]) > 0.0 ? lagDegrees(from[phase], to[phase])
                                                                                    : nan);
    }
    return cells;
}

std::vector<Cell> inTotal(double value) {
    return {value, std::nullopt, std::nullopt, std::nullopt};
}

/// What the library does not compute.
ResultTable ownTable(const FullMeasurement& overview, const Fundamentals& fundamentals,
                     const Parameters& threeWattmeter) {
    const Measurement& measurement = overview.measurement;
    ResultTable table = phaseTable("derived", "Computed by rt305, not by the library");
    const auto& [frequencies, voltages, currents] = fundamentals;
    table.addRow({"fine_frequency", "Fundamental", "Hz", 4},
                 {std::nullopt, frequencies[0], frequencies[1], frequencies[2]});
    if (measurement.isCombined()) {
        table.addRow({"power_factor", "Power factor P / (U I)", "", 4}, powerFactors(threeWattmeter));
        table.addRow({"current_lag", "Angle by which I lags U", "deg", 2}, lags(voltages, currents));
    }
    if (hasVoltages(measurement)) {
        const Unbalance unbalance = unbalanceOf(voltages);
        table.addRow({"voltage_lag", "Angle by which U lags Ua", "deg", 2},
                     lags({voltages[0], voltages[0], voltages[0]}, voltages));
        table.addRow({"voltage_unbalance_u2", "Unbalance U2 / U1", "%", 3}, inTotal(unbalance.negativePercent));
        if (!overview.fromLineVoltages) {
            table.addRow({"voltage_unbalance_u0", "Unbalance U0 / U1", "%", 3}, inTotal(unbalance.zeroPercent));
        }
    }
    if (measurement.inputType != RT305_4_INPUT_VOLTAGES) {
        const Unbalance unbalance = unbalanceOf(currents);
        table.addRow({"current_unbalance_i2", "Unbalance I2 / I1", "%", 3}, inTotal(unbalance.negativePercent));
        table.addRow({"current_unbalance_i0", "Unbalance I0 / I1", "%", 3}, inTotal(unbalance.zeroPercent));
        table.addRow({"sum_of_currents", "Sum of the currents", "A"}, inTotal(sumOfCurrents(measurement).first));
    }
    return table;
}

std::vector<std::string> wiringRemarks(const FullMeasurement& overview, const Fundamentals& fundamentals) {
    const Measurement& measurement = overview.measurement;
    if (!hasVoltages(measurement)) {
        return {};
    }
    const auto [lowest, highest] =
        std::minmax_element(fundamentals.frequencies.begin(), fundamentals.frequencies.end());
    if (!(*highest - *lowest < 0.02 * *highest)) {
        return {"Wiring: not judged, as the voltages have no common fundamental."};
    }
    auto remarks = wiringFaults(fundamentals.voltages, fundamentals.currents);
    if (remarks.empty()) {
        remarks.emplace_back(measurement.isCombined() ? "nothing odd in the order and the angles."
                                                      : "phase order a-b-c, about 120 degrees apart.");
    }
    if (overview.fromLineVoltages && measurement.isCombined()) {
        const auto [sum, largest] = sumOfCurrents(measurement);
        if (sum > 0.05 * largest) {
            remarks.push_back("The currents of three wires must add up to nothing, but their sum is " +
                              formatNumber(100.0 * sum / largest, 3) + " % of the largest.");
        }
    }
    std::for_each(remarks.begin(), remarks.end(), [](std::string& remark) { remark = "Wiring: " + remark; });
    return remarks;
}

/// The parts of a document that need all six channels. Gives the parameters by the method that has S = U I.
Parameters addParameters(const Measurement& measurement, const Library& library, ResultDocument& document) {
    std::vector<Parameters> byMethod;
    for (const PowerColumn& column : powerColumns) {
        byMethod.push_back(parametersBy(column.method, measurement, library, document));
    }
    document.tables.push_back(electricalTable(byMethod[0]));
    document.tables.push_back(powerTable(byMethod));
    Measurement measured = measurement;
    measured.settings.flags |= RT305_4_POWER_THREE_WATTMETER_COMPLEX;
    document.remarks = remarksOn(byMethod[0], measured);
    if (!std::isnan(parameterNamed(byMethod[0], "P").value)) {
        for (const PowerColumn& column : powerColumns) {
            document.remarks.push_back(std::string(column.label) + " (" + column.method + "): " + column.meaning);
        }
    }
    return byMethod[1];
}

}  // namespace

Fundamentals fundamentalsOf(const Measurement& measurement, const std::vector<Harmonics>& harmonics) {
    Fundamentals fundamentals{frequenciesOf(measurement, harmonics), {}, {}};
    Frequencies sorted = fundamentals.frequencies;
    std::sort(sorted.begin(), sorted.end());
    const double frequencyHz = sorted[1];  // the one of a dead channel can be anything
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        Phasors& set = isCurrent(channel) ? fundamentals.currents : fundamentals.voltages;
        if (!measurement.samples[channel].empty()) {
            set[channel % phaseTotal] = phasorOf(measurement.samples[channel], frequencyHz, measurement.rateHz);
        }
    }
    return fundamentals;
}

FullMeasurement prepare(const Recording& recording, const MeasurementSettings& settings) {
    FullMeasurement overview{makeMeasurement(recording, settings),
                             makeMeasurement(recording, settings, RateMatters::no), false};
    Measurement& measurement = overview.measurement;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        const bool isWanted = isCurrent(channel) ? measurement.inputType != RT305_4_INPUT_VOLTAGES
                                                 : measurement.inputType != RT305_4_INPUT_CURRENTS;
        if (isWanted && measurement.samples[channel].empty()) {
            failInput(recording.source + (overview.asRecorded.samples[channel].empty()
                                              ? ": there is no column for " + std::string(channelNames[channel])
                                              : ": the recording is too short to be resampled"));
        }
    }
    overview.fromLineVoltages = hasVoltages(measurement) && !measurement.has(RT305_4_FOUR_WIRE);
    for (Measurement* const each : {&measurement, &overview.asRecorded}) {
        applyCoefficients(*each);
        if (overview.fromLineVoltages) {
            formPhaseVoltages(*each);
        }
    }
    chooseWindow(measurement);
    return overview;
}

FullMeasurement windowOf(const FullMeasurement& overview, double startSeconds, double durationSeconds) {
    return {sliced(overview.measurement, startSeconds, durationSeconds),
            sliced(overview.asRecorded, startSeconds, durationSeconds), overview.fromLineVoltages};
}

ResultDocument measureAll(const Recording& recording, const FullMeasurement& overview, const Library& library) {
    const Measurement& measurement = overview.measurement;
    ResultDocument document = documentOf(recording, measurement, library);
    Parameters threeWattmeter;
    if (measurement.isCombined()) {
        document.settings = (overview.fromLineVoltages ? "three-wire, measured with phase voltages formed by rt305"
                                                       : std::string("four-wire")) +
                            ", fundamental inside " + measurement.window().text();
        threeWattmeter = addParameters(measurement, library, document);
    } else {
        const ResultTexts texts = library.measure(overview.asRecorded, RT305_4_OPERATION_SIGNALS);
        document.rawTexts.push_back(hasVoltages(measurement) ? texts.voltages : texts.currents);
        document.tables.push_back(signalTable("signals", readSignals(document.rawTexts.back())));
    }
    const ResultTexts texts = library.measure(measurement, RT305_4_OPERATION_DISTORTION);
    std::vector<Harmonics> harmonics;
    for (const std::string& text : {texts.voltages, texts.currents}) {
        if (!text.empty()) {
            const auto channels = readHarmonics(text);
            harmonics.insert(harmonics.end(), channels.begin(), channels.end());
            document.rawTexts.push_back(text);
        }
    }
    const Fundamentals fundamentals = fundamentalsOf(measurement, harmonics);
    document.tables.push_back(ownTable(overview, fundamentals, threeWattmeter));
    document.tables.push_back(highestHarmonics(harmonics));
    const auto wiring = wiringRemarks(overview, fundamentals);
    document.remarks.insert(document.remarks.begin(), wiring.begin(), wiring.end());
    if (const std::string remark = remarkOnLength(measurement); !remark.empty() && !measurement.isCombined()) {
        document.remarks.push_back(remark);
    }
    return document;
}

}  // namespace rt305
