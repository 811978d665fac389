#ifndef RT305_HOST_BASE_UNITS_H
#define RT305_HOST_BASE_UNITS_H

#include <string_view>
#include <utility>

namespace rt305 {

/// What a unit as files write it is of.
enum class Quantity { unknown, voltage, current, time, other };

struct Unit {
    Quantity quantity = Quantity::unknown;  // of an empty text; other for a text that is no unit known here
    double factor = 1.0;                    // to V, A or s
};

/// "kV", "mA", "us" (with either Greek letter mu as well), "volt", "Amperes": a prefix and a symbol or a word. Only "m"
/// and "M" are told by their case.
Unit unitOf(std::string_view text);

/// "Ua (V)" and "Ua [V]" -> "Ua", "V"; "Ua_V" -> "Ua_V", "V": only what stands in brackets is surely no name.
std::pair<std::string_view, std::string_view> nameAndUnit(std::string_view heading);

}  // namespace rt305

#endif
