#include "table/json_number.h"

#include <emmintrin.h>

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

// The JSON library finds the digits of a number by Grisu2 (F. Loitsch, "Printing floating-point numbers quickly and
// accurately with integers", PLDI 2010, section 5). This file finds the same digits by two 128-bit products, without a
// loop.
//
// A normal number that is not a power of two is v = f * u, 2^52 < f < 2^53, u = 2^(E-1075); texts between v - u/2 and
// v + u/2 read back as v. Grisu2 multiplies v and these two bounds by a stored power of ten 10^s and rounds the
// products to multiples of 2^-q, 32 <= q <= 60. It then moves each bound inwards by one multiple: M- < W < M+. It
// writes the digits of M+ from the left until the digits so far, followed by zeros, are not below M-. Then it decreases
// the last digit as long as this comes closer to W and stays above M-.
//
// Let t be the integer for which 1 < u * 10^t <= 10, and multiply everything by 10^m, m = t - s, exactly. The width of
// the interval, delta = (M+ - M-) * 10^m, is u * 10^t less the rounding and the moved bounds, so it is below 10. Let D
// be M+ * 10^m without its fraction; it has 16 or 17 digits.
//
// - If the interval contains a multiple of ten, it contains only one: D with its last digit set to 0. Grisu2 stops
// there
//   and leaves out trailing zeros. It does not decrease a digit, because the steps would be ten or more.
// - If it contains none but delta >= 1, Grisu2 stops at D, the largest integer in the interval, and decreases it to the
//   integer nearest to W, the larger one of two, provided that this integer is in the interval. That is so if both
//   sides of the interval are at least 1/2. They differ from delta / 2 by less than one scaled multiple of 2^-q, and M+
//   - M- is at least 2^10 - 2 such multiples, so delta >= 1 + 2^-8 is enough. Five exponents do not satisfy it.
//
// The library's own formatter writes powers of two (their interval is shorter below than above), the numbers with one
// of those five exponents, subnormal numbers and zero.

namespace {

static_assert(std::endian::native == std::endian::little, "the first digit is the lowest byte");

__extension__ using Wide = unsigned __int128;

constexpr std::uint64_t bit(int n) {
    return std::uint64_t{1} << n;
}

constexpr int firstPower = -300;
constexpr int powerStep = 8;

/// The leading 64 bits, rounded, of the powers of ten: entry i is for 10^(8i - 300).
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

constexpr auto powersOfTen = [] {
    std::array<std::uint64_t, 17> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) {
        powers[i] = 10 * powers[i - 1];
    }
    return powers;
}();

constexpr std::uint64_t high(Wide x) {
    return static_cast<std::uint64_t>(x >> 64U);
}
constexpr std::uint64_t low(Wide x) {
    return static_cast<std::uint64_t>(x);
}

/// Scales the numbers of one exponent to the unit 2^-60: the power 10^s, the factor 10^m * 2^(60-q) for multiples of
/// 2^-q, and the position of the point if there are sixteen digits. All zero if the digits cannot be found here.
struct Scaling {
    std::uint64_t power = 0;
    std::uint64_t factor = 0;
    std::int64_t point = 0;
};

// Logarithms as fractions, precise enough that the floors below are exact for all exponents.
constexpr int log10Of2 = 78913;  // log10(2) * 2^18 = 78913.2...
constexpr int log10Bits = 18;
constexpr int log2Of10 = 217706;  // log2(10) * 2^16 = 217705.9...
constexpr int log2Bits = 16;

/// exponent: E, 1 to 2046. s is the smallest stored power not below (1025 - E) * log10(2), which is the smallest that
/// gives q <= 60.
constexpr Scaling scalingOf(int exponent) {
    constexpr int stepBits = 3;
    static_assert(powerStep == 1 << stepBits);
    constexpr int almostOneStep = (1 << (log10Bits + stepBits)) - 1;  // rounds the index up
    const int index =
        ((1025 - exponent) * log10Of2 - firstPower * (1 << log10Bits) + almostOneStep) >> (log10Bits + stepBits);
    const int s = powerStep * index + firstPower;
    const int t = ((1075 - exponent) * log10Of2 >> log10Bits) + 1;
    const int q = 1085 - exponent - (s * log2Of10 >> log2Bits);
    assert(q >= 32 && q <= 60 && t >= s);
    const std::uint64_t power = scaledPowers[index];
    const std::uint64_t factor = powersOfTen[t - s] << (60 - q);
    const std::uint64_t smallestDelta = ((power >> 53U) - 2) * factor;
    return smallestDelta > bit(60) + bit(52) ? Scaling{power, factor, 16 - t} : Scaling{};
}

