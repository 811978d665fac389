#include "reports.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "text.h"
#include "text_table.h"

namespace rt305 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct ParameterRow {
    const char* label;
    std::array<const char*, 4> names;  // total, a, b, c; empty where there is no such quantity
    int mostDecimals = 6;              // fewer where the library resolves less
};

constexpr ParameterRow parameterRows[] = {
    {"Phase voltage", {"", "Uda", "Udb", "Udc"}},
    {"Line voltage ab, bc, ca", {"", "Udab", "Udbc", "Udca"}},
    {"Zero-sequence voltage", {"Ud0", "", "", ""}},
    {"Current", {"", "Ida", "Idb", "Idc"}},
    {"Frequency", {"", "Fa", "Fb", "Fc"}, 1},
    {"THD of voltage", {"", "THD_Va", "THD_Vb", "THD_Vc"}, 3},
    {"THD of current", {"", "THD_Ia", "THD_Ib", "THD_Ic"}, 3},
    {"Active power P", {"P", "Pa", "Pb", "Pc"}},
    {"Reactive power Q", {"Q", "Qa", "Qb", "Qc"}},
    {"Apparent power S", {"S", "Sa", "Sb", "Sc"}},
    {"Power factor", {"Pf", "Pfa", "Pfb", "Pfc"}},
};

std::string inputTypeName(std::uint32_t inputType) {
    switch (inputType) {
        case RT305_4_INPUT_VOLTAGES:
            return "voltages";
        case RT305_4_INPUT_CURRENTS:
            return "currents";
        default:
            return "voltages and currents";
    }
}

using TextColumn = std::vector<std::string>;

TextColumn headed(const std::string& heading, TextColumn cells) {
    cells.insert(cells.begin(), heading);
    return cells;
}

/// A heading, then the numbers from 1 down the longest of the columns.
TextColumn numbered(const std::string& heading, const std::vector<TextColumn>& columns) {
    TextColumn numbers{heading};
    for (const TextColumn& column : columns) {
        while (numbers.size() < column.size()) {
            numbers.push_back(std::to_string(numbers.size()));
        }
    }
    return numbers;
}

/// The first column and the others beside it; short ones end in empty cells.
std::string sideBySide(const TextColumn& first, const std::vector<TextColumn>& columns) {
    TextTable table(std::string(columns.size() + 1, 'r'));
    for (std::size_t i = 0; i < first.size(); ++i) {
        TextColumn row{first[i]};
        for (const TextColumn& column : columns) {
            row.push_back(i < column.size() ? column[i] : "");
        }
        table.add(std::move(row));
    }
    return table.text();
}

}  // namespace

std::string describe(const Measurement& measurement) {
    return std::to_string(measurement.length) + " samples at " + formatNumber(measurement.rateHz) + " Hz, " +
           inputTypeName(measurement.inputType);
}

std::string describeMethods(const Measurement& measurement) {
    const auto method = std::find_if(powerMethods.begin(), powerMethods.end(), [&measurement](const auto& known) {
        return known.second == measurement.powerMethod();
    });
    return std::string(measurement.has(RT305_4_FOUR_WIRE) ? "four-wire" : "three-wire") + ", fundamental inside " +
           measurement.window().text() + ", power: " + (method == powerMethods.end() ? "none" : method->first);
}

std::string reportParameters(const std::vector<NamedValue>& parameters) {
    TextTable table("lrrrrl");
    table.add({"", "    total", "        a", "        b", "        c", ""});
    for (const ParameterRow& row : parameterRows) {
        std::vector<double> values;
        std::string unit;
        for (const std::string_view name : row.names) {
            const auto found = std::find_if(parameters.begin(), parameters.end(),
                                            [name](const NamedValue& parameter) { return parameter.name == name; });
            values.push_back(found == parameters.end() ? nan : found->value);
            unit = found == parameters.end() || found->unit == "-" ? unit : found->unit;
        }
        std::vector<std::string> cells = TextTable::numbers(values, row.mostDecimals);
        for (std::size_t i = 0; i < cells.size(); ++i) {
            cells[i] = *row.names[i] == '\0' ? "" : cells[i];
        }
        cells.insert(cells.begin(), row.label);
        cells.push_back(unit);
        table.add(std::move(cells));
    }
    return table.text();
}

std::string reportSignals(const std::vector<SignalStatistics>& signals) {
    if (signals.empty()) {
        return {};
    }
    TextTable table("l" + std::string(signals.size(), 'r') + "l");
    std::vector<std::string> heading(signals.size() + 2);
    std::transform(signals.begin(), signals.end(), heading.begin() + 1,
                   [](const SignalStatistics& signal) { return signal.channel; });
    table.add(std::move(heading));
    for (std::size_t i = 0; i < signals[0].statistics.size(); ++i) {
        std::vector<double> values(signals.size(), nan);
        for (std::size_t s = 0; s < signals.size(); ++s) {
            values[s] = i < signals[s].statistics.size() ? signals[s].statistics[i].value : nan;
        }
        const NamedValue& first = signals[0].statistics[i];
        std::vector<std::string> cells = TextTable::numbers(values);
        cells.insert(cells.begin(), first.name);
        cells.push_back(first.name == "peak2rms" ? "" : first.unit);  // a ratio, whatever unit the text gives it
        table.add(std::move(cells));
    }
    return table.text();
}

std::string reportSpectra(const std::vector<Spectrum>& spectra) {
    if (spectra.empty()) {
        return {};
    }
    std::vector<TextColumn> columns;
    for (const Spectrum& spectrum : spectra) {
        std::vector<double> frequencies;
        std::vector<double> values;
        for (const auto& [frequency, value] : spectrum.peaks) {
            frequencies.push_back(frequency);
            values.push_back(value);
        }
        columns.push_back(headed(spectrum.channel + ", Hz", TextTable::numbers(frequencies, 3)));
        columns.push_back(headed(spectrum.unit, TextTable::numbers(values, spectrum.unit == "dB" ? 2 : 6)));
    }
    const std::vector<double>& axis = spectra[0].frequencies;
    const std::string lines = axis.size() < 2 ? "no lines"
                                              : std::to_string(axis.size()) + " lines, " + formatNumber(axis[1]) +
                                                    " Hz apart, up to " + formatNumber(axis.back()) + " Hz";
    return sideBySide(numbered("", columns), columns) + lines + '\n';
}

std::string reportHarmonics(const std::vector<Harmonics>& harmonics) {
    std::vector<TextColumn> columns;
    for (const Harmonics& channel : harmonics) {
        std::vector<double> percents;
        for (const double level : channel.levels) {
            percents.push_back(100.0 * std::pow(10.0, (level - channel.levels[0]) / 20.0));
        }
        columns.push_back(headed(channel.channel + ", Hz", TextTable::numbers(channel.frequencies, 3)));
        columns.push_back(headed("dB", TextTable::numbers(channel.levels, 2)));
        columns.push_back(headed("%", TextTable::numbers(percents, 3)));
    }
    return sideBySide(numbered("Order", columns), columns);
}

}  // namespace rt305
