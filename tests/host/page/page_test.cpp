#include <gtest/gtest.h>

#include <algorithm>

#include "page/diagrams.h"
#include "page/plots.h"
#include "support/signals.h"

namespace {

TEST(Page, ThinningKeepsPeaksEndsAndGaps) {
    for (const std::size_t count : {0U, 1U, 9U, 10U, 11U, 19U, 1003U}) {
        SCOPED_TRACE(count);
        const auto values = signals::noise(count);
        const auto places = rt305::thinnedPlaces(count, 10);
        const auto kept = rt305::thinned(values, places);
        ASSERT_EQ(kept.size(), places.size());
        ASSERT_EQ(places.size(), std::min<std::size_t>(count, 10));
        EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
        EXPECT_TRUE(count == 0 || (places.front() == 0 && places.back() == count - 1));
        if (count > 0) {
            EXPECT_EQ(*std::max_element(kept.begin(), kept.end()), *std::max_element(values.begin(), values.end()));
            EXPECT_EQ(*std::min_element(kept.begin(), kept.end()), *std::min_element(values.begin(), values.end()));
        }
    }
    const std::vector<double> fallingWithGap{5, 4, 3, 2, 1, NAN, -1, -2};
    const auto kept = rt305::thinned(fallingWithGap, rt305::thinnedPlaces(8, 4));
    EXPECT_EQ(kept[0], 5.0) << "the larger value came first";
    EXPECT_EQ(kept[1], 2.0);
    EXPECT_TRUE(std::isnan(kept[2]) && std::isnan(kept[3]));
}

TEST(Page, DiagramsLeaveOutWhatIsMissing) {
    const auto count = [](const std::string& text, const std::string& word) {
        std::size_t found = 0;
        for (std::size_t at = 0; (at = text.find(word, at)) != std::string::npos; ++at) {
            ++found;
        }
        return found;
    };
    const std::string phasors = rt305::phasorDiagram({.voltages = {{{0.0, 230.0}, {199.0, -115.0}, {NAN, NAN}}}});
    EXPECT_EQ(count(phasors, "<polygon"), 2U);
    EXPECT_EQ(count(phasors, R"(x="334.0" y="184.0" text-anchor="middle">Ua<)"), 1U) << "Ua points to the right";
    EXPECT_EQ(count(phasors, R"(x="103.0" y="317.3" text-anchor="middle">Ub<)"), 1U) << "Ub follows clockwise";
    const std::string bars = rt305::harmonicBars(
        {{"Ua", {50, 100, 150, 200}, {40, 20, NAN, 0}}, {"Ub", {50, 100}, {40, 26}}, {"Uc", {NAN, NAN}, {NAN, NAN}}});
    EXPECT_EQ(count(bars, "<rect"), 3U);
    EXPECT_EQ(count(bars, ">20 %<"), 1U) << "26 dB - 40 dB is 19.95 %, which the axis rounds up";
    EXPECT_EQ(count(phasors + bars + rt305::harmonicBars({}) + rt305::phasorDiagram({}), "nan"), 0U);
}

}  // namespace
