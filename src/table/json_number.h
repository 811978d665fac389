#ifndef RT305_4_TABLE_JSON_NUMBER_H
#define RT305_4_TABLE_JSON_NUMBER_H

#include <cstddef>
#include <span>

/// The longest text of a number, as in -2.2250738585072014e-308, and the bytes that writeJsonNumber may touch.
inline constexpr std::size_t longestJsonNumber = 24;
inline constexpr std::size_t roomForJsonNumber = 32;

/// Writes the JSON text of a number, byte for byte as the JSON library's dump, and returns its end. A non-finite number
/// gives null. The text reads back as the same number; it is nearly always, but not always, the shortest such text.
/// `out` has roomForJsonNumber bytes, of which those after the end are undefined.
char* writeJsonNumber(char* out, double value);

/// Writes the numbers in order, a comma after each.
char* writeJsonNumbers(char* out, std::span<const double> values);

#endif
