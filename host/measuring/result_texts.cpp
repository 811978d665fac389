#include "measuring/result_texts.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <type_traits>

#include "base/failure.h"
#include "base/text.h"

namespace rt305 {

namespace {

using nlohmann::json;

double numberOrNaN(const json& value) {
    return value.is_null() ? std::numeric_limits<double>::quiet_NaN() : value.get<double>();
}

NamedValue namedValue(const json& row, const char* unitKey) {
    return {row.at("LastName"), numberOrNaN(row.at("dataName")), row.at(unitKey)};
}

std::vector<double> numbersOrNaN(const json& values) {
    std::vector<double> numbers;
    numbers.reserve(values.size());
    std::transform(values.begin(), values.end(), std::back_inserter(numbers), numberOrNaN);
    return numbers;
}

std::vector<std::pair<double, double>> peaksOf(const json& rows) {
    std::vector<std::pair<double, double>> peaks;
    for (const json& row : rows) {
        peaks.emplace_back(numberOrNaN(row.at("fi")), numberOrNaN(row.at("mag")));
    }
    return peaks;
}

/// "U, V" -> "V", "L,dB" -> "dB".
std::string unitOf(const std::string& axisLabel) {
    return std::string(split(axisLabel, ',').back());
}

/// Reads every row of the single table in a text.
template <class Read>
auto readRows(const std::string& text, Read read) {
    try {
        const json document = json::parse(text);
        if (!document.is_object() || document.size() != 1) {
            throw Failure(ExitCode::environment, "the library's text is not one named table");
        }
        std::vector<std::invoke_result_t<Read, const json&>> rows;
        std::transform(document.front().begin(), document.front().end(), std::back_inserter(rows), read);
        return rows;
    } catch (const json::exception& error) {
        throw Failure(ExitCode::environment, std::string("the library's text cannot be read: ") + error.what());
    }
}

}  // namespace

Parameters readParameters(const std::string& text) {
    return readRows(text, [](const json& row) { return namedValue(row, "units"); });
}

std::vector<SignalStatistics> readSignals(const std::string& text) {
    return readRows(text, [](const json& row) {
        SignalStatistics signal{row.at("LastName"), {}};
        for (const json& statistic : row.at("paramData")) {
            signal.statistics.push_back(namedValue(statistic, "UomName"));
        }
        return signal;
    });
}

std::vector<Spectrum> readSpectra(const std::string& text) {
    return readRows(text, [](const json& row) {
        return Spectrum{row.at("name"), unitOf(row.at("LastNameY")), numbersOrNaN(row.at("dataTnvf")),
                        numbersOrNaN(row.at("dataTnv")), peaksOf(row.at("paramData"))};
    });
}

std::vector<Harmonics> readHarmonics(const std::string& text) {
    return readRows(text, [](const json& row) {
        return Harmonics{row.at("name"), numbersOrNaN(row.at("dataX")), numbersOrNaN(row.at("dataY"))};
    });
}

NamedValue parameterNamed(const Parameters& parameters, std::string_view name) {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [name](const NamedValue& parameter) { return parameter.name == name; });
    return found == parameters.end() ? NamedValue{std::string(name), std::numeric_limits<double>::quiet_NaN(), ""}
                                     : *found;
}

std::vector<double> percentsOf(const Harmonics& harmonics) {
    std::vector<double> percents;
    for (const double level : harmonics.levels) {
        percents.push_back(100.0 * std::pow(10.0, (level - harmonics.levels[0]) / 20.0));
    }
    return percents;
}

std::vector<std::size_t> largestHarmonics(const Harmonics& harmonics, std::size_t most) {
    constexpr double leastPercent = 0.01;
    const auto percents = percentsOf(harmonics);
    std::vector<std::size_t> orders;
    for (std::size_t order = 2; order <= percents.size(); ++order) {
        if (percents[order - 1] >= leastPercent) {
            orders.push_back(order);
        }
    }
    std::stable_sort(orders.begin(), orders.end(),
                     [&](std::size_t k, std::size_t l) { return percents[k - 1] > percents[l - 1]; });
    orders.resize(std::min(orders.size(), most));
    return orders;
}

}  // namespace rt305
