#include "table/json_number.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "adapter/nlohmann/json.h"

namespace {

static_assert(std::endian::native == std::endian::little, "the first digit is the lowest byte");

/// Sixteen characters or digits, one in each byte.
using Sixteen [[gnu::vector_size(16)]] = std::uint64_t;

constexpr std::uint64_t asciiZeros = 0x3030303030303030;

/// The digits of one number.
struct Digits {
    Digits(const DecimalDigits& all, std::size_t i) : first8(all.first8[i]), next8(all.next8[i]), last(all.last[i]) {}

    Sixteen first16() const { return Sixteen{first8, next8}; }

    /// Number of digits before the trailing zeros.
    std::int64_t count() const {
        const std::int64_t bits = next8 != 0 ? 128 - std::countl_zero(next8) : 64 - std::countl_zero(first8);
        return last != 0 ? 17 : (bits + 7) >> 3;
    }

    std::uint64_t first8;
    std::uint64_t next8;
    std::uint64_t last;
};

void writeDigits(char* out, const Digits& x) {
    const Sixteen characters = x.first16() | asciiZeros;
    std::memcpy(out, &characters, 16);
    out[16] = static_cast<char>(x.last | '0');
}

/// For a point among sixteen characters: a mask of the bytes before it, and ASCII zeros with the point.
struct PointAt {
    Sixteen before;
    Sixteen characters;
};

constexpr auto pointsAt = [] {
    std::array<PointAt, 16> all{};
    for (unsigned point = 1; point < 16; ++point) {
        const std::uint64_t before = (std::uint64_t{1} << 8 * (point % 8)) - 1;
        const std::uint64_t withPoint = asciiZeros ^ std::uint64_t{'0' ^ '.'} << 8 * (point % 8);
        all[point] = point < 8 ? PointAt{{before, 0}, {withPoint, asciiZeros}}
                               : PointAt{{~std::uint64_t{0}, before}, {asciiZeros, withPoint}};
    }
    return all;
}();

/// The bytes behind the one before them; the first is 0.
Sixteen moveBack(Sixteen x) {
    using Bytes [[gnu::vector_size(16)]] = std::uint8_t;
    return reinterpret_cast<Sixteen>(__builtin_shufflevector(Bytes{}, reinterpret_cast<Bytes>(x), 15, 16, 17, 18, 19,
                                                             20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30));
}

/// point: 1 to 15.
void writeDigitsWithPoint(char* out, const Digits& x, std::int64_t point) {
    assert(point >= 1 && point <= 15);
    const PointAt& at = pointsAt[static_cast<std::size_t>(point)];
    const Sixteen first16 = x.first16();
    const Sixteen characters = (first16 & at.before) | moveBack(first16 & ~at.before) | at.characters;
    const auto last2 = static_cast<std::uint16_t>(x.next8 >> 56U | x.last << 8U | 0x3030U);
    std::memcpy(out, &characters, 16);
    std::memcpy(out + 16, &last2, 2);
}

char* writeExponent(char* out, std::int64_t exponent) {
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    const auto magnitude = static_cast<std::uint32_t>(std::abs(exponent));
    *out = static_cast<char>('0' + magnitude / 100);
    out += magnitude >= 100 ? 1 : 0;
    *out++ = static_cast<char>('0' + magnitude / 10 % 10);
    *out++ = static_cast<char>('0' + magnitude % 10);
    return out;
}

/// Plain notation for 10^-4 <= v < 10^15, with ".0" after integers; d.ddde+dd otherwise.
char* writeDecimal(char* out, const Digits& x, std::int64_t point) {
    const std::int64_t count = x.count();
    if (0 < point && point <= 15) {
        writeDigitsWithPoint(out, x, point);
        return out + std::max(count, point + 1) + 1;
    }
    if (-4 < point && point <= 0) {
        std::copy_n("0.000", 5, out);
        out += 2 - point;
        writeDigits(out, x);
        return out + count;
    }
    writeDigitsWithPoint(out, x, 1);
    return writeExponent(out + (count == 1 ? 1 : count + 1), point - 1);
}

/// Numbers whose digits are not found here: by the library's own formatter.
[[gnu::noinline]] char* writeOther(char* out, double value) {
    if (!std::isfinite(value)) {
        return std::copy_n("null", 4, out);
    }
    if (value == 0.0) {
        return std::signbit(value) ? std::copy_n("-0.0", 4, out) : std::copy_n("0.0", 3, out);
    }
    const bool subnormal = std::fabs(value) < std::numeric_limits<double>::min();
    return subnormal ? librarySubnormal(out, value) : libraryNumber(out, value);
}

}  // namespace

char* JsonNumbers::write(char* out, std::size_t i) const {
    const double value = values_[i];
    if (digits_.first8[i] == 0) {
        return writeOther(out, value);
    }
    *out = '-';
    out += std::bit_cast<std::uint64_t>(value) >> 63U;
    return writeDecimal(out, Digits(digits_, i), static_cast<std::int64_t>(digits_.point[i]));
}

char* writeJsonNumbers(char* out, std::span<const double> values) {
    while (!values.empty()) {
        const auto block = values.first(std::min(values.size(), JsonNumbers::most));
        values = values.subspan(block.size());
        const JsonNumbers numbers(block);
        for (std::size_t i = 0; i < block.size(); ++i) {
            out = numbers.write(out, i);
            *out++ = ',';
        }
    }
    return out;
}
