#include <gtest/gtest.h>

#include <cmath>

#include "base/failure.h"
#include "base/text.h"
#include "measuring/result_texts.h"
#include "output/remarks.h"
#include "output/result_tables.h"
#include "recording/generator.h"

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
    settings.resample = false;
    return makeMeasurement(rt305::generate(generator), settings);
}

TEST(Reports, ParametersStandUnderTheirPhases) {
    const std::string report = textOf(rt305::parameterTable(parametersWithout({"P", "F"})));
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
    EXPECT_EQ(textOf(rt305::signalTable("", signals)), "               Ia\npeak2rms  1.50000\n")
        << "a ratio has no unit";
    for (const char* const text : {"", "{", "\"{}\"", "null", R"({"paramData":[{"LastName":"S"}]})"}) {
        EXPECT_THROW(rt305::readParameters(text), rt305::Failure) << text;
    }
}

TEST(Reports, SpectraAndHarmonicsStandSideBySide) {
    const std::string va = R"({"LastNameX":"Frequency, Hz","LastNameY":"U, V","name":"Va","dataTnv":[0.0,1.5,null],)"
                           R"("dataTnvf":[0.0,0.25,0.5],"paramData":[{"fi":0.25,"mag":1.5},{"fi":0.5,"mag":null}]})";
    const std::string vb = R"({"LastNameX":"Frequency, Hz","LastNameY":"L,dB","name":"Vb","dataTnv":[],)"
                           R"("dataTnvf":[],"paramData":null})";
    EXPECT_EQ(textOf(rt305::spectrumTable("", rt305::readSpectra("{\"spectrumDataU\":[" + va + "," + vb + "]}"))),
              "   Va, Hz        V  Vb, Hz  dB\n"
              "1   0.250  1.50000\n"
              "2   0.500        -\n"
              "3 lines, 0.25 Hz apart, up to 0.5 Hz\n");
    const std::string ia = R"({"LastNameX":"Frequency, Hz","LastNameY":"Amp, dB","name":"Ia","dataX":[50.0,100.0,)"
                           R"(null],"dataY":[6.0,-34.0,null]})";
    EXPECT_EQ(textOf(rt305::harmonicTable("", rt305::readHarmonics("{\"thdDataI\":[" + ia + "]}"))),
              "Order   Ia, Hz      dB        %\n"
              "    1   50.000    6.00  100.000\n"
              "    2  100.000  -34.00    1.000\n"
              "    3        -       -        -\n");
}

TEST(Remarks, SayWhyValuesAreMissing) {
    struct Case {
        const char* what;
        rt305::GeneratorSettings generator;
        std::uint32_t flags;
        std::vector<std::string> missing;
        std::vector<std::string> remarks;
    };
    const std::string voltages = "THD and frequency of the voltages not given: the fundamental on average, ";
    const std::string noPower = "No power: it needs THD of all six channels, but ";
    const Case cases[] = {
        {"nothing missing", {}, RT305_4_POWER_THREE_WATTMETER_COMPLEX, {}, {}},
        {"no method", {}, 0, {"S", "P", "Q"}, {"No power: --power was not given"}},
        {"60 Hz grid",
         {.frequencyHz = 59.96},
         RT305_4_POWER_TWO_WATTMETER,
         {"THD", "F", "S", "P", "Q"},
         {voltages + "59.96 Hz, lies outside 49.6-50.4 Hz; try --frequency control.", "THD of the currents not given",
          noPower + "the fundamental on average, 59.96 Hz, lies outside 49.6-50.4 Hz."}},
        {"beyond any window",
         {.frequencyHz = 65.0},
         RT305_4_FREQUENCY_CONTROL | RT305_4_POWER_TWO_WATTMETER,
         {"THD_V"},
         {voltages + "65.00 Hz, lies outside 10-60 Hz.", noPower}},
        {"another rate",
         {.frequencyHz = 60.0, .rateHz = 50000.0},
         RT305_4_POWER_TWO_WATTMETER,
         {"THD_V"},
         {voltages + "12.00 Hz, lies outside 49.6-50.4 Hz when the samples are taken as 10000 a second; try "
                     "--frequency control.",
          noPower}},
        {"dead current",
         {.factors = {1.0, 1.0, 1.0, 1.0, 0.0, 1.0}},
         RT305_4_POWER_TWO_WATTMETER,
         {"THD_I"},
         {"THD of the currents not given: Ib is dead (0 A).", noPower + "Ib is dead (0 A)."}},
        {"one phase",
         {},
         RT305_4_POWER_TWO_WATTMETER,
         {"THD_Vc"},
         {"THD and frequency of Uc not given: the record may be too short", noPower}},
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
         {"THD and harmonics read too high in records of less than 12.5 cycles"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto remarks = rt305::remarksOn(parametersWithout(c.missing), measurementOf(c.generator, c.flags));
        ASSERT_EQ(remarks.size(), c.remarks.size()) << rt305::joined(remarks);
        for (std::size_t i = 0; i < remarks.size(); ++i) {
            EXPECT_EQ(remarks[i].substr(0, c.remarks[i].size()), c.remarks[i]);
        }
    }
    // b at 51 Hz: c is missing, as the library judges b and c by each other, and b is not
    Measurement crossed = measurementOf({}, RT305_4_POWER_TWO_WATTMETER);
    crossed.samples[1] = measurementOf({.frequencyHz = 50.9}, 0).samples[1];
    EXPECT_EQ(remarksOn(parametersWithout({"THD_Vc"}), crossed),
              (std::vector<std::string>{
                  "THD and frequency of Uc not given: the fundamental of Ub, 50.90 Hz, lies outside 49.6-50.4 Hz, and "
                  "the library judges b by c and c by b; try --frequency control.",
                  noPower + "the fundamental of Ub, 50.90 Hz, lies outside 49.6-50.4 Hz, and the library judges b by c "
                            "and c by b."}));
    crossed.samples[1] = measurementOf({.frequencyHz = 75.0}, 0).samples[1];
    EXPECT_EQ(remarksOn(parametersWithout({"THD_V"}), crossed)[0],
              "THD and frequency of the voltages not given: the fundamental on average, 58.33 Hz, lies outside "
              "49.6-50.4 Hz.")
        << "the other window does not take 75 Hz either";
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
