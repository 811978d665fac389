#ifndef RT305_4_TABLE_DECIMAL_DIGITS_H
#define RT305_4_TABLE_DECIMAL_DIGITS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// The digits of some numbers: v = 0.d1 d2 ... d17 * 10^point, d1 > 0, without the sign. The digits are those of the
/// JSON library; unused ones are 0.
struct DecimalDigits {
    static constexpr std::size_t most = 64;

    // One digit in each byte, the first in the lowest. `first8` is 0 for a number whose digits are not found here:
    // zero, a power of two, a subnormal or non-finite number, or one with one of five exponents.
    std::array<std::uint64_t, most> first8;
    std::array<std::uint64_t, most> next8;
    std::array<std::uint64_t, most> last;
    std::array<std::uint64_t, most> point;
};

/// Finds the digits of at most DecimalDigits::most numbers.
void findDigits(std::span<const double> values, DecimalDigits& digits);

#endif
