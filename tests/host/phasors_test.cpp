#include "signal/phasors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "measuring/wiring.h"
#include "recording/generator.h"

namespace {

using rt305::Phasor;
using rt305::Phasors;
using std::numbers::pi;

Phasor atDegrees(double length, double degrees) {
    return std::polar(length, degrees * pi / 180.0);
}

/// A set of three that turns with a-b-c.
Phasors symmetrical(double length, double degrees = 0.0) {
    return {atDegrees(length, degrees), atDegrees(length, degrees - 120.0), atDegrees(length, degrees + 120.0)};
}

TEST(Phasors, FundamentalsAreFoundWhateverElseIsThere) {
    for (const double frequency : {49.7, 50.0, 59.96}) {
        for (const double seconds : {0.2, 0.317, 1.0}) {
            const auto recording = rt305::generate({.frequencyHz = frequency,
                                                    .durationSeconds = seconds,
                                                    .voltageHarmonics = {{3, 20.0, 40.0}, {5, 10.0, 0.0}},
                                                    .offsets = {10.0}});
            for (std::size_t phase = 0; phase < rt305::phaseTotal; ++phase) {
                const Phasor found = rt305::phasorOf(recording.columns[phase].samples, frequency, 10000.0);
                const Phasor truth = atDegrees(230.0, -120.0 * static_cast<double>(phase));
                EXPECT_LT(std::abs(found - truth), 0.23) << frequency << " Hz, " << seconds << " s, " << phase;
            }
        }
    }
}

TEST(Phasors, UnbalanceIsTheSameInBothDirections) {
    // 10 of negative and 5 of zero sequence beside 200
    Phasors set = symmetrical(200.0);
    const Phasors back = symmetrical(10.0, 33.0);
    for (std::size_t phase = 0; phase < rt305::phaseTotal; ++phase) {
        set[phase] += back[(rt305::phaseTotal - phase) % rt305::phaseTotal] + atDegrees(5.0, -70.0);
    }
    for (const Phasors& x : {set, Phasors{set[0], set[2], set[1]}}) {
        EXPECT_NEAR(rt305::unbalanceOf(x).negativePercent, 5.0, 1e-9);
        EXPECT_NEAR(rt305::unbalanceOf(x).zeroPercent, 2.5, 1e-9);
    }
}

TEST(Phasors, WiringFaultsAreNamed) {
    const Phasors u = symmetrical(230.0, 17.0);
    const auto loaded = [](double lag) { return symmetrical(5.0, 17.0 - lag); };
    const Phasors i = loaded(30.0);
    const std::string order = "The phase order is a-c-b: two voltages are exchanged, or the grid has this order.";
    const std::string back = "All currents oppose their voltages: power flows backwards, or all clamps are reversed.";
    const std::string unclear =
        "The angles between voltage and current differ much between the phases; no single reversed or exchanged "
        "current explains it.";
    struct Case {
        const char* what;
        Phasors voltages;
        Phasors currents;
        std::vector<std::string> faults;
    };
    const Case cases[] = {
        {"right", u, i, {}},
        {"right, capacitive", u, loaded(-60.0), {}},
        {"an unbalanced load", {u[0], 0.9 * u[1], u[2]}, {i[0], atDegrees(9.0, -160.0), 0.2 * i[2]}, {}},
        {"Ib reversed", u, {i[0], -i[1], i[2]}, {"Ib seems to be reversed."}},
        {"Ia and Ic exchanged", u, {i[2], i[1], i[0]}, {"Ic and Ia seem to be exchanged."}},
        {"Ia and Ib exchanged", u, {i[1], i[0], i[2]}, {"Ia and Ib seem to be exchanged."}},
        {"feeding back", u, loaded(200.0), {back}},
        {"the grid turns the other way", {u[0], u[2], u[1]}, {i[0], i[2], i[1]}, {order}},
        {"Ub and Uc exchanged", {u[0], u[2], u[1]}, i, {order, "Ub and Uc, or Ib and Ic seem to be exchanged."}},
        {"Uc reversed", {u[0], u[1], -u[2]}, i, {"Uc seems to be reversed."}},
        {"Ua and Ia reversed",
         {-u[0], u[1], u[2]},
         {-i[0], i[1], i[2]},
         {"Ua seems to be reversed.", "Ia seems to be reversed."}},
        {"two faults of the currents", u, {-i[1], i[0], i[2]}, {unclear}},
        {"one voltage for all",
         {u[0], u[0], u[0]},
         {},
         {"The voltages are not 120 degrees apart, and no single reversed one explains it."}},
        {"a dead voltage", {u[0], u[1], 0.0}, i, {}},
        {"a dead current", u, {i[0], -i[1], 0.0}, {}},
        {"missing samples", {NAN, u[1], u[2]}, i, {}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(rt305::wiringFaults(c.voltages, c.currents), c.faults) << c.what;
    }
    EXPECT_NEAR(rt305::lagDegrees(u[1], i[1]), 30.0, 1e-9);
}

}  // namespace
