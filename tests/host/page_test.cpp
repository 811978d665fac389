#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "page/checksum.h"
#include "page/diagrams.h"
#include "page/html.h"
#include "page/plots.h"

namespace {

TEST(Page, TextIsEscapedAndPutInOnce) {
    EXPECT_EQ(rt305::escaped("<a href=\"x\">R&D\r\n\x01</a>"), "&lt;a href=&quot;x&quot;&gt;R&amp;D   &lt;/a&gt;");
    EXPECT_EQ(rt305::filled("{{a}}-{{b}}-{{a}}", {{"a", "{{b}}"}, {"b", "2"}}), "{{b}}-2-{{b}}");
    const std::string data =
        rt305::plotData({{"g", "x", 1, 10, 0.0, {{"</script><script>", 1, 0.0, 1.0, {{"<!--", 0, {1.0}}}}}}});
    EXPECT_EQ(data.find('<'), std::string::npos);
    EXPECT_EQ(rt305::plotData({{"empty", "x", 1, 10, 0.0, {}}}), "[]") << "nothing to draw";
    EXPECT_EQ(nlohmann::json::parse(data).at(0).at("panels").at(0).at("axis"), "</script><script>");
}

/// NIST's example of FIPS 180-4, "abc", its digest as Base64.
TEST(Page, PolicyHashesAreThoseOfTheTexts) {
    EXPECT_EQ(rt305::policyHashOf("abc"), "'sha256-ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0='");
    EXPECT_THROW(rt305::checksumOfFile("/nonexistent/file"), std::runtime_error);
}

TEST(Page, ThinningKeepsPeaksEndsAndGaps) {
    for (const std::size_t count : {0U, 1U, 9U, 10U, 11U, 19U, 1003U}) {
        SCOPED_TRACE(count);
        std::vector<double> values(count);
        for (std::size_t k = 0; k < count; ++k) {
            values[k] = std::sin(static_cast<double>(k * k));
        }
        const auto places = rt305::thinnedPlaces(count, 10);
        const auto kept = rt305::thinned(values, places);
        ASSERT_EQ(kept.size(), places.size());
        ASSERT_LE(places.size(), 10U);
        EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
        if (count > 0) {
            EXPECT_EQ(places.front(), 0U);
            EXPECT_EQ(places.back(), count - 1);
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

std::size_t countOf(const std::string& text, const std::string& word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
        ++count;
    }
    return count;
}

TEST(Page, DiagramsLeaveOutWhatIsMissing) {
    using rt305::Phasor;
    const rt305::Fundamentals fundamentals{{}, {Phasor(0.0, 230.0), Phasor(199.0, -115.0), Phasor(NAN, NAN)}, {}};
    const std::string phasors = rt305::phasorDiagram(fundamentals);
    EXPECT_EQ(countOf(phasors, "<polygon"), 2U);
    EXPECT_NE(phasors.find(R"(x="334.0" y="184.0" text-anchor="middle">Ua<)"), std::string::npos)
        << "the first voltage points to the right: " << phasors;
    const std::vector<rt305::Harmonics> channels{
        {"Va", {50, 100, 150, 200}, {40, 20, NAN, 0}}, {"Vb", {50, 100}, {40, 26}}, {"Vc", {NAN, NAN}, {NAN, NAN}}};
    const std::string bars = rt305::harmonicBars(channels);
    EXPECT_EQ(countOf(bars, "<rect"), 3U);
    EXPECT_NE(bars.find(">20 %<"), std::string::npos) << "26 dB - 40 dB is 19.95 %, which the axis rounds up";
    for (const std::string& drawing : {phasors, bars, rt305::harmonicBars({}), rt305::phasorDiagram({})}) {
        EXPECT_EQ(drawing.find("nan"), std::string::npos);
        EXPECT_EQ(drawing.find("=\"-\""), std::string::npos);
    }
}

}  // namespace
