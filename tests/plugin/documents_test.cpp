// The documents of operations 0 and 1, key by key and number by number.

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "adapter/nlohmann/json.h"
#include "plugin_host.h"

namespace {

using nlohmann::json;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

const std::vector<std::pair<std::string, std::string>> parameters{
    {"S", "VA"},     {"Sa", "VA"},    {"Sb", "VA"},    {"Sc", "VA"},  {"P", "W"},      {"Pa", "W"},     {"Pb", "W"},
    {"Pc", "W"},     {"Q", "VAR"},    {"Qa", "VAR"},   {"Qb", "VAR"}, {"Qc", "VAR"},   {"Uda", "V"},    {"Udb", "V"},
    {"Udc", "V"},    {"Udab", "V"},   {"Udbc", "V"},   {"Udca", "V"}, {"Ud0", "V"},    {"Ida", "A"},    {"Idb", "A"},
    {"Idc", "A"},    {"Fa", "Hz"},    {"Fb", "Hz"},    {"Fc", "Hz"},  {"THD_Va", "%"}, {"THD_Vb", "%"}, {"THD_Vc", "%"},
    {"THD_Ia", "%"}, {"THD_Ib", "%"}, {"THD_Ic", "%"}, {"Pf", "-"},   {"Pfa", "-"},    {"Pfb", "-"},    {"Pfc", "-"}};

/// Conditioning and statistics in long double, left to right.
struct Reference {
    std::vector<long double> y;
    long double mean = 0, rms = 0, peak2rms = 0, peak2peak = 0;

    explicit Reference(const std::vector<double>& x, long double coefficient) {
        const auto n = static_cast<long double>(x.size());
        long double sum = 0, zeros = 0;
        for (const double v : x) {
            sum += v;
            zeros += v == 0.0;
        }
        const long double gapMean = n == zeros ? 0 : sum / (n - zeros);
        const long double offset = (sum + zeros * gapMean) / n;
        long double squares = 0, total = 0, low = nan, high = nan;
        for (const double v : x) {
            y.push_back(((v == 0.0 ? gapMean : static_cast<long double>(v)) - offset) * coefficient);
            total += y.back();
            squares += y.back() * y.back();
            low = std::fmin(low, y.back());
            high = std::fmax(high, y.back());
        }
        mean = total / n;
        rms = std::sqrt(squares / n);
        peak2peak = high - low;
        peak2rms = std::max(std::fabs(low), std::fabs(high)) / rms;
    }
};

/// A number that may be missing (null) where the expected one is NaN.
void expectNumber(const json& actual, long double expected, long double tolerance, const std::string& what) {
    if (std::isnan(expected)) {
        EXPECT_TRUE(actual.is_null()) << what;
    } else {
        EXPECT_NEAR(actual.get<double>(), static_cast<double>(expected), static_cast<double>(tolerance)) << what;
    }
}

void checkSignals(const std::string& text, const std::string& name, const std::string& letter, const std::string& unit,
                  const std::vector<std::vector<double>>& channels, double coefficient) {
    const json document = json::parse(text);
    ASSERT_EQ(document.size(), 1U);
    const json& rows = document.at(name);
    ASSERT_EQ(rows.size(), 3U);
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const json& row = rows[phase];
        const Reference expected(channels[phase], coefficient);
        EXPECT_EQ(row.size(), 5U);
        EXPECT_EQ(row.at("LastName"), letter + "abc"[phase]);
        EXPECT_EQ(row.at("LastNameX"), "Sample");
        EXPECT_EQ(row.at("LastNameY"), unit == "V" ? "Voltage, V" : "Current, A");
        const json& samples = row.at("dataName");
        ASSERT_EQ(samples.size(), channels[phase].size());
        for (std::size_t i = 0; i < samples.size(); ++i) {
            expectNumber(samples[i], expected.y[i], 1e-12L * expected.rms, "sample");
        }
        const std::vector<std::tuple<std::string, long double, long double>> statistics{
            {"mean", expected.mean, 1e-12L * expected.rms},
            {"rms", expected.rms, 1e-12L * expected.rms},
            {"peak2rms", expected.peak2rms, 1e-12L * expected.peak2rms},
            {"peak2peak", expected.peak2peak, 1e-12L * expected.peak2peak}};
        const json& nested = row.at("paramData");
        ASSERT_EQ(nested.size(), statistics.size());
        for (std::size_t r = 0; r < statistics.size(); ++r) {
            const auto& [label, value, tolerance] = statistics[r];
            EXPECT_EQ(nested[r].size(), 3U);
            EXPECT_EQ(nested[r].at("LastName"), label);
            EXPECT_EQ(nested[r].at("UomName"), unit);
            expectNumber(nested[r].at("dataName"), value, tolerance, label);
        }
    }
}

std::vector<double> noisy(std::size_t n, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> normal(3.0, 20.0);
    std::vector<double> x = sine(n, 311.0, 50.0, static_cast<double>(seed));
    for (double& v : x) {
        v += normal(random);
    }
    return x;
}

std::vector<double> withGap(std::vector<double> x) {
    std::fill(x.begin() + 100, x.begin() + 164, 0.0);
    return x;
}

std::vector<double> withNaN(std::vector<double> x) {
    x[x.size() / 2] = nan;
    return x;
}

