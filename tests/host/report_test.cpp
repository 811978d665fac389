#include <gtest/gtest.h>

#include <cmath>

#include "failure.h"
#include "generator.h"
#include "remarks.h"
#include "reports.h"
#include "results.h"
#include "text.h"

namespace {

using rt305::Measurement;
using rt305::NamedValue;

const std::vector<std::string> parameterNames{
    "S",   "Sa",     "Sb",     "Sc",     "P",      "Pa",     "Pb",     "Pc",  "Q",   "Qa",  "Qb", "Qc",
    "Uda", "Udb",    "Udc",    "Udab",   "Udbc",   "Udca",   "Ud0",    "Ida", "Idb", "Idc", "Fa", "Fb",
    "Fc",  "THD_Va", "THD_Vb", "THD_Vc", "THD_Ia", "THD_Ib", "THD_Ic", "Pf",  "Pfa", "Pfb", "Pfc"};

/// All parameters with values 1, 2, 3, ...; those whose names begin with one of the words are missing.
std::vector<NamedValue> parametersWithout(const std::vector<std::string>& words) {
    std::vector<NamedValue> parameters;
    for (const std::string& name : parameterNames) {
        const bool missing =
            std::any_of(words.begin(), words.end(), [&](const std::string& word) { return name.rfind(word, 0) == 0; });
        parameters.push_back({name, missing ? NAN : static_cast<double>(parameters.size() + 1), "V"});
    }
    return parameters;
}

Measurement measurementOf(const rt305::GeneratorSettings& generator, std::uint32_t flags) {
    rt305::MeasurementSettings settings;
    settings.flags = RT305_4_FOUR_WIRE | flags;
    return makeMeasurement(rt305::generate(generator), settings);
}

TEST(Reports, ParametersStandUnderTheirPhases) {
    const std::string report = rt305::reportParameters(parametersWithout({"P", "F"}));
    for (std::size_t i = 0; i < parameterNames.size(); ++i) {
        const bool missing = parameterNames[i][0] == 'P' || parameterNames[i][0] == 'F';
        EXPECT_EQ(report.find(" " + std::to_string(i + 1) + ".") != std::string::npos, !missing) << parameterNames[i];
    }
    EXPECT_NE(report.find("Line voltage ab, bc, ca               16.0000    17.0000    18.0000  V\n"),
              std::string::npos)
        << report;
    EXPECT_NE(report.find("Active power P                   -          -          -          -  V\n"),
              std::string::npos)
        << report;
}

TEST(Results, TextsAreReadAndOthersRefused) {
    const auto parameters = rt305::readParameters(
        R"({"paramData":[{"LastName":"S","dataName":null,"units":"VA"},{"LastName":"P","dataName":2,"units":"W"}]})");
    ASSERT_EQ(parameters.size(), 2U);
    EXPECT_TRUE(std::isnan(parameters[0].value));
    EXPECT_EQ(parameters[1].value, 2.0);
    const auto signals = rt305::readSignals(
        R"({"signalDataI":[{"LastName":"Ia","LastNameX":"Sample","LastNameY":"Current, A","dataName":[1.0,null,3.0],)"
        R"("paramData":[{"LastName":"peak2rms","UomName":"A","dataName":1.5}]}]})");
    ASSERT_EQ(signals.size(), 1U);
    EXPECT_EQ(rt305::reportSignals(signals), "               Ia\npeak2rms  1.50000\n") << "a ratio has no unit";
    for (const char* const text : {"", "{", "\"{}\"", "null", R"({"paramData":[{"LastName":"S"}]})"}) {
        EXPECT_THROW(rt305::readParameters(text), rt305::Failure) << text;
    }
}

TEST(Remarks, SayWhyValuesAreMissing) {
    struct Case {
        const char* what;
        rt305::GeneratorSettings generator;
        std::uint32_t flags;
        std::vector<std::string> missing;
        std::vector<std::string> remarks;
    };
    const std::string outside = "THD and frequency of the voltages not given: the fundamental must lie inside ";
    const Case cases[] = {
        {"nothing missing", {}, RT305_4_POWER_THREE_WATTMETER_COMPLEX, {}, {}},
        {"no method", {}, 0, {"S", "P", "Q"}, {"No power: --power was not given", "No power factors"}},
        {"60 Hz grid",
         {.frequencyHz = 59.96},
         RT305_4_POWER_TWO_WATTMETER,
         {"THD", "F", "S", "P", "Q"},
         {outside + "49.6-50.4 Hz on average and per channel; it is at 60.0 Hz; try --frequency control.",
          "THD of the currents not given", "No power: it needs THD of all six channels", "No power factors"}},
        {"beyond any window",
         {.frequencyHz = 65.0},
         RT305_4_FREQUENCY_CONTROL | RT305_4_POWER_TWO_WATTMETER,
         {"THD_V"},
         {outside + "10-60 Hz on average and per channel; it is at 65.0 Hz.", "No power: it needs THD"}},
        {"another rate",
         {.frequencyHz = 60.0, .rateHz = 50000.0},
         RT305_4_POWER_TWO_WATTMETER,
         {"THD_V"},
         {outside + "49.6-50.4 Hz on average and per channel; it is at 12.0 Hz when the samples are taken as 10000 a "
                    "second; try --frequency control.",
          "No power: it needs THD"}},
        {"dead current",
         {.factors = {1.0, 1.0, 1.0, 1.0, 0.0, 1.0}},
         RT305_4_POWER_TWO_WATTMETER,
         {"THD_I"},
         {"THD of the currents not given: the fundamental must lie inside 49.6-50.4 Hz on average and per channel; "
          "there is no fundamental in Ib.",
          "No power: it needs THD"}},
        {"one phase",
         {},
         RT305_4_POWER_TWO_WATTMETER,
         {"THD_Vc"},
         {"THD and frequency of Uc not given", "No power: it needs THD"}},
        {"two wattmeters",
         {},
         RT305_4_POWER_TWO_WATTMETER_PHASE,
         {"Pa", "Pb", "Pc"},
         {"No power per phase", "--power two-wattmeter-phase gives magnitudes"}},
        {"line voltage times phase current",
         {},
         RT305_4_POWER_THREE_WATTMETER,
         {"Q"},
         {"No total reactive power", "Reactive power by --power three-wattmeter"}},
        {"short record",
         {.durationSeconds = 0.2},
         RT305_4_POWER_THREE_WATTMETER_COMPLEX,
         {},
         {"THD reads too high in records of less than 12.5 cycles; this one has 10.0."}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto remarks = rt305::remarksOn(parametersWithout(c.missing), measurementOf(c.generator, c.flags));
        ASSERT_EQ(remarks.size(), c.remarks.size()) << rt305::joined(remarks);
        for (std::size_t i = 0; i < remarks.size(); ++i) {
            EXPECT_EQ(remarks[i].substr(0, c.remarks[i].size()), c.remarks[i]);
        }
    }
    Measurement threeWire = measurementOf({}, RT305_4_POWER_THREE_WATTMETER_COMPLEX);
    threeWire.settings.flags &= ~RT305_4_FOUR_WIRE;
    EXPECT_EQ(remarksOn(parametersWithout({}), threeWire).size(), 1U)
        << "wired for other voltages than the method takes";
    threeWire.inputType = RT305_4_INPUT_CURRENTS;
    const auto remarks = rt305::remarksOn(parametersWithout({""}), threeWire);
    ASSERT_EQ(remarks.size(), 1U);
    EXPECT_NE(remarks[0].find("give all six channels"), std::string::npos);
}

TEST(Text, NumbersAreFormattedAsShown) {
    EXPECT_EQ(rt305::formatFixed(-0.0001, 2), "0.00");
    EXPECT_EQ(rt305::formatFixed(-0.006, 2), "-0.01");
    EXPECT_EQ(rt305::formatFixed(NAN, 2), "-");
    EXPECT_EQ(rt305::decimalsFor(230.0, 6), 3);
    EXPECT_EQ(rt305::decimalsFor(1e7, 6), 0);
    EXPECT_EQ(rt305::decimalsFor(0.0, 6), 0);
}

}  // namespace
