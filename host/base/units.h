#ifndef RT305_HOST_BASE_UNITS_H
#define RT305_HOST_BASE_UNITS_H

#include <string_view>
#include <utility>

namespace rt305 {

/// What a unit measures.
enum class Quantity { unknown, voltage, current, time, other };

struct Unit {
    Quantity quantity = Quantity::unknown;  // unknown: no unit given; other: a unit that is not in the list
    double factor = 1.0;                    // to V, A or s
};

/// Parses a unit: a prefix, then a symbol or word: "kV", "mA", "us" (u or a Greek mu), "volt", "Amperes". Upper and
/// lower case are equal except in the prefixes "m" and "M".
Unit unitOf(std::string_view text);

/// Splits a column heading into name and unit: "Ua (V)", "Ua [V]" and "Ua/V" -> "Ua", "V". In "Ua_V" the unit stays
/// part of the name too ("Ua_V", "V"), because it may not be a unit.
std::pair<std::string_view, std::string_view> nameAndUnit(std::string_view heading);

}  // namespace rt305

#endif
