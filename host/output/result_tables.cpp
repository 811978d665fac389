#include "output/result_tables.h"

#include <algorithm>
#include <array>
#include <limits>

#include "base/text.h"
#include "measuring/power_methods.h"

namespace rt305 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// A statistic by the library's name.
struct StatisticRow {
    std::string_view name;
    const char* key;
    const char* label;
    bool isRatio;  // though the text gives it a unit
};
constexpr StatisticRow statisticRows[] = {{"mean", "mean", "Mean", false},
                                          {"rms", "rms", "RMS", false},
                                          {"peak2rms", "crest_factor", "Crest factor", true},
                                          {"peak2peak", "peak_to_peak", "Peak to peak", false}};

ResultTable::Cell cellAt(const std::vector<double>& values, std::size_t i) {
    return i < values.size() ? ResultTable::Cell(values[i]) : std::nullopt;
}

/// Columns of values side by side, with rows numbered from 1; shorter columns end in empty cells.
void addNumbered(ResultTable& table, const std::vector<std::vector<double>>& columns) {
    std::size_t longest = 0;
    for (const auto& column : columns) {
        longest = std::max(longest, column.size());
    }
    for (std::size_t i = 0; i < longest; ++i) {
        std::vector<ResultTable::Cell> cells;
        std::transform(columns.begin(), columns.end(), std::back_inserter(cells),
                       [i](const std::vector<double>& column) { return cellAt(column, i); });
        const std::string number = std::to_string(i + 1);
        table.addRow({number, number, ""}, std::move(cells));
    }
}

template <class Rows>
void addQuantities(ResultTable& table, const Rows& rows, const Parameters& parameters) {
    for (const QuantityRow& row : rows) {
        std::vector<ResultTable::Cell> cells;
        std::string unit;
        for (const std::string_view name : row.names) {
            const auto found = std::find_if(parameters.begin(), parameters.end(),
                                            [name](const NamedValue& parameter) { return parameter.name == name; });
            cells.push_back(found == parameters.end() ? std::nullopt : ResultTable::Cell(found->value));
            unit = found == parameters.end() || found->unit == "-" ? unit : found->unit;
        }
        if (std::any_of(cells.begin(), cells.end(), [](const auto& cell) { return cell.has_value(); })) {
            table.addRow({row.key, row.label, unit, row.mostDecimals}, std::move(cells));
        }
    }
}

}  // namespace

ResultDocument documentOf(const Recording& recording, const Measurement& measurement,
                          const std::string& libraryVersion) {
    ResultDocument document{.recording = factsOf(recording, measurement.settings.segment, measurement.nominalHz),
                            .startSeconds = measurement.settings.startSeconds,
                            .samples = measurement.length,
                            .rateHz = measurement.rateHz,
                            .content = contentOf(measurement),
                            .library = libraryVersion,
                            .warnings = recording.warnings};
    document.warnings.insert(document.warnings.end(), measurement.warnings.begin(), measurement.warnings.end());
    return document;
}

std::string contentOf(const Measurement& measurement) {
    const bool isThreePhase = measurement.isThreePhase();
    if (measurement.isCombined()) {
        return isThreePhase ? "voltages and currents" : "voltage and current of one phase";
    }
    return std::string(measurement.hasVoltages() ? "voltage" : "current") + (isThreePhase ? "s" : " of one phase");
}

std::string describeWiring(const Measurement& measurement, bool fromLineVoltages) {
    return !measurement.isThreePhase()          ? "one phase"
           : fromLineVoltages                   ? "three-wire, measured with phase voltages computed by rt305"
           : measurement.has(RT305_4_FOUR_WIRE) ? "four-wire"
                                                : "three-wire";
}

std::string describeMethods(const Measurement& measurement) {
    const auto* const method =
        std::find_if(std::begin(powerMethods), std::end(powerMethods),
                     [&](const PowerMethod& known) { return known.flag == measurement.powerFlag(); });
    return describeWiring(measurement, false) + ", fundamental inside " + measurement.window().text() +
           ", power: " + (method == std::end(powerMethods) ? "none" : method->name);
}

void removeEmptyColumns(ResultTable& table) {
    for (std::size_t column = table.columns.size(); column-- > 0;) {
        if (std::none_of(table.cells.begin(), table.cells.end(),
                         [column](const auto& row) { return row[column].has_value(); })) {
            const auto at = static_cast<std::ptrdiff_t>(column);
            table.columns.erase(table.columns.begin() + at);
            for (auto& row : table.cells) {
                row.erase(row.begin() + at);
            }
        }
    }
}

