#ifndef RT305_4_TESTS_TABLE_NUMBER_CASES_H
#define RT305_4_TESTS_TABLE_NUMBER_CASES_H

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "adapter/nlohmann/json.h"
#include "table/json_number.h"

/// Numbers for which the digits of our own are held against the JSON library's formatter.
namespace number_cases {

using Random = std::mt19937_64;

inline std::string expectedText(double value) {
    char text[32] = {};
    return std::isfinite(value) ? std::string(text, libraryNumber(text, value)) : "null";
}

inline std::string writtenText(double value) {
    char text[roomForJsonNumber];
    return {text, writeJsonNumber(text, value)};
}

inline double numberOf(std::uint64_t exponent, std::uint64_t fraction) {
    return std::bit_cast<double>(exponent << 52U | (fraction & 0xFFFFFFFFFFFFFU));
}

inline double anyBits(Random& random) {
    return std::bit_cast<double>(random());
}

/// Runs of ones and zeros, at any exponent.
inline double evenFraction(Random& random) {
    const std::uint64_t bits = random();
    const std::uint64_t run = ((std::uint64_t{1} << bits % 53) - 1) << (bits >> 8U) % 52;
    return numberOf(random() % 2047, (bits >> 16U & 1U) != 0 ? ~run : run);
}

inline double subnormal(Random& random) {
    const std::uint64_t bits = random();
    return numberOf(0, bits >> 12U >> bits % 52);
}

inline double integer(Random& random) {
    const std::uint64_t bits = random();
    return static_cast<double>(bits >> bits % 64);
}

/// k / 10^j with a k of up to 1 to 17 digits.
inline double shortDecimal(Random& random) {
    const std::uint64_t bits = random();
    const double k = std::trunc(static_cast<double>(random()) / std::pow(10.0, 3.0 + static_cast<double>(bits % 17)));
    return k / std::pow(10.0, static_cast<double>((bits >> 8U) % 25));
}

/// As measured: noise about a value, of any size.
inline double measured(Random& random) {
    return std::normal_distribution<double>()(random) * std::pow(10.0, static_cast<double>(random() % 12) - 6.0);
}

/// Numbers whose value or bound, scaled by the stored power of ten, ends in a one and many zero bits. Where a digit is
/// decided by comparing such values both sides may be equal, which hardly ever happens by chance.
inline double decidedByATie(Random& random) {
    const auto exponent = static_cast<int>(random() % 2046 + 1);
    const std::uint64_t power = nlohmann::detail::dtoa_impl::get_cached_power_for_binary_exponent(exponent - 1086).f;
    const auto zeros = random() % 50 + 10;
    const std::uint64_t scaled = (power / 2 + random() % (power / 2)) >> zeros << zeros | std::uint64_t{1} << zeros;
    const long double significand = static_cast<long double>(scaled) / static_cast<long double>(power) * 0x1p53L;
    return numberOf(static_cast<std::uint64_t>(exponent), static_cast<std::uint64_t>(significand) + random() % 3 - 1);
}

/// Numbers whose unit in the last place is all but a power of ten: the interval that reads back as the number is about
/// one such power wide and may miss all its multiples.
inline double unitLikePowerOfTen(Random& random) {
    static const std::vector<std::uint64_t> exponents = [] {
        std::vector<std::uint64_t> found;
        for (std::uint64_t exponent = 1; exponent < 2047; ++exponent) {
            const double digits = (static_cast<double>(exponent) - 1075.0) * std::log10(2.0);
            if (std::fabs(digits - std::round(digits)) < 0.003) {
                found.push_back(exponent);
            }
        }
        return found;
    }();
    return numberOf(exponents[random() % exponents.size()], random());
}

struct Kind {
    const char* name;
    double (*draw)(Random& random);
};
inline constexpr std::array kinds{
    Kind{"random bits", anyBits},
    Kind{"even fractions", evenFraction},
    Kind{"subnormal", subnormal},
    Kind{"integers", integer},
    Kind{"short decimals", shortDecimal},
    Kind{"measured", measured},
    Kind{"decided by a tie", decidedByATie},
    Kind{"unit like 10^n", unitLikePowerOfTen},
};

/// Every exponent with fractions about its ends and middle, powers of ten with their neighbours, small integers and
/// short decimals, values without a number.
template <class Visitor>
void visitBoundaries(Visitor&& visit) {
    constexpr int neighbours = 8;
    const auto visitAbout = [&](std::uint64_t bits) {
        for (int i = -neighbours; i <= neighbours; ++i) {
            visit(std::bit_cast<double>(bits + static_cast<std::uint64_t>(i)));
        }
    };
    for (std::uint64_t exponent = 0; exponent < 2048; ++exponent) {
        visitAbout(exponent << 52U);
        visitAbout(exponent << 52U | std::uint64_t{1} << 51U);
    }
    for (int power = -323; power <= 308; ++power) {
        visitAbout(std::bit_cast<std::uint64_t>(std::strtod(("1e" + std::to_string(power)).c_str(), nullptr)));
    }
    for (int k = 0; k < 20000; ++k) {
        for (int j = 0; j < 8; ++j) {
            visit(k / std::pow(10.0, j));
        }
    }
}

}  // namespace number_cases

#endif
