// The texts of options that are numbers, times and lists. Each parser is one line of the table.

#include <cmath>
#include <cstdlib>
#include <string>

#include "base/failure.h"
#include "base/text.h"
#include "bytes.h"
#include "cli/option_values.h"
#include "recording/channels.h"
#include "require.h"

namespace {

using fuzz::Bytes;
using fuzz::require;

void requireFinite(double value) {
    require(std::isfinite(value), "the value of an option is finite");
}

/// Numbers have the value that the C library finds.
void parseNumberAndCount(const std::string& text) {
    if (const auto value = rt305::parseNumber(text)) {
        const double wanted = std::strtod(text.c_str(), nullptr);
        require(*value == wanted || std::isnan(*value), "a number has its value");
    }
    if (const auto count = rt305::parseCount(text)) {
        require(*count == std::strtoull(text.c_str(), nullptr, 10), "a count has its value");
    }
}

constexpr void (*parsers[])(const std::string& text) = {
    parseNumberAndCount,
    [](const std::string& text) {
        const auto [order, percent, degrees] = rt305::parseHarmonic(text);
        require(order >= 1, "an order is positive");
        requireFinite(percent);
        requireFinite(degrees);
    },
    [](const std::string& text) { require(rt305::parseDropout(text).channel < rt305::channelTotal, "a channel"); },
    [](const std::string& text) {
        for (const auto& [column, factor] : rt305::parseGains(text)) {
            require(!column.empty(), "a gain has a column");
            requireFinite(factor);
        }
    },
    [](const std::string& text) {
        const double seconds = rt305::parseTime("--start", text);
        requireFinite(seconds);
        require(seconds >= 0.0, "a time is not negative");
    },
    [](const std::string& text) {
        for (const double value : rt305::parsePerChannel("--gains", text, 1.0)) {
            requireFinite(value);
        }
    },
    [](const std::string& text) { rt305::parseColumnMap("--map", text); },
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const auto parse = parsers[bytes.upTo(std::size(parsers) - 1)];
    std::string text = bytes.rest();
    text.erase(std::min(text.find('\0'), text.size()));  // arguments end there
    try {
        parse(text);
    } catch (const rt305::Failure& failure) {
        require(failure.what()[0] != '\0', "a refusal has a message");
    }
    return 0;
}
