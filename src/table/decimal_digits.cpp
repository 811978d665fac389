#include "table/decimal_digits.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
#ifdef __aarch64__
#include <arm_neon.h>
#endif

#include "toolkit/simd.h"

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
// - If the interval contains a multiple of ten, it contains only one: D with its last digit set to 0. There Grisu2
// stops
//   and leaves out trailing zeros. It does not decrease a digit, because the steps would be ten or more.
// - If it contains none but delta >= 1, Grisu2 stops at D, the largest integer in the interval, and decreases it to the
//   integer nearest to W, the larger one of two, provided that this integer is in the interval. That is so if both
//   sides of the interval are at least 1/2. They differ from delta / 2 by less than one scaled multiple of 2^-q, and M+
//   - M- is at least 2^10 - 2 such multiples, so delta >= 1 + 2^-8 is enough. Five exponents do not satisfy it.
//
// The library's own formatter writes powers of two (their interval is shorter below than above), the numbers with one
// of those five exponents, subnormal numbers and zero.

namespace {

using coder::Lanes;

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

/// Scales the numbers of one exponent to the unit 2^-60: the power 10^s, the factor 10^m * 2^(60-q) for multiples of
/// 2^-q. Both are zero if the digits cannot be found here.
struct Scaling {
    std::uint64_t power = 0;
    std::uint64_t factor = 0;
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
    const std::uint64_t factor = powersOfTen[static_cast<std::size_t>(t - s)] << (60 - q);
    const std::uint64_t smallestDelta = ((power >> 53U) - 2) * factor;
    return smallestDelta > bit(60) + bit(52) ? Scaling{power, factor} : Scaling{};
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

/// ceil(2^bits / n): floor(x / n) = floor(x * reciprocal / 2^bits) for the ranges of x below.
constexpr std::uint64_t reciprocalOf(std::uint64_t n, int bits) {
    return static_cast<std::uint64_t>(((Wide{1} << bits) + n - 1) / n);
}

/// `width` numbers of 64 bits, one in each vector lane.
template <int width>
struct Words {
    using Vector = typename Lanes<width, std::uint64_t>::type;
    Vector x;

    ALWAYS_INLINE friend Words operator+(const Words& a, const Words& b) { return {a.x + b.x}; }
    ALWAYS_INLINE friend Words operator-(const Words& a, const Words& b) { return {a.x - b.x}; }
    ALWAYS_INLINE friend Words operator&(const Words& a, const Words& b) { return {a.x & b.x}; }
    ALWAYS_INLINE friend Words operator|(const Words& a, const Words& b) { return {a.x | b.x}; }
    ALWAYS_INLINE friend Words operator+(const Words& a, std::uint64_t b) { return {a.x + b}; }
    ALWAYS_INLINE friend Words operator-(const Words& a, std::uint64_t b) { return {a.x - b}; }
    ALWAYS_INLINE friend Words operator&(const Words& a, std::uint64_t b) { return {a.x & b}; }
    ALWAYS_INLINE friend Words operator|(const Words& a, std::uint64_t b) { return {a.x | b}; }
    ALWAYS_INLINE friend Words operator^(const Words& a, std::uint64_t b) { return {a.x ^ b}; }
    ALWAYS_INLINE friend Words operator<<(const Words& a, int n) { return {a.x << n}; }
    ALWAYS_INLINE friend Words operator>>(const Words& a, int n) { return {a.x >> n}; }
    ALWAYS_INLINE friend Words operator~(const Words& a) { return {~a.x}; }

