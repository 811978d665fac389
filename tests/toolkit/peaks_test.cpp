#include "toolkit/peaks.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "toolkit/non_finite.h"

namespace {

using coder::Peak;
using Positions = std::vector<int>;

Positions positions(const std::vector<Peak>& peaks, const std::vector<double>& y) {
    Positions result;
    for (const Peak& peak : peaks) {
        EXPECT_EQ(peak.value, y[static_cast<std::size_t>(peak.position - 1)]);
        result.push_back(peak.position);
    }
    return result;
}

TEST(Peaks, StandWhereTheRowRisesAndFalls) {
    const double inf = rtInf;
    const double nan = rtNaN;
    const struct {
        const char* what;
        std::vector<double> y;
        Positions expected;
    } cases[] = {
        {"nothing", {}, {}},
        {"too short", {1, 2}, {}},
        {"one", {0, 1, 0}, {2}},
        {"ends never count", {5, 1, 2, 1, 5}, {3}},
        {"monotone", {1, 2, 3, 4}, {}},
        {"constant", {1, 1, 1, 1}, {}},
        {"a plateau counts at its first element", {0, 3, 3, 3, 1}, {2}},
        {"a shoulder is no peak", {0, 1, 1, 2, 2, 0}, {4}},
        {"a plateau at the start", {3, 3, 1, 2, 0}, {4}},
        {"a plateau at the end", {0, 1, 0, 3, 3}, {2}},
        {"NaN beside a top", {0, 2, nan, 1, 0}, {}},
        {"NaN before a top", {nan, 2, 0, 1, 0}, {4}},
        {"NaN inside a plateau", {0, 2, nan, 2, 0}, {}},
        {"+Inf counts wherever it stands", {inf, 0, inf, 0, inf}, {1, 3, 5}},
        {"a +Inf plateau counts at every element", {0, inf, inf, 0}, {2, 3}},
        {"+Inf ends a run", {0, 2, inf, 2, 0}, {3}},
        {"-Inf neighbours", {-inf, 1, -inf, -5, -inf}, {2, 4}},
        {"-Inf itself is no peak", {-inf, -inf, -inf}, {}},
        {"signed zeros are equal", {-1, -0.0, 0.0, -1}, {2}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(positions(coder::peaksByCriterion(c.y, rtMinusInf, 99), c.y), c.expected) << c.what;
    }
}

TEST(Peaks, AreChosenByCountAndCriterion) {
    const std::vector<double> y{0, 3, 0, 5, 5, 1, 3, 0, 4, 0, 5, 0};
    const std::vector<double> withInf{0, 3, 0, rtInf, 0, 4, 0};
    EXPECT_EQ(positions(coder::highestPeaks(y, 99), y), (Positions{4, 11, 9, 2, 7})) << "ties keep their order";
    EXPECT_EQ(positions(coder::highestPeaks(y, 4), y), (Positions{4, 11, 9, 2}));
    EXPECT_EQ(positions(coder::highestPeaks(withInf, 2), withInf), (Positions{4, 6}));
    EXPECT_EQ(positions(coder::peaksByCriterion(y, rtMinusInf, 4), y), (Positions{2, 4, 9, 11})) << "by position";
    EXPECT_EQ(positions(coder::peaksByCriterion(y, 3.0, 99), y), (Positions{4, 9, 11})) << "strictly above";
    EXPECT_EQ(positions(coder::peaksByCriterion(y, 3.0, 2), y), (Positions{4, 11}));
    for (const double criterion : {rtInf, rtNaN}) {
        EXPECT_EQ(positions(coder::peaksByCriterion(y, criterion, 9), y), Positions{});
        EXPECT_EQ(positions(coder::peaksByCriterion(withInf, criterion, 9), withInf), Positions{4});
    }
    for (const int count : {0, -1, -32768}) {
        EXPECT_TRUE(coder::highestPeaks(withInf, count).empty());
        EXPECT_TRUE(coder::peaksByCriterion(withInf, 0.0, count).empty());
    }
}

}  // namespace
