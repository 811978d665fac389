// The text of numbers compared with the JSON library's formatter. scripts/number-digits runs it for minutes.

#include "table/json_number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <random>

#include "adapter/nlohmann/json.h"
#include "toolkit/simd.h"

namespace {

using Random = std::mt19937_64;

std::string written(double value) {
    char text[roomForJsonNumber];
    return {text, JsonNumbers({&value, 1}).write(text, 0)};
}

/// Compares the texts of numbers, alone and in rows, for every instruction set, and those of the negative numbers.
void expectLibraryTexts(const std::vector<double>& values) {
    std::string wanted;
    std::vector<double> both;
    for (const double value : values) {
        for (const double x : {value, -value}) {
            char text[32] = "null";
            const std::string_view library(text, std::isfinite(x) ? libraryNumber(text, x) : text + 4);
            ASSERT_EQ(written(x), library) << std::hexfloat << x;
            both.push_back(x);
            wanted.append(library) += ',';
        }
    }
    std::vector<char> row(both.size() * roomForJsonNumber);
    for (std::size_t i = 0; i < coder::instructionSets; ++i) {
        const auto set = static_cast<coder::InstructionSet>(i);
        if (coder::isSupported(set)) {
            const coder::ForcedInstructionSet forced(set);
            ASSERT_EQ(std::string_view(row.data(), writeJsonNumbers(row.data(), both)), wanted) << "set " << i;
        }
    }
}

double numberOf(std::uint64_t exponent, std::uint64_t fraction) {
    return std::bit_cast<double>(exponent << 52U | (fraction & 0xFFFFFFFFFFFFFU));
}

/// Numbers whose value or bound, scaled by the stored power of ten, ends in a one and many zero bits: the comparisons
/// that decide a digit then meet equal sides, which hardly ever happens by chance.
double decidedByATie(Random& random) {
    const auto exponent = static_cast<int>(random() % 2046 + 1);
    const std::uint64_t power = nlohmann::detail::dtoa_impl::get_cached_power_for_binary_exponent(exponent - 1086).f;
    const auto zeros = random() % 50 + 10;
    const std::uint64_t scaled = (power / 2 + random() % (power / 2)) >> zeros << zeros | std::uint64_t{1} << zeros;
    const long double significand = static_cast<long double>(scaled) / static_cast<long double>(power) * 0x1p53L;
    return numberOf(static_cast<std::uint64_t>(exponent), static_cast<std::uint64_t>(significand) + random() % 3 - 1);
}

/// Numbers whose unit in the last place is nearly a power of ten: the interval that reads back as the number is about
/// one such power wide and may miss all its multiples.
double unitNearPowerOfTen(Random& random) {
    for (;;) {
        const std::uint64_t exponent = random() % 2046 + 1;
        const double digits = (static_cast<double>(exponent) - 1075.0) * std::log10(2.0);
        if (std::fabs(digits - std::round(digits)) < 0.003) {
            return numberOf(exponent, random());
        }
    }
}

const struct {
    const char* name;
    double (*draw)(Random& random);
} kinds[]{
    {"random bits", [](Random& random) { return std::bit_cast<double>(random()); }},
    {"runs of ones and zeros",
     [](Random& random) {
         const std::uint64_t bits = random();
         const std::uint64_t run = ((std::uint64_t{1} << bits % 53) - 1) << (bits >> 8U) % 52;
         return numberOf(random() % 2047, (bits >> 16U & 1U) != 0 ? ~run : run);
     }},
    {"subnormal", [](Random& random) { return numberOf(0, random() >> 12U >> random() % 52); }},
    {"integers", [](Random& random) { return static_cast<double>(random() >> random() % 64); }},
    {"decimals of up to 17 digits",
     [](Random& random) {
         const double digits = std::pow(10.0, 3.0 + static_cast<double>(random() % 17));
         return std::trunc(static_cast<double>(random()) / digits) / std::pow(10.0, static_cast<double>(random() % 25));
     }},
    {"measured",
     [](Random& random) {
         return std::normal_distribution<double>()(random) * std::pow(10.0, static_cast<double>(random() % 12) - 6.0);
     }},
    {"decided by a tie", decidedByATie},
    {"unit near a power of ten", unitNearPowerOfTen},
};

TEST(JsonNumber, ReadsWell) {
    const std::pair<double, const char*> cases[]{
        {0.0, "0.0"},
        {-0.0, "-0.0"},
        {50.0, "50.0"},
        {6.903902068653474, "6.9039020686534736"},  // where one digit fewer would read back as well
        {0.0001, "0.0001"},
        {0.000012345, "1.2345e-05"},
        {123456789012345.0, "123456789012345.0"},
        {1234567890123456.0, "1.234567890123456e+15"},
        {5e-324, "5e-324"},
        {-2.2250738585072014e-308, "-2.2250738585072014e-308"},
        {HUGE_VAL, "null"},
    };
    for (const auto& [value, text] : cases) {
        EXPECT_EQ(written(value), text);
        EXPECT_LE(written(value).size(), longestJsonNumber);
    }
}

TEST(JsonNumber, EqualsTheLibraryTextAtEveryBoundary) {
    const auto visitAbout = [&](std::uint64_t bits) {
        std::vector<double> values;
        for (std::uint64_t i = 0; i <= 16; ++i) {
            values.push_back(std::bit_cast<double>(bits + i - 8));
        }
        expectLibraryTexts(values);
    };
    for (std::uint64_t exponent = 0; exponent < 2048; ++exponent) {
        visitAbout(exponent << 52U);
        visitAbout(exponent << 52U | std::uint64_t{1} << 51U);
    }
    for (int power = -323; power <= 308; ++power) {
        visitAbout(std::bit_cast<std::uint64_t>(std::strtod(("1e" + std::to_string(power)).c_str(), nullptr)));
    }
    for (int k = 0; k < 20000; ++k) {
        std::vector<double> values;
        for (int j = 0; j < 8; ++j) {
            values.push_back(k / std::pow(10.0, j));
        }
        expectLibraryTexts(values);
    }
}

TEST(JsonNumber, EqualsTheLibraryTextForEveryKindOfNumber) {
    const char* const millions = std::getenv("RT305_4_NUMBER_MILLIONS");
    const char* const seed = std::getenv("RT305_4_NUMBER_SEED");
    const long long perKind = millions != nullptr ? std::atoll(millions) * 1000000 / std::ssize(kinds) / 2 : 50000;
    Random random(seed != nullptr ? std::strtoull(seed, nullptr, 10) : 20230616);
    for (const auto& kind : kinds) {
        std::vector<double> row(97);
        for (long long i = 0; i < perKind && !HasFatalFailure(); i += std::ssize(row)) {
            std::generate(row.begin(), row.end(), [&] { return kind.draw(random); });
            expectLibraryTexts(row);
        }
        ASSERT_FALSE(HasFatalFailure()) << kind.name;
    }
}

}  // namespace
