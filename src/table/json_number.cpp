#include "table/json_number.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "adapter/nlohmann/json.h"

// The JSON library finds the digits of a number by Grisu2 (F. Loitsch, "Printing floating-point numbers quickly and
// accurately with integers", PLDI 2010, section 5). Here the same digits come from two 128-bit products and no loop.
//
// A normal number that is no power of two is v = f * u, 2^52 < f < 2^53, u = 2^(E-1075); texts between v - u/2 and
// v + u/2 read back as v. Grisu2 multiplies v and these two bounds by a stored power of ten 10^s and rounds them to
// multiples of 2^-q, 32 <= q <= 60. The products are W and the bounds, which it draws in by one multiple each:
// M- < W < M+. It writes the digits of M+ from the left until what stands there, with zeros for the digits to come, is
// not below M-; then it counts the last digit down while this comes closer to W and stays above M-.
//
// Let t be the integer for which 1 < u * 10^t <= 10, and multiply all by 10^m, m = t - s, exactly. The width of the
// interval, delta = (M+ - M-) * 10^m, is u * 10^t but for the bits that were rounded or drawn in; so it is below 10.
// Let D be M+ * 10^m without its fraction; it has 16 or 17 digits.
//
// - If the interval holds a multiple of ten, it holds only one, D less its last digit. Grisu2 stops at that one,
//   without its trailing zeros. It is not counted down, as the steps would be ten or more.
// - If it holds none but delta >= 1, Grisu2 stops at D, the largest integer in the interval, and counts down to the
//   integer nearest to W, of two the larger, provided that this one lies in the interval. It does if both sides of the
//   interval are at least 1/2. They differ from delta / 2 by less than one scaled multiple of 2^-q, and as M+ - M- is
//   at least 2^10 - 2 such multiples, delta >= 1 + 2^-8 is enough.
//
// Powers of two, whose interval is shorter below than above, the numbers with one of the few exponents that miss the
// last condition, subnormal numbers and zero are left to the library's own formatter.

namespace {

static_assert(std::endian::native == std::endian::little, "the first of eight digits is the lowest byte");

__extension__ using Wide = unsigned __int128;

constexpr std::uint64_t bit(int n) {
    return std::uint64_t{1} << n;
}

/// Powers of ten rounded to 64 bits, without their powers of two: entry i is that of 10^(8i - 300).
constexpr std::uint64_t scaledPowers[]{
    // clang-format off
    0xAB70FE17C79AC6CA, 0xFF77B1FCBEBCDC4F, 0xBE5691EF416BD60C, 0x8DD01FAD907FFC3C, 0xD3515C2831559A83,
    0x9D71AC8FADA6C9B5, 0xEA9C227723EE8BCB, 0xAECC49914078536D, 0x823C12795DB6CE57, 0xC21094364DFB5637,
    0x9096EA6F3848984F, 0xD77485CB25823AC7, 0xA086CFCD97BF97F4, 0xEF340A98172AACE5, 0xB23867FB2A35B28E,
    0x84C8D4DFD2C63F3B, 0xC5DD44271AD3CDBA, 0x936B9FCEBB25C996, 0xDBAC6C247D62A584, 0xA3AB66580D5FDAF6,
    0xF3E2F893DEC3F126, 0xB5B5ADA8AAFF80B8, 0x87625F056C7C4A8B, 0xC9BCFF6034C13053, 0x964E858C91BA2655,
    0xDFF9772470297EBD, 0xA6DFBD9FB8E5B88F, 0xF8A95FCF88747D94, 0xB94470938FA89BCF, 0x8A08F0F8BF0F156B,
    0xCDB02555653131B6, 0x993FE2C6D07B7FAC, 0xE45C10C42A2B3B06, 0xAA242499697392D3, 0xFD87B5F28300CA0E,
    0xBCE5086492111AEB, 0x8CBCCC096F5088CC, 0xD1B71758E219652C, 0x9C40000000000000, 0xE8D4A51000000000,
    0xAD78EBC5AC620000, 0x813F3978F8940984, 0xC097CE7BC90715B3, 0x8F7E32CE7BEA5C70, 0xD5D238A4ABE98068,
    0x9F4F2726179A2245, 0xED63A231D4C4FB27, 0xB0DE65388CC8ADA8, 0x83C7088E1AAB65DB, 0xC45D1DF942711D9A,
    0x924D692CA61BE758, 0xDA01EE641A708DEA, 0xA26DA3999AEF774A, 0xF209787BB47D6B85, 0xB454E4A179DD1877,
    0x865B86925B9BC5C2, 0xC83553C5C8965D3D, 0x952AB45CFA97A0B3, 0xDE469FBD99A05FE3, 0xA59BC234DB398C25,
    0xF6C69A72A3989F5C, 0xB7DCBF5354E9BECE, 0x88FCF317F22241E2, 0xCC20CE9BD35C78A5, 0x98165AF37B2153DF,
    0xE2A0B5DC971F303A, 0xA8D9D1535CE3B396, 0xFB9B7CD9A4A7443C, 0xBB764C4CA7A44410, 0x8BAB8EEFB6409C1A,
    0xD01FEF10A657842C, 0x9B10A4E5E9913129, 0xE7109BFBA19C0C9D, 0xAC2820D9623BF429, 0x80444B5E7AA7CF85,
    0xBF21E44003ACDD2D, 0x8E679C2F5E44FF8F, 0xD433179D9C8CB841, 0x9E19DB92B4E31BA9,
    // clang-format on
};

constexpr std::uint64_t powersOfTen[]{
    1,
    10,
    100,
    1000,
    10000,
    100000,
    1000000,
    10000000,
    100000000,
    1000000000,
    10000000000,
    100000000000,
    1000000000000,
    10000000000000,
    100000000000000,
    1000000000000000,
    10000000000000000,
};

/// Eight digits of x < 10^8, the first in the lowest byte. Lanes of four digits are split into pairs and these into
/// digits, all at once: the quotients q by products with a rounded reciprocal, and q + ((x - n*q) << k) as (x << k) -
/// q*((n << k) - 1).
std::uint64_t eightDigits(std::uint64_t x) {
    const std::uint64_t fours = (x << 32U) - (x * 109951163U >> 40U) * ((std::uint64_t{10000} << 32U) - 1);
    const std::uint64_t hundreds = (fours * 10486U >> 20U) & 0x0000007F0000007FU;
    const std::uint64_t twos = (fours << 16U) - hundreds * ((100U << 16U) - 1);
    const std::uint64_t tens = (twos * 103U >> 10U) & 0x000F000F000F000FU;
    return (twos << 8U) - tens * ((10U << 8U) - 1);
}

/// Seventeen digits: v = 0.d1 d2 ... d17 * 10^point, d1 > 0.
struct Decimal {
    std::uint64_t first8;  // digit by digit in bytes, the first in the lowest
    std::uint64_t next8;
    std::uint64_t last;
    int point;