ResultTable phaseTable(const std::string& name, const std::string& title) {
    return {.name = name,
            .title = title,
            .columns = {
                {"total", "    total", ""}, {"a", "        a", ""}, {"b", "        b", ""}, {"c", "        c", ""}}};
}

ResultTable electricalTable(const Parameters& parameters) {
    ResultTable table = phaseTable("parameters");
    addQuantities(table, electricalRows, parameters);
    removeEmptyColumns(table);
    return table;
}

ResultTable parameterTable(const Parameters& parameters) {
    ResultTable table = phaseTable("parameters");
    addQuantities(table, electricalRows, parameters);
    addQuantities(table, powerRows, parameters);
    addQuantities(table, std::array{powerFactorRow}, parameters);
    removeEmptyColumns(table);
    return table;
}

ResultTable distortionTable(const Parameters& parameters) {
    Parameters kept = parameters;
    std::erase_if(kept, [](const NamedValue& parameter) { return parameter.name.rfind("THD", 0) != 0; });
    ResultTable table = electricalTable(kept);
    table.name = "thd";
    return table;
}

ResultTable signalTable(const std::string& name, const std::vector<SignalStatistics>& signals) {
    ResultTable table{.name = name};
    for (const SignalStatistics& signal : signals) {
        table.columns.push_back({signal.channel, signal.channel, ""});
    }
    for (std::size_t i = 0; !signals.empty() && i < signals[0].statistics.size(); ++i) {
        std::vector<ResultTable::Cell> cells;
        cells.reserve(signals.size());
        for (const SignalStatistics& signal : signals) {
            cells.emplace_back(i < signal.statistics.size() ? signal.statistics[i].value : nan);
        }
        const NamedValue& first = signals[0].statistics[i];
        const auto* const row = std::find_if(std::begin(statisticRows), std::end(statisticRows),
                                             [&first](const StatisticRow& known) { return known.name == first.name; });
        if (row != std::end(statisticRows)) {
            table.addRow({row->key, row->label, row->isRatio ? "" : first.unit}, std::move(cells));
        }
    }
    return table;
}

ResultTable spectrumTable(const std::string& name, const std::vector<Spectrum>& spectra) {
    ResultTable table{.name = name, .unitsByColumn = true};
    std::vector<std::vector<double>> columns;
    for (const Spectrum& spectrum : spectra) {
        std::vector<double> frequencies;
        std::vector<double> values;
        for (const auto& [frequency, value] : spectrum.peaks) {
            frequencies.push_back(frequency);
            values.push_back(value);
        }
        columns.push_back(std::move(frequencies));
        columns.push_back(std::move(values));
        const bool isLevel = spectrum.unit == "dB";
        table.columns.push_back({"frequency", spectrum.channel + ", Hz", "Hz", 3, spectrum.channel});
        table.columns.push_back(
            {isLevel ? "level" : "amplitude", spectrum.unit, spectrum.unit, isLevel ? 2 : 6, spectrum.channel});
    }
    addNumbered(table, columns);
    if (!spectra.empty()) {
        const std::vector<double>& axis = spectra[0].frequencies;
        table.footnote = axis.size() < 2 ? "no lines"
                                         : counted(axis.size(), "line") + ", " + formatNumber(axis[1]) +
                                               " Hz apart, up to " + formatNumber(axis.back()) + " Hz";
    }
    return table;
}

ResultTable harmonicTable(const std::string& name, const std::vector<Harmonics>& harmonics) {
    ResultTable table{.name = name, .corner = "Order", .rowKey = "order", .unitsByColumn = true};
    std::vector<std::vector<double>> columns;
    for (const Harmonics& channel : harmonics) {
        columns.insert(columns.end(), {channel.frequencies, channel.levels, percentsOf(channel)});
        table.columns.push_back({"frequency", channel.channel + ", Hz", "Hz", 3, channel.channel});
        table.columns.push_back({"level", "dB", "dB", 2, channel.channel});
        table.columns.push_back({"percent", "%", "%", 3, channel.channel});
    }
    addNumbered(table, columns);
    return table;
}

}  // namespace rt305
