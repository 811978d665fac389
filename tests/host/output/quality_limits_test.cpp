#include "output/quality_limits.h"

#include <gtest/gtest.h>

namespace {

TEST(QualityLimits, JudgeTheWorstPhaseByItsShareInside) {
    rt305::QualityResults results{.settings = {.rateHz = 10000.0, .declaredVolts = 230.0}};
    results.settings.isMeasured = {true, true, true, false, false, false};
    results.quantities = rt305::quantitiesOf(results.settings);
    const auto at = [&](const char* key) { return *rt305::findQuantity(results.quantities, key); };
    for (int i = 0; i < 20; ++i) {
        rt305::Interval interval{rt305::IntervalLength::tenMinutes, 600.0 * i, 600.0};
        interval.values.assign(results.quantities.size(), std::numeric_limits<double>::quiet_NaN());
        interval.values[at("Ua")] = 230.0;
        interval.values[at("Ub")] = i < 2 ? 206.0 : 210.0;  // -10.4 % in two of twenty
        interval.values[at("Uc")] = 230.0;
        interval.values[at("Ua_h1")] = interval.values[at("Ub_h1")] = interval.values[at("Uc_h1")] = 200.0;
        interval.values[at("Uc_h5")] = i == 7 ? 14.0 : 2.0;
        interval.isFlagged = i == 19;  // left out
        interval.values[at("u2")] = i == 19 ? 9.0 : 1.0;
        results.tenMinutes.push_back(interval);
        results.tenSeconds.push_back(
            {rt305::IntervalLength::tenSeconds, 10.0 * i, 10.0, false, false, {i < 1 ? 50.6 : 50.1}});
    }
    const auto set = rt305::parseLimits(
        "\xEF\xBB\xBF# x\r\nname,A, b\r\ndays,7\nquantity,percent,lower,upper\n\n"
        "voltage,95,-10,10\nvoltage,89,-10,10\nvoltage,100,-15,\nfrequency,95,-1,1\n"
        "unbalance,100,,2\nharmonic_5,94,,6\nplt,95,,1\n",
        "limits.csv");
    EXPECT_EQ(set.name + " " + std::to_string(set.days), "A, b 7.000000");
    std::string text;
    for (const rt305::Verdict& verdict : rt305::judge(set, results)) {
        text += verdict.channel + ' ' + std::to_string(verdict.intervals) + ' ' +
                std::to_string(std::lround(verdict.insidePercent)) + (verdict.isKept() ? " kept; " : "; ");
    }
    EXPECT_EQ(text,
              "Ub 19 89; Ub 19 89 kept; Ua 19 100 kept; frequency 20 95 kept; u2 19 100 kept; Uc_h5 19 95 kept; "
              "Plt_Ua 0 0; ");
}

}  // namespace