TEST(Documents, SignalTextsFollowEveryKeyStringAndNumber) {
    const std::vector<std::vector<double>> inputs{
        sine(2000, 325.0, 50.0),        noisy(2000, 1),         withGap(noisy(2000, 2)), withNaN(noisy(2000, 3)),
        std::vector<double>(2000, 0.0), sine(2000, 1e-9, 49.7),
    };
    struct Case {
        std::uint32_t type;
        std::vector<std::size_t> voltages, currents;
    };
    const std::vector<Case> cases{{4, {0, 1, 2}, {}}, {8, {}, {2, 3, 5}}, {21, {5, 2, 1}, {3, 0, 4}}};
    for (const Case& c : cases) {
        Call call;
        std::vector<std::vector<double>> voltages, currents;
        const auto add = [&](std::int32_t kind, const std::vector<std::size_t>& chosen, auto& channels, double k) {
            for (std::uint32_t phase = 0; phase < chosen.size(); ++phase) {
                channels.push_back(inputs[chosen[phase]]);
                call.add(kind, phase, channels.back());
                call.descriptors.back().coefficient = k;
            }
        };
        add(Call::voltage, c.voltages, voltages, 100.0);
        add(Call::current, c.currents, currents, -2.5);
        call.request.samplesNumber = 2000;
        call.request.inputType = c.type;
        call.request.operation = 1;
        call.request.options.measurementFlags = RT305_4_SIMULATED_SOURCE_MASK;
        ASSERT_EQ(call.run(), 1);
        if (!voltages.empty()) {
            checkSignals(call.texts[Call::signalsU], "signalDataU", "V", "V", voltages, 100.0);
        }
        if (!currents.empty()) {
            checkSignals(call.texts[Call::signalsI], "signalDataI", "I", "A", currents, -2.5);
        }
    }
}

TEST(Documents, ConstantChannelHasZeroStatisticsAndNoRatio) {
    Call call;
    for (std::uint32_t phase = 0; phase < 3; ++phase) {
        call.add(Call::voltage, phase, std::vector<double>(3, 2.0));
    }
    call.request.samplesNumber = 3;
    call.request.inputType = 4;
    call.request.operation = 1;
    ASSERT_EQ(call.run(), 1);
    const std::string row = R"("LastNameX":"Sample","LastNameY":"Voltage, V","dataName":[0.0,0.0,0.0],"paramData":[)"
                            R"({"LastName":"mean","UomName":"V","dataName":0.0},)"
                            R"({"LastName":"rms","UomName":"V","dataName":0.0},)"
                            R"({"LastName":"peak2rms","UomName":"V","dataName":null},)"
                            R"({"LastName":"peak2peak","UomName":"V","dataName":0.0}]})";
    EXPECT_EQ(call.texts[Call::signalsU], R"({"signalDataU":[{"LastName":"Va",)" + row + R"(,{"LastName":"Vb",)" + row +
                                              R"(,{"LastName":"Vc",)" + row + "]}");
}

TEST(Documents, ParameterTextNamesAllParametersAndUnits) {
    for (const std::uint32_t type : {0U, 4U, 8U}) {
        Call call;
        for (std::uint32_t phase = 0; phase < 3; ++phase) {
            call.add(type == 8 ? Call::current : Call::voltage, phase, sine(500, 10.0, 50.0));
        }
        call.request.samplesNumber = 500;
        call.request.inputType = type;
        ASSERT_EQ(call.run(), 1);
        std::string expected = R"({"paramData":[)";
        for (const auto& [name, unit] : parameters) {
            expected += (expected.back() == '[' ? "" : ",") + (R"({"LastName":")" + name) +
                        R"(","dataName":null,"units":")" + unit + "\"}";
        }
        EXPECT_EQ(call.texts[Call::parameters], expected + "]}") << type;
    }
}

TEST(Documents, HardwareScaleAndRebuiltCurrentReachTheTexts) {
    Call call;
    const std::vector<double> a = sine(400, 3.0, 50.0);
    const std::vector<double> b = sine(400, 2.0, 50.0, 2.0);
    call.add(Call::current, 0, std::vector<double>(400, 7.0));
    call.add(Call::current, 1, a);
    call.add(Call::current, 2, b);
    for (ChannelData& descriptor : call.descriptors) {
        descriptor.inputResistance = 24.9;
        descriptor.gain = 2.0;
    }
    call.request.samplesNumber = 400;
    call.request.inputType = 8;
    call.request.operation = 1;
    call.request.options.measurementFlags = RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_A;
    ASSERT_EQ(call.run(), 1);
    const double scale = 1.0 / 24.9 * 0.000732421875 * 6.74712643678161 / (1.0 + (19.53125 * 2.0 + 35.0) / 1000.0);
    const json rows = json::parse(call.texts[Call::signalsI]).at("signalDataI");
    for (const std::size_t i : {std::size_t{0}, std::size_t{1}, std::size_t{57}}) {
        const double ib = rows[1].at("dataName")[i];
        EXPECT_NEAR(ib, a[i] * scale, 1e-15 * scale * 400);
        EXPECT_EQ(rows[0].at("dataName")[i].get<double>(), -(ib + rows[2].at("dataName")[i].get<double>()));
    }
}

}  // namespace
