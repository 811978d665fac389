#include "measuring/result_texts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <type_traits>

#include "base/failure.h"
#include "base/text.h"
#include "measuring/text_reader.h"

namespace rt305 {

namespace {

/// Reads an object with the members `names`, in any order, and others, which are dropped. `read(i)` reads the value of
/// member i. Fails when one is missing.
template <std::size_t count, class Read>
void readMembers(TextReader& reader, const std::array<std::string_view, count>& names, Read read) {
    std::array<bool, count> found{};
    reader.object([&](std::string_view name) {
        const auto i = static_cast<std::size_t>(std::find(names.begin(), names.end(), name) - names.begin());
        if (i == count) {
            return reader.skip();
        }
        found[i] = true;
        read(i);
    });
    if (std::find(found.begin(), found.end(), false) != found.end()) {
        failEnvironment(
            "a table in the library's text has no " +
            std::string(names[static_cast<std::size_t>(std::find(found.begin(), found.end(), false) - found.begin())]));
    }
}

NamedValue readNamedValue(TextReader& reader, std::string_view unitKey) {
    NamedValue value{};
    readMembers(reader, std::array<std::string_view, 3>{"LastName", "dataName", unitKey}, [&](std::size_t i) {
        if (i == 1) {
            value.value = reader.number();
        } else {
            (i == 0 ? value.name : value.unit) = reader.string();
        }
    });
    return value;
}

std::vector<double> readNumbers(TextReader& reader) {
    std::vector<double> numbers;
    reader.array([&] { numbers.push_back(reader.number()); });
    return numbers;
}

std::vector<std::pair<double, double>> readPeaks(TextReader& reader) {
    std::vector<std::pair<double, double>> peaks;
    reader.array([&] {
        std::pair<double, double>& peak = peaks.emplace_back();
        readMembers(reader, std::array<std::string_view, 2>{"fi", "mag"},
                    [&](std::size_t i) { (i == 0 ? peak.first : peak.second) = reader.number(); });
    });
    return peaks;
}

/// "U, V" -> "V", "L,dB" -> "dB".
std::string unitOf(std::string_view axisLabel) {
    return std::string(split(axisLabel, ',').back());
}

/// Reads every row of the single table in a text.
template <class Read>
auto readRows(std::string_view text, Read read) {
    std::vector<std::invoke_result_t<Read, TextReader&>> rows;
    std::size_t tables = 0;
    TextReader reader(text);
    reader.object([&](std::string_view) {
        ++tables;
        reader.array([&] { rows.push_back(read(reader)); });
    });
    reader.end();
    if (tables != 1) {
        failEnvironment("the library's text is not one named table");
    }
    return rows;
}

}  // namespace

Parameters readParameters(const std::string& text) {
    return readRows(text, [](TextReader& reader) { return readNamedValue(reader, "units"); });
}

std::vector<SignalStatistics> readSignals(const std::string& text) {
    return readRows(text, [](TextReader& reader) {
        SignalStatistics signal{};
        readMembers(reader, std::array<std::string_view, 2>{"LastName", "paramData"}, [&](std::size_t i) {
            if (i == 0) {
                signal.channel = reader.string();
            } else {
                reader.array([&] { signal.statistics.push_back(readNamedValue(reader, "UomName")); });
            }
        });
        return signal;
    });
}

std::vector<Spectrum> readSpectra(const std::string& text) {
    return readRows(text, [](TextReader& reader) {
        Spectrum spectrum{};
        readMembers(reader, std::array<std::string_view, 5>{"name", "LastNameY", "paramData", "dataTnvf", "dataTnv"},
                    [&](std::size_t i) {
                        if (i == 0) {
                            spectrum.channel = reader.string();
                        } else if (i == 1) {
                            spectrum.unit = unitOf(reader.string());
                        } else if (i == 2) {
                            spectrum.peaks = readPeaks(reader);
                        } else {
                            (i == 3 ? spectrum.frequencies : spectrum.lines) = readNumbers(reader);
                        }
                    });
        return spectrum;
    });
}

std::vector<Harmonics> readHarmonics(const std::string& text) {
    return readRows(text, [](TextReader& reader) {
        Harmonics harmonics{};
        readMembers(reader, std::array<std::string_view, 3>{"name", "dataX", "dataY"}, [&](std::size_t i) {
            if (i == 0) {
                harmonics.channel = reader.string();
            } else {
                (i == 1 ? harmonics.frequencies : harmonics.levels) = readNumbers(reader);
            }
        });
        return harmonics;
    });
}

void removeFrom(Harmonics& harmonics, std::size_t first) {
    for (std::vector<double>* const values : {&harmonics.frequencies, &harmonics.levels}) {
        const auto begin = values->begin() + static_cast<std::ptrdiff_t>(std::min(first, values->size()));
        std::fill(begin, values->end(), std::numeric_limits<double>::quiet_NaN());
    }
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
