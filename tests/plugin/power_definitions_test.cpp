// The published power-definition example through the loaded library: IEEE Std 1459-2010, Annex B, a distorted voltage
// and current at 50 Hz with their 3rd, 5th and 7th harmonics.
//
// The printed phases of the 5th and 7th voltage harmonic (140 and 20 degrees) do not give the printed powers; 141 and
// -34 degrees do, for every harmonic, and are used here. Published per phase, where P1 is rounded: P 8632.54 W,
// V 101.56 V, I 103.56 A, THD_V 0.177, THD_I 0.269. Unrounded: P 8632.7886 W, S 10517.4926 VA,
// N = sqrt(S^2 - P^2) 6007.7127 var, Budeanu's Q 4984.6690 var, V 101.557865 V, I 103.561576 A, THD 17.72005 % and
// 26.92582 %, hypot(P, Q) 9968.5487 VA.

#include <gtest/gtest.h>

#include <map>
#include <numbers>

#include "adapter/nlohmann/json.h"
#include "plugin_host.h"

namespace {

using nlohmann::json;

constexpr long double degree = std::numbers::pi_v<long double> / 180;

struct Harmonic {
    int order;
    long double voltage, voltageAngle;  // V, degrees
    long double current, currentAngle;  // A, degrees
};
constexpr std::array<Harmonic, 4> harmonics{
    {{1, 100, 0, 100, -30}, {3, 8, -70, 20, -165}, {5, 15, 141, 15, 234}, {7, 5, -34, 10, 234}}};

/// The closed forms of one phase, per phase and between two of them.
struct ClosedForm {
    long double V = 0, I = 0, line = 0;  // RMS: V to neutral, A, V between phases
    long double P = 0, budeanu = 0;      // W, var
    long double distortionV = 0, distortionI = 0;

    ClosedForm() {
        for (const Harmonic& h : harmonics) {
            const long double angle = (h.voltageAngle - h.currentAngle) * degree;
            P += h.voltage * h.current * std::cos(angle);
            budeanu += h.voltage * h.current * std::sin(angle);
            V += h.voltage * h.voltage;
            I += h.current * h.current;
            line += h.order % 3 == 0 ? 0 : 3 * h.voltage * h.voltage;  // the third harmonics cancel
            distortionV += h.order == 1 ? 0 : h.voltage * h.voltage;
            distortionI += h.order == 1 ? 0 : h.current * h.current;
        }
        V = std::sqrt(V);
        I = std::sqrt(I);
        line = std::sqrt(line);
        distortionV = 100 * std::sqrt(distortionV) / harmonics[0].voltage;
        distortionI = 100 * std::sqrt(distortionI) / harmonics[0].current;
    }
};

/// 200 whole periods at 10 kHz; phases b and c lag by a third and two thirds of the period.
std::vector<double> waveform(std::uint32_t phase, bool current) {
    std::vector<double> x(10000);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const long double angle = 1.8L * static_cast<long double>(i) - 120.0L * phase;
        long double sum = 0;
        for (const Harmonic& h : harmonics) {
            const long double shift = current ? h.currentAngle : h.voltageAngle;
            sum += (current ? h.current : h.voltage) * std::cos((h.order * angle + shift) * degree);
        }
        x[i] = static_cast<double>(std::numbers::sqrt2_v<long double> * sum);
    }
    return x;
}

std::map<std::string, double> measure(std::uint32_t power) {
    Call call;
    for (const std::int32_t kind : {Call::voltage, Call::current}) {
        for (std::uint32_t phase = 0; phase < 3; ++phase) {
            call.add(kind, phase, waveform(phase, kind == Call::current));
        }
    }
    call.request.samplesNumber = 10000;
    call.request.inputType = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
    call.request.options.measurementFlags = RT305_4_SIMULATED_SOURCE_MASK | RT305_4_FOUR_WIRE | power;
    EXPECT_EQ(call.run(), 1);
    std::map<std::string, double> parameters;
    const json document = json::parse(call.texts[Call::parameters]);
    for (const json& row : document.at("paramData")) {
        if (row.at("dataName").is_number()) {
            parameters[row.at("LastName")] = row.at("dataName");
        }
    }
    return parameters;
}

TEST(PowerDefinitions, EveryMethodKeepsItsClosedForm) {
    const ClosedForm x;
    const long double S = x.V * x.I;
    const long double N = std::sqrt(S * S - x.P * x.P);
    const long double budeanuS = std::hypot(x.P, x.budeanu);
    // The two-wattmeter methods take the angles of the fundamentals with the RMS values of everything. Ia leads Ua by
    // -30 and Ic leads Ub by 210 degrees; against Ub - Ua and Ub - Uc the currents lead by 120 and 180 degrees.
    const long double W = x.line * x.I;
    const auto cosine = [](int angle) { return std::cos(angle * degree); };
    const auto sine = [](int angle) { return std::sin(angle * degree); };
    const long double twoP = W * (cosine(-30) + cosine(210));
    const long double twoQ = W * (sine(-30) + sine(210));
    const long double lineP = W * (std::fabs(cosine(120)) + std::fabs(cosine(180)));
    const long double lineQ = W * (std::fabs(sine(120)) + std::fabs(sine(180)));
    struct Case {
        std::uint32_t power;
        long double P, Q, S;
        bool perPhase;
    };
    const std::vector<Case> cases{
        {RT305_4_POWER_THREE_WATTMETER, 3 * x.P, 3 * N, 3 * S, true},
        {RT305_4_POWER_TWO_WATTMETER, twoP, twoQ, std::hypot(twoP, twoQ), false},
        {RT305_4_POWER_TWO_WATTMETER_PHASE, lineP, lineQ, std::hypot(lineP, lineQ), false},
        {RT305_4_POWER_THREE_WATTMETER_COMPLEX, 3 * x.P, 3 * x.budeanu, 3 * budeanuS, true},
    };
    for (const Case& c : cases) {
        std::map<std::string, long double> expected{{"P", c.P}, {"Q", c.Q}, {"S", c.S}};
        for (const std::string phase : {"a", "b", "c"}) {
            for (const std::string quantity : {"P", "Q", "S"}) {
                if (c.perPhase) {
                    expected[quantity + phase] = expected[quantity] / 3;
                }
            }
            expected["Ud" + phase] = x.V;
            expected["Id" + phase] = x.I;
            expected["THD_V" + phase] = x.distortionV;
            expected["THD_I" + phase] = x.distortionI;
        }
        expected["Udab"] = expected["Udbc"] = expected["Udca"] = x.line;
        expected["Ud0"] = harmonics[1].voltage;
        const std::map<std::string, double> actual = measure(c.power);
        for (const auto& [name, value] : expected) {
            ASSERT_TRUE(actual.contains(name)) << name << ", method " << c.power;
            // A term that cancels (twoP) is held against the largest power of the method.
            const long double scale = std::max(std::fabs(value), name == "P" ? c.S : 0.0L);
            EXPECT_NEAR(actual.at(name), static_cast<double>(value), static_cast<double>(1e-10L * scale))
                << name << ", method " << c.power;
        }
    }
}

}  // namespace
