#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "page/diagrams.h"
#include "page/plots.h"
#include "support/signals.h"

namespace {

TEST(Page, BandsKeepPeaksAndWholeGaps) {
    for (const std::size_t count : {10U, 11U, 19U, 1003U}) {
        SCOPED_TRACE(count);
        const auto values = signals::noise(count);
        const auto [low, high] = rt305::bandsOf(values, 10);
        ASSERT_EQ(low.size(), 10U);
        EXPECT_EQ(*std::max_element(high.begin(), high.end()), *std::max_element(values.begin(), values.end()));
        EXPECT_EQ(*std::min_element(low.begin(), low.end()), *std::min_element(values.begin(), values.end()));
        EXPECT_EQ(rt305::bandStart(10, 10, count), count);
    }
    const auto [low, high] = rt305::bandsOf(std::vector<double>{5, 4, NAN, 3, NAN, NAN}, 3);
    EXPECT_EQ((std::array{low[0], high[0], low[1], high[1]}), (std::array{4.0, 5.0, 3.0, 3.0}));
    EXPECT_TRUE(std::isnan(low[2]) && std::isnan(high[2]));
}

TEST(Page, PacksValuesAsDifferences) {
    EXPECT_EQ(rt305::packed(std::vector<double>{0.0, 1.0, 3.0}, 1.0, 0), "1AQMF");
    EXPECT_EQ(rt305::packed(std::vector<double>{0.0, 0.1, 0.2, 0.3}, 1.0, 3), "2AckBAQE=") << "a straight line";
    EXPECT_EQ(rt305::packed(std::vector<double>{-2.0, NAN, 1e300}, 0.5, 0), "1AgAA") << "-1 and two that are missing";
    EXPECT_EQ(rt305::packed({}, 1.0, 0), "1");
}

TEST(Page, DiagramsLeaveOutWhatIsMissing) {
    const auto count = [](const std::string& text, const std::string& word) {
        std::size_t found = 0;
        for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; ++at) {
            ++found;
        }
        return found;
    };
    const std::string phasors = rt305::phasorDiagram({.voltages = {{{0.0, 230.0}, {199.0, -115.0}, {NAN, NAN}}},
                                                      .currents = {{5.0, 0.0, 0.0}},
                                                      .hasSignal = {true, true, true}});
    EXPECT_EQ(count(phasors, "<polygon"), 2U) << "neither NaN nor a current without a signal";
    EXPECT_EQ(count(phasors, R"(x="334.0" y="184.0" text-anchor="middle">Ua<)"), 1U) << "Ua points to the right";
    EXPECT_EQ(count(phasors, R"(x="103.0" y="317.3" text-anchor="middle">Ub<)"), 1U) << "Ub follows clockwise";
    const rt305::HarmonicChart chart{.channels = {{"Ua", 0, {100, 10, NAN, 0.001}}, {"Ub", 1, {100, 19.95, 0, 0}}},
                                     .orders = 4,
                                     .limits = {{3, 5.0}, {5, 6.0}}};
    EXPECT_EQ(chart.textOf(3), "Ua - %, Ub 0.00 %, limit 5 %");
    const std::string bars = rt305::harmonicBars(chart);
    EXPECT_EQ(count(bars, "z"), 4U) << "two bars on each scale";
    EXPECT_EQ(count(bars, ">20 %<"), 1U) << "19.95 %, rounded up";
    EXPECT_EQ(count(bars, R"(class="limit")"), 2U);
    const std::string tiny = rt305::harmonicBars({.channels = {{"Ua", 0, {100, 0.0001}}}, .orders = 2});
    EXPECT_EQ(count(tiny, "z"), 0U) << "no axis ends below 1 %";
    EXPECT_EQ(count(phasors + bars + rt305::phasorDiagram({}), "nan"), 0U);
}

}  // namespace
