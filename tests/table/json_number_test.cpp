#include "table/json_number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "table/number_cases.h"

namespace {

using number_cases::expectedText;
using number_cases::writtenText;

void expectTheLibrarysText(double value) {
    for (const double x : {value, -value}) {
        ASSERT_EQ(writtenText(x), expectedText(x)) << std::hexfloat << x;
    }
}

TEST(JsonNumber, ReadsWell) {
    const struct {
        double value;
        const char* text;
    } cases[]{
        {0.0, "0.0"},
        {-0.0, "-0.0"},
        {50.0, "50.0"},
        {-325.26911934581187, "-325.2691193458119"},
        {6.903902068653474, "6.9039020686534736"},  // where one digit fewer would read back as well
        {0.1, "0.1"},
        {22.900000000000002, "22.900000000000002"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {0.000012345, "1.2345e-05"},
        {123456789012345.0, "123456789012345.0"},
        {1234567890123456.0, "1.234567890123456e+15"},
        {3e100, "3e+100"},
        {5e-324, "5e-324"},
        {-2.2250738585072014e-308, "-2.2250738585072014e-308"},
        {9.5367431640625e-07, "9.5367431640625e-07"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
        {-std::numeric_limits<double>::infinity(), "null"},
        {std::numeric_limits<double>::quiet_NaN(), "null"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(writtenText(c.value), c.text);
        EXPECT_EQ(writtenText(c.value), expectedText(c.value));
        EXPECT_LE(writtenText(c.value).size(), longestJsonNumber);
    }
}

TEST(JsonNumber, IsTheLibrarysTextAtEveryBoundary) {
    number_cases::visitBoundaries(expectTheLibrarysText);
}

TEST(JsonNumber, IsTheLibrarysTextOfEveryKindOfNumber) {
    number_cases::Random random(20230616);
    for (const number_cases::Kind& kind : number_cases::kinds) {
        for (int i = 0; i < 50000 && !HasFatalFailure(); ++i) {
            SCOPED_TRACE(kind.name);
            expectTheLibrarysText(kind.draw(random));
        }
    }
}

TEST(JsonNumber, WritesRowsWithACommaBehindEachNumber) {
    number_cases::Random random(1);
    std::vector<double> row{1.5, HUGE_VAL, -3.0};
    std::string expected = "1.5,null,-3.0,";
    for (int i = 0; i < 100; ++i) {
        for (const number_cases::Kind& kind : number_cases::kinds) {
            row.push_back(kind.draw(random));
            expected += expectedText(row.back()) + ',';
        }
    }
    std::vector<char> text(row.size() * roomForJsonNumber);
    EXPECT_EQ(std::string(text.data(), writeJsonNumbers(text.data(), row)), expected);
    EXPECT_EQ(writeJsonNumbers(text.data(), {}), text.data());
}

}  // namespace