constexpr auto scalings = [] {
    std::array<Scaling, 2048> all{};
    for (int exponent = 1; exponent < 2047; ++exponent) {
        all[static_cast<std::size_t>(exponent)] = scalingOf(exponent);
    }
    return all;
}();
static_assert(std::ranges::count(scalings, 0U, &Scaling::factor) == 2 + 5,
              "the five, and the exponents of 0 and infinity");

/// The interval of a number in units of 2^-60, scaled by 10^m: M+ in 128 bits, W and M- as distances from it.
struct Interval {
    Wide upper;
    std::uint64_t toValue;
    std::uint64_t toLower;
};

/// bits: those of the number.
Interval intervalOf(std::uint64_t bits, const Scaling& scaling) {
    const std::uint64_t f = bit(63) | bits << 11U;  // the leading one covers the last bit of the exponent
    const Wide value = f * Wide{scaling.power} + bit(63);
    const Wide halfWidth = Wide{scaling.power >> 54U} << 64U | scaling.power << 10U;
    const std::uint64_t upper = high(value + halfWidth) - 1;
    const std::uint64_t lower = high(value - halfWidth) + 1;
    return {upper * Wide{scaling.factor}, (upper - high(value)) * scaling.factor, (upper - lower) * scaling.factor};
}

/// v = 0.d1 d2 ... d17 * 10^point, d1 > 0; all zero for a number that the library formats.
struct Decimal {
    std::uint64_t first16;
    std::uint32_t last;
    std::int32_t point;
};

/// The digits of a number from its interval. The case is unpredictable, so it is selected without branches.
/// pointOf16: position of the point if there are sixteen digits and not seventeen.
Decimal digitsIn(const Interval& interval, std::int64_t pointOf16) {
    const auto whole = static_cast<std::uint64_t>(interval.upper >> 60U);
    const std::uint64_t tens = whole / 10;
    const std::uint64_t rest = low(interval.upper) - (10 * tens << 60U);
    const std::uint64_t ones = ((rest - interval.toValue + bit(59)) >> 60U) & -std::uint64_t{rest > interval.toLower};
    const std::uint64_t seventeen = -std::uint64_t{whole >= powersOfTen[16]};
    return {tens + ((9 * tens + ones) & ~seventeen), static_cast<std::uint32_t>(ones & seventeen),
            static_cast<std::int32_t>(pointOf16) + static_cast<std::int32_t>(seventeen & 1U)};
}

Decimal decimalOf(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const std::uint64_t fraction = bits & (bit(52) - 1);
    const Scaling& scaling = scalings[fraction != 0 ? bits >> 52U & 0x7FFU : 0];
    return digitsIn(intervalOf(bits, scaling), scaling.point);
}

// Numbers are split in halves, several of them side by side in the lanes of a word. For a number x with upper half q =
// floor(x / n), n a power of ten, a lane twice as wide gets q in its low and x - n*q in its high half of k bits:
//     q + ((x - n*q) << k) = (x << k) - q * ((n << k) - 1).
// q is the product of x with a rounded reciprocal, floor(x * r / 2^b), r = ceil(2^b / n); this is exact for the ranges
// of x below.

constexpr std::uint64_t reciprocalOf(int n, int bits) {
    return (bit(bits) + static_cast<std::uint64_t>(n) - 1) / static_cast<std::uint64_t>(n);
}
constexpr std::uint64_t perTenThousand = reciprocalOf(10000, 40);  // x < 10^8
constexpr auto perHundred =
    static_cast<std::int16_t>(reciprocalOf(100, 19));  // x < 10^4: 16 bits by the product, 3 by a shift
constexpr auto perTen = static_cast<std::int16_t>(reciprocalOf(10, 16));  // x < 100
static_assert(perTenThousand == 109951163 && perHundred == 5243 && perTen == 6554);

/// Two lanes of four digits of x < 10^8, the first in the lower.
std::uint64_t foursOf(std::uint64_t x) {
    assert(x < powersOfTen[8]);
    return (x << 32U) - (x * perTenThousand >> 40U) * ((powersOfTen[4] << 32U) - 1);
}