    /// The digits before the trailing zeros.
    int count() const {
        const int of16 = next8 != 0 ? 8 + nonZeroBytes(next8) : nonZeroBytes(first8);
        return last != 0 ? 17 : of16;
    }

private:
    static int nonZeroBytes(std::uint64_t x) { return 8 - (std::countl_zero(x | 1U) >> 3U); }
};

/// The interval of a number, scaled by 10^m in units of 2^-q: M+ in 128 bits, the others as their distance from it.
struct Interval {
    Wide upper;
    std::uint64_t toValue;
    std::uint64_t toLower;
    int q;
    int t;
};

constexpr std::uint64_t high(Wide x) {
    return static_cast<std::uint64_t>(x >> 64U);
}
constexpr std::uint64_t low(Wide x) {
    return static_cast<std::uint64_t>(x);
}

/// exponent: E, 1 to 2046; fraction: the 52 bits of f below its first one, not all zero. With 78913 / 2^18 for log10(2)
/// and 217706 / 2^16 for log2(10) the floors below are exact for all exponents: s is the smallest stored power not
/// below (1025 - E) * log10(2), which is the smallest that gives q <= 60.
Interval intervalOf(int exponent, std::uint64_t fraction) {
    const int index = ((1025 - exponent) * 78913 + (300 << 18) + (1 << 21) - 1) >> 21;
    const int s = 8 * index - 300;
    const int t = ((1075 - exponent) * 78913 >> 18) + 1;
    const int q = 1085 - exponent - (s * 217706 >> 16);
    const std::uint64_t power = scaledPowers[index];
    const std::uint64_t scale = powersOfTen[t - s];

    const Wide value = (bit(63) | fraction << 11U) * Wide{power} + bit(63);
    const Wide reach = Wide{power >> 54U} << 64U | power << 10U;
    const std::uint64_t upper = high(value + reach) - 1;
    const std::uint64_t lower = high(value - reach) + 1;
    return {upper * Wide{scale}, (upper - high(value)) * scale, (upper - lower) * scale, q, t};
}

/// The digits of a number from its interval. Which of the cases holds is chance, so they are chosen without branches.
Decimal digitsIn(const Interval& interval) {
    const int q = interval.q;
    const std::uint64_t whole = high(interval.upper) << (64 - q) | low(interval.upper) >> q;
    const std::uint64_t tens = whole / 10;
    const std::uint64_t rest = low(interval.upper) - (10 * tens << q);
    const std::uint64_t ones = ((rest - interval.toValue + bit(q - 1)) >> q) & -std::uint64_t{rest > interval.toLower};

    // Sixteen digits or seventeen
    const std::uint64_t seventeen = -std::uint64_t{whole >= powersOfTen[16]};
    const std::uint64_t first16 = tens + ((9 * tens + ones) & ~seventeen);
    const std::uint64_t first8 = first16 / powersOfTen[8];
    return {eightDigits(first8), eightDigits(first16 - first8 * powersOfTen[8]), ones & seventeen,
            16 + static_cast<int>(seventeen & 1U) - interval.t};
}

constexpr std::uint64_t asciiZeros = 0x3030303030303030U;

void writeDigits(char* out, const Decimal& x) {
    const std::uint64_t first = x.first8 | asciiZeros;
    const std::uint64_t next = x.next8 | asciiZeros;
    std::memcpy(out, &first, 8);
    std::memcpy(out + 8, &next, 8);
    out[16] = static_cast<char>(x.last | '0');
}

/// For a point among sixteen characters: ones in the bytes before it, and zeros with the point as characters.
struct PointAt {
    std::uint64_t before[2];
    std::uint64_t characters[2];
};

constexpr auto pointsAt = [] {
    constexpr Wide zeroToPoint = 0x30 ^ 0x2E;
    std::array<PointAt, 16> all{};
    for (int point = 1; point < 16; ++point) {
        const Wide before = (Wide{1} << (8 * point)) - 1;
        const Wide characters = (Wide{asciiZeros} << 64U | asciiZeros) ^ zeroToPoint << (8 * point);
        all[static_cast<std::size_t>(point)] = {{low(before), high(before)}, {low(characters), high(characters)}};
    }
    return all;
}();

/// point: 1 to 15.
void writeDigitsWithPoint(char* out, const Decimal& x, int point) {
    const PointAt& at = pointsAt[static_cast<std::size_t>(point)];
    const std::uint64_t behind8 = x.first8 & ~at.before[0];
    const std::uint64_t behind16 = x.next8 & ~at.before[1];
    const std::uint64_t first = ((x.first8 & at.before[0]) | behind8 << 8U) ^ at.characters[0];
    const std::uint64_t next = ((x.next8 & at.before[1]) | behind16 << 8U | behind8 >> 56U) ^ at.characters[1];
    std::memcpy(out, &first, 8);
    std::memcpy(out + 8, &next, 8);
    out[16] = static_cast<char>(x.next8 >> 56U | '0');
    out[17] = static_cast<char>(x.last | '0');
}

char* writeExponent(char* out, int exponent) {
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    const int magnitude = std::abs(exponent);
    *out = static_cast<char>('0' + magnitude / 100);
    out += magnitude >= 100 ? 1 : 0;
    *out++ = static_cast<char>('0' + magnitude / 10 % 10);
    *out++ = static_cast<char>('0' + magnitude % 10);
    return out;
}

/// Plain notation for 10^-4 <= v < 10^15, with ".0" behind whole numbers; beyond d.ddde+dd.
char* writeDecimal(char* out, const Decimal& x) {
    const int count = x.count();
    if (0 < x.point && x.point <= 15) {
        writeDigitsWithPoint(out, x, x.point);
        return out + std::max(count, x.point + 1) + 1;
    }
    if (-4 < x.point && x.point <= 0) {
        std::memcpy(out, "0.000", 5);
        out += 2 - x.point;
        writeDigits(out, x);
        return out + count;
    }
    writeDigitsWithPoint(out, x, 1);
    return writeExponent(out + (count == 1 ? 1 : count + 1), x.point - 1);
}

/// By the library's own formatter.
[[gnu::noinline]] char* writeOther(char* out, double value) {
    if (!std::isfinite(value)) {
        std::memcpy(out, "null", 4);
        return out + 4;
    }
    return libraryNumber(out, value);
}

}  // namespace

char* writeJsonNumber(char* out, double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const auto exponent = static_cast<int>(bits >> 52U & 0x7FFU);
    const std::uint64_t fraction = bits & (bit(52) - 1);
    if (0 < exponent && exponent < 2047 && fraction != 0) {
        const Interval interval = intervalOf(exponent, fraction);
        if (interval.toLower > bit(interval.q) + bit(interval.q - 8)) {
            *out = '-';
            return writeDecimal(out + (bits >> 63U), digitsIn(interval));
        }
    }
    return writeOther(out, value);
}

char* writeJsonNumbers(char* out, std::span<const double> values) {
    for (const double value : values) {
        out = writeJsonNumber(out, value);
        *out++ = ',';
    }
    return out;
}
