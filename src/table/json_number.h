#ifndef RT305_4_TABLE_JSON_NUMBER_H
#define RT305_4_TABLE_JSON_NUMBER_H

#include <cstddef>
#include <span>

/// The longest text of a number, as in -2.2250738585072014e-308, and the bytes that writeJsonNumber may touch.
inline constexpr std::size_t longestJsonNumber = 24;
inline constexpr std::size_t roomForJsonNumber = 32;

/// Writes the JSON text of a number, byte for byte what the JSON library's dump gives, and returns its end. A number
/// that is not finite is null. The text reads back as the same number; it is nearly always, not always, the shortest
/// such text. Bytes of the room behind the end are undefined.
char* writeJsonNumber(char* out, double value);

/// Writes the numbers one by one, a comma behind each.
char* writeJsonNumbers(char* out, std::span<const double> values);

#endif
