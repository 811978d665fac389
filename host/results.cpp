#include "results.h"

#include <limits>
#include <nlohmann/json.hpp>

#include "failure.h"

namespace rt305 {

namespace {

using nlohmann::json;

double numberOrNaN(const json& value) {
    return value.is_null() ? std::numeric_limits<double>::quiet_NaN() : value.get<double>();
}

std::vector<NamedValue> namedValues(const json& rows, const char* unitKey) {
    std::vector<NamedValue> values;
    for (const json& row : rows) {
        values.push_back({row.at("LastName"), numberOrNaN(row.at("dataName")), row.at(unitKey)});
    }
    return values;
}

/// Applies a reading function to the rows of the one table that a text holds.
template <class Read>
auto readTable(const std::string& text, Read read) {
    try {
        const json document = json::parse(text);
        if (!document.is_object() || document.size() != 1) {
            throw Failure(ExitCode::refused, "the library's answer is not one named table");
        }
        return read(document.front());
    } catch (const json::exception& error) {
        throw Failure(ExitCode::refused, std::string("the library's answer cannot be read: ") + error.what());
    }
}

}  // namespace

std::vector<NamedValue> readParameters(const std::string& text) {
    return readTable(text, [](const json& rows) { return namedValues(rows, "units"); });
}

std::vector<SignalStatistics> readSignals(const std::string& text) {
    return readTable(text, [](const json& rows) {
        std::vector<SignalStatistics> signals;
        for (const json& row : rows) {
            signals.push_back({row.at("LastName"), namedValues(row.at("paramData"), "UomName")});
        }
        return signals;
    });
}

}  // namespace rt305