/// Sixteen digits of x < 10^16, one in each byte, the first in the lowest.
__m128i sixteenDigits(std::uint64_t x) {
    assert(x < powersOfTen[16]);
    const std::uint64_t first8 = x / powersOfTen[8];
    const std::uint64_t next8 = x - first8 * powersOfTen[8];
    const __m128i fours{static_cast<std::int64_t>(foursOf(first8)), static_cast<std::int64_t>(foursOf(next8))};
    const __m128i hundreds = _mm_srli_epi16(_mm_mulhi_epu16(fours, _mm_set1_epi16(perHundred)), 3);
    const __m128i twos = hundreds + _mm_slli_epi32(fours - _mm_madd_epi16(hundreds, _mm_set1_epi16(100)), 16);
    const __m128i tens = _mm_mulhi_epu16(twos, _mm_set1_epi16(perTen));
    return tens + _mm_slli_epi16(twos - _mm_mullo_epi16(tens, _mm_set1_epi16(10)), 8);
}

/// The digits of a decimal, one in each byte.
struct Digits {
    explicit Digits(const Decimal& x) : first16(sixteenDigits(x.first16)), last(x.last) {}

    /// Number of digits before the trailing zeros.
    int count() const {
        const int zeros = _mm_movemask_epi8(_mm_cmpeq_epi8(first16, _mm_setzero_si128()));
        const std::uint32_t nonZeros = (static_cast<std::uint32_t>(zeros) ^ 0xFFFFU) | last << 16U;
        return std::min(static_cast<int>(std::bit_width(nonZeros)), 17);
    }

    __m128i first16;
    std::uint32_t last;
};

void writeDigits(char* out, const Digits& x) {
    const __m128i characters = x.first16 | _mm_set1_epi8('0');
    std::memcpy(out, &characters, 16);
    out[16] = static_cast<char>(x.last | '0');
}

/// For a point among sixteen characters: a mask of the bytes before it, and ASCII zeros with the point.
struct PointAt {
    __m128i before;
    __m128i characters;
};

constexpr __m128i bytesOf(Wide x) {
    return __m128i{static_cast<std::int64_t>(low(x)), static_cast<std::int64_t>(high(x))};
}

constexpr auto pointsAt = [] {
    constexpr Wide asciiZeros = Wide{0x3030303030303030U} << 64U | 0x3030303030303030U;
    constexpr Wide zeroToPoint = 0x30 ^ 0x2E;
    std::array<PointAt, 16> all{};
    for (int point = 1; point < 16; ++point) {
        all[static_cast<std::size_t>(point)] = {bytesOf((Wide{1} << (8 * point)) - 1),
                                                bytesOf(asciiZeros ^ zeroToPoint << (8 * point))};
    }
    return all;
}();

/// point: 1 to 15.
void writeDigitsWithPoint(char* out, const Digits& x, int point) {
    assert(point >= 1 && point <= 15);
    const PointAt& at = pointsAt[static_cast<std::size_t>(point)];
    const __m128i behind = _mm_slli_si128(x.first16 & ~at.before, 1);
    const __m128i characters = (x.first16 & at.before) | behind | at.characters;
    writeDigits(out + 1, x);  // only the last two are kept
    std::memcpy(out, &characters, 16);
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

/// Plain notation for 10^-4 <= v < 10^15, with ".0" after integers; d.ddde+dd otherwise.
char* writeDecimal(char* out, const Digits& x, int point) {
    const int count = x.count();
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
    const bool subnormal = value != 0.0 && std::fabs(value) < std::numeric_limits<double>::min();
    return subnormal ? librarySubnormal(out, value) : libraryNumber(out, value);
}

char* write(char* out, double value, const Decimal& decimal) {
    if (decimal.first16 == 0) {
        return writeOther(out, value);
    }
    *out = '-';
    out += std::bit_cast<std::uint64_t>(value) >> 63U;
    return writeDecimal(out, Digits(decimal), decimal.point);
}

}  // namespace

char* writeJsonNumber(char* out, double value) {
    return write(out, value, decimalOf(value));
}

// All decimals of a block are found before the first is written. Each half of the work is a chain of dependent steps;
// the shorter the chain, the more numbers the processor can work on at once.
char* writeJsonNumbers(char* out, std::span<const double> values) {
    std::array<Decimal, 64> decimals;
    while (!values.empty()) {
        const auto block = values.first(std::min(values.size(), decimals.size()));
        values = values.subspan(block.size());
        std::transform(block.begin(), block.end(), decimals.begin(), decimalOf);
        for (std::size_t i = 0; i < block.size(); ++i) {
            out = write(out, block[i], decimals[i]);
            *out++ = ',';
        }
    }
    return out;
}