    /// All bits set where a < b.
    ALWAYS_INLINE friend Words operator<(const Words& a, const Words& b) {
        if constexpr (width == 1) {
            return {-Vector{a.x < b.x}};
        } else {
            return {reinterpret_cast<Vector>(a.x < b.x)};
        }
    }
    ALWAYS_INLINE static Words all(std::uint64_t x) { return {Vector{} + x}; }
    ALWAYS_INLINE static Words load(const std::uint64_t* from) {
        Words words;
        std::memcpy(&words.x, from, sizeof words.x);
        return words;
    }
    ALWAYS_INLINE void store(std::uint64_t* to) const { std::memcpy(to, &x, sizeof x); }
};

constexpr std::uint64_t lowerHalf = 0xFFFFFFFF;

/// The products of the lower halves of words: one instruction, which Clang finds, but GCC multiplies whole words.
template <int width>
ALWAYS_INLINE inline Words<width> productOfLower(const Words<width>& a, const Words<width>& b) {
#if defined __x86_64__ && !defined __clang__
    Words<width> product = a;
    if constexpr (width == 2) {
        __asm__("pmuludq %1, %0" : "+x"(product.x) : "x"(b.x));
    } else {
        __asm__("vpmuludq %1, %0, %0" : "+v"(product.x) : "v"(b.x));
    }
    return product;
#elif defined __aarch64__ && !defined __clang__
    return {vmull_u32(vmovn_u64(a.x), vmovn_u64(b.x))};
#else
    return {(a.x & lowerHalf) * (b.x & lowerHalf)};
#endif
}

/// Numbers of 128 bits.
template <int width>
struct WideWords {
    Words<width> high;
    Words<width> low;
};

template <int width>
ALWAYS_INLINE inline WideWords<width> product(const Words<width>& a, const Words<width>& b) {
    if constexpr (width == 1) {
        const Wide both = Wide{a.x} * b.x;
        return {{static_cast<std::uint64_t>(both >> 64U)}, {static_cast<std::uint64_t>(both)}};
    } else {
        const auto lowest = productOfLower(a, b);
        const auto middle = productOfLower(a, b >> 32) + (lowest >> 32);
        const auto other = productOfLower(a >> 32, b) + (middle & lowerHalf);
        const auto highest = productOfLower(a >> 32, b >> 32);
        return {highest + (middle >> 32) + (other >> 32), other << 32 | (lowest & lowerHalf)};
    }
}

/// a * b modulo 2^64 for a < 2^32.
template <int width>
ALWAYS_INLINE inline Words<width> shortProduct(const Words<width>& a, const Words<width>& b) {
    if constexpr (width == 1) {
        return {a.x * b.x};
    } else {
        return productOfLower(a, b) + (productOfLower(a, b >> 32) << 32);
    }
}

/// floor(x / n) for x < 2^57, n a power of ten up to 10^8: the reciprocal is rounded by less than 2^-64 of itself.
template <int width>
ALWAYS_INLINE inline Words<width> quotient(const Words<width>& x, std::uint64_t n) {
    if constexpr (width == 1) {
        return {x.x / n};
    } else {
        const int bits = 63 - std::countl_zero(n);
        return product(x, Words<width>::all(reciprocalOf(n, 64 + bits))).high >> bits;
    }
}

/// The scalings of the numbers whose digits are wanted.
struct Scalings {
    std::array<std::uint64_t, DecimalDigits::most> power;
    std::array<std::uint64_t, DecimalDigits::most> factor;
};

/// The interval of a number in units of 2^-60, scaled by 10^m: M+ in 128 bits, W and M- as distances from it.
template <int width>
struct Interval {
    WideWords<width> upper;
    Words<width> toValue;
    Words<width> toLower;
};

/// bits: those of the number.
template <int width>
ALWAYS_INLINE inline Interval<width> intervalOf(const Words<width>& bits, const Words<width>& power,
                                                const Words<width>& factor) {
    const auto scaled = product(bits << 11 | bit(63), power);  // the leading one covers the last bit of the exponent
    const auto high = scaled.high + (scaled.low >> 63);        // adds 2^63
    const auto low = scaled.low ^ bit(63);
    const auto halfHigh = power >> 54;
    const auto halfLow = power << 10;
    const auto above = halfHigh - 1 - (low + halfLow < halfLow);
    const auto below = halfHigh - 1 - (low < halfLow);
    return {product(high + above, factor), shortProduct(above, factor), shortProduct(above + below, factor)};
}

/// Digits 1 to 8, 9 to 16 and 17 as numbers.
template <int width>
struct Decimal {
    Words<width> first8;
    Words<width> next8;
    Words<width> last;
    Words<width> sixteen;  // all bits set if there are only sixteen digits
};

/// The digits of a number from its interval. The case is unpredictable, so it is selected without branches.
template <int width>
ALWAYS_INLINE inline Decimal<width> digitsIn(const Interval<width>& interval) {
    using Word = Words<width>;
    const auto whole = interval.upper.high << 4 | interval.upper.low >> 60;
    const auto tens = quotient(whole, 10);
    const auto tensTimes10 = (tens << 3) + (tens << 1);
    const auto rest = interval.upper.low - (tensTimes10 << 60);
    const auto ones = ((rest - interval.toValue + bit(59)) >> 60) & (interval.toLower < rest);
    const auto sixteen = whole < Word::all(powersOfTen[16]);
    const auto first16 = tens + ((tensTimes10 - tens + ones) & sixteen);
    const auto first8 = quotient(first16, powersOfTen[8]);
    return {first8, first16 - shortProduct(first8, Word::all(powersOfTen[8])), ones & ~sixteen, sixteen};
}

/// x * n in each part of a word, such as its four numbers of 16 bits.
template <class Part, int width>
ALWAYS_INLINE inline Words<width> times(const Words<width>& x, Part n) {
    using Parts = typename Lanes<static_cast<int>(width * sizeof(std::uint64_t) / sizeof(Part)), Part>::type;
    return {reinterpret_cast<typename Words<width>::Vector>(reinterpret_cast<Parts>(x.x) * n)};
}

/// Eight digits of x < 10^8, one in each byte, the first in the lowest. Numbers are split in halves, several of them
/// side by side in a word. For x with upper half q = floor(x / n), n a power of ten, a part twice as wide gets q in its
/// low and x - n q in its high half. q is the product of x with a rounded reciprocal, which is exact for the ranges of
/// x here.
template <int width>
ALWAYS_INLINE inline Words<width> eightDigits(const Words<width>& x) {
    const auto first = productOfLower(x, Words<width>::all(reciprocalOf(10000, 40))) >> 40;
    const auto fours = first + ((x - productOfLower(first, Words<width>::all(10000))) << 32);
    const auto hundreds = times<std::uint32_t>(fours, 5243) >> 19 & 0x0000007F0000007F;
    const auto twos = hundreds + ((fours - times<std::uint16_t>(hundreds, 100)) << 16);
    const auto tens = times<std::uint16_t>(twos, 103) >> 10 & 0x000F000F000F000F;
    return tens + ((twos - times<std::uint16_t>(tens, 10)) << 8);
}

/// The position of the point of a number with sixteen digits, 16 - t.
template <int width>
ALWAYS_INLINE inline Words<width> pointOf16(const Words<width>& bits) {
    constexpr std::uint64_t whole = bit(log10Bits);  // keeps the difference positive and changes t by log10Of2
    const auto exponent = bits >> 52 & 0x7FF;
    const auto t = shortProduct(Words<width>::all(whole + 1075) - exponent, Words<width>::all(log10Of2)) >> log10Bits;
    return Words<width>::all(15 + log10Of2) - t;
}

/// Stores digits 1 to 16 of `width` numbers, or of one number, whose halves then fill a vector of two.
template <int width>
ALWAYS_INLINE inline void storeDigits(const Decimal<width>& decimal, std::uint64_t* first8, std::uint64_t* next8) {
    if constexpr (width == 1) {
        const auto halves = eightDigits(Words<2>{{decimal.first8.x, decimal.next8.x}});
        *first8 = halves.x[0];
        *next8 = halves.x[1];
    } else {
        eightDigits(decimal.first8).store(first8);
        eightDigits(decimal.next8).store(next8);
    }
}

struct FindDigits {
    /// first8 has the bits of the numbers, chosen their scalings. Lanes beyond the count have any value.
    template <int width>
    ALWAYS_INLINE static void run(DecimalDigits* digits, const Scalings* chosen, std::size_t count) {
        constexpr int lanes = width > 2 ? width : 1;  // two products of 64 bits take less time than a vector of two
        using Word = Words<lanes>;
        for (std::size_t i = 0; i < count; i += lanes) {
            const auto bits = Word::load(&digits->first8[i]);
            const auto interval = intervalOf(bits, Word::load(&chosen->power[i]), Word::load(&chosen->factor[i]));
            const auto decimal = digitsIn(interval);
            storeDigits(decimal, &digits->first8[i], &digits->next8[i]);
            decimal.last.store(&digits->last[i]);
            (pointOf16(bits) + 1 + decimal.sixteen).store(&digits->point[i]);
        }
    }
};

}  // namespace

void findDigits(std::span<const double> values, DecimalDigits& digits) {
    assert(values.size() <= DecimalDigits::most);
    Scalings chosen;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto bits = std::bit_cast<std::uint64_t>(values[i]);
        const bool isPowerOfTwo = bits << 12U == 0;
        const Scaling& scaling = scalings[isPowerOfTwo ? 0 : bits >> 52U & 0x7FFU];
        digits.first8[i] = bits;
        chosen.power[i] = scaling.power;
        chosen.factor[i] = scaling.factor;
    }
    if (values.size() <= 2) {  // a vector takes as long for one number as for many
        FindDigits::run<2>(&digits, &chosen, values.size());
    } else {
        coder::vectorized<FindDigits>(&digits, static_cast<const Scalings*>(&chosen), values.size());
    }
}
