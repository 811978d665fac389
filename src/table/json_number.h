#ifndef RT305_4_TABLE_JSON_NUMBER_H
#define RT305_4_TABLE_JSON_NUMBER_H

#include <cstddef>
#include <span>

#include "table/decimal_digits.h"

/// The longest text of a number, as in -2.2250738585072014e-308, and the bytes that writing it may touch.
inline constexpr std::size_t longestJsonNumber = 24;
inline constexpr std::size_t roomForJsonNumber = 32;

/// Writes the JSON texts of at most `most` numbers, byte for byte as the JSON library's dump. A non-finite number gives
/// null. A text reads back as the same number; it is nearly always, but not always, the shortest such text. The digits
/// are found for all numbers at once, which takes a fraction of the time.
class JsonNumbers {
public:
    static constexpr std::size_t most = DecimalDigits::most;

    /// The values outlive the object.
    explicit JsonNumbers(std::span<const double> values) : values_(values) { findDigits(values, digits_); }

    /// Writes a number and returns its end. `out` has roomForJsonNumber bytes, of which those after the end are
    /// undefined.
    char* write(char* out, std::size_t i) const;

private:
    std::span<const double> values_;
    DecimalDigits digits_;
};

/// Writes the numbers in order, a comma after each.
char* writeJsonNumbers(char* out, std::span<const double> values);

#endif
