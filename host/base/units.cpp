#include "base/units.h"

#include <algorithm>

#include "base/text.h"

namespace rt305 {

namespace {

struct Symbol {
    std::string_view text;  // in lower case
    Quantity quantity;
};

constexpr Symbol symbols[] = {
    {"v", Quantity::voltage},      {"volt", Quantity::voltage},    {"volts", Quantity::voltage},
    {"a", Quantity::current},      {"amp", Quantity::current},     {"amps", Quantity::current},
    {"ampere", Quantity::current}, {"amperes", Quantity::current}, {"s", Quantity::time},
    {"sec", Quantity::time},       {"second", Quantity::time},     {"seconds", Quantity::time}};

struct Prefix {
    std::string_view text;
    double factor;
};

constexpr Prefix prefixes[] = {{"", 1.0},   {"k", 1e3},    {"K", 1e3},         {"M", 1e6},
                               {"m", 1e-3}, {"u", 1e-6},   {"\xC2\xB5", 1e-6}, {"\xCE\xBC", 1e-6},
                               {"n", 1e-9}, {"\xB5", 1e-6}};  // the last: a micro sign in ISO 8859-1

}  // namespace

Unit unitOf(std::string_view text) {
    text = trimmed(text);
    if (text.empty()) {
        return {};
    }
    for (const Prefix& prefix : prefixes) {
        if (text.substr(0, prefix.text.size()) != prefix.text) {
            continue;
        }
        const std::string rest = lowerCase(text.substr(prefix.text.size()));
        const auto* const symbol = std::find_if(std::begin(symbols), std::end(symbols),
                                                [&rest](const Symbol& known) { return known.text == rest; });
        if (symbol != std::end(symbols)) {
            return {symbol->quantity, prefix.factor};
        }
    }
    return {Quantity::other, 1.0};
}

std::pair<std::string_view, std::string_view> nameAndUnit(std::string_view heading) {
    const std::size_t open = heading.find_last_of("([");
    if (open != std::string_view::npos && open > 0 && (heading.back() == ')' || heading.back() == ']')) {
        return {trimmed(heading.substr(0, open)), trimmed(heading.substr(open + 1, heading.size() - open - 2))};
    }
    const std::size_t slash = heading.rfind('/');  // "t/ms"
    if (slash != std::string_view::npos && slash > 0 && slash + 1 < heading.size() &&
        unitOf(heading.substr(slash + 1)).quantity != Quantity::other) {
        return {trimmed(heading.substr(0, slash)), trimmed(heading.substr(slash + 1))};
    }
    const std::string_view tail = heading.substr(heading.find_last_of("_ ") + 1);
    if (tail.empty() || tail.size() > 2 || tail.size() == heading.size()) {
        return {heading, {}};
    }
    const bool isUnit =
        std::string_view("VAs").find(tail.back()) != std::string_view::npos && unitOf(tail).quantity != Quantity::other;
    return {heading, isUnit ? tail : std::string_view{}};
}

}  // namespace rt305
