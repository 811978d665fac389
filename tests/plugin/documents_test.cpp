// The texts of operations 1 and 3 against their definitions.

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "adapter/nlohmann/json.h"
#include "support/request.h"
#include "support/signals.h"

namespace {

using nlohmann::json;
using signals::Samples;
using support::Call;

// --- Operation 1 ---

/// Conditioned samples and their statistics in long double, summed from left to right.
struct Reference {
    std::vector<long double> y;
    long double statistics[4]{};  // mean, RMS, peak to RMS, peak to peak

    Reference(const Samples& x, long double coefficient) {
        const auto n = static_cast<long double>(x.size());
        long double sum = 0, zeros = 0;
        for (const double v : x) {
            sum += v;
            zeros += v == 0.0;
        }
        const long double gapMean = n == zeros ? 0 : sum / (n - zeros);
        const long double offset = (sum + zeros * gapMean) / n;
        long double squares = 0, total = 0, low = NAN, high = NAN;
        for (const double v : x) {
            y.push_back(((v == 0.0 ? gapMean : v) - offset) * coefficient);
            total += y.back();
            squares += y.back() * y.back();
            low = std::fmin(low, y.back());
            high = std::fmax(high, y.back());
        }
        const long double rms = std::sqrt(squares / n);
        const long double values[]{total / n, rms, std::fmax(-low, high) / rms, high - low};
        std::copy(std::begin(values), std::end(values), statistics);
    }
};

void expectNear(const json& found, long double expected, long double tolerance) {
    ASSERT_EQ(found.is_null(), std::isnan(expected)) << found << " is not " << expected;
    if (!found.is_null()) {
        ASSERT_NEAR(found.get<double>(), static_cast<double>(expected), static_cast<double>(tolerance));
    }
}

TEST(Documents, SignalTextsHoldConditionedSamplesAndTheirStatistics) {
    std::vector<Samples> six = support::sixChannels([](std::uint32_t channel) {
        return signals::wave(signals::noise(1000, channel, 3.0, 20.0), {{311.0, 50.0, 1.0}});
    });
    std::fill(six[1].begin() + 100, six[1].begin() + 164, 0.0);  // missing samples
    six[2][500] = NAN;
    six[3].assign(1000, 0.0);
    six[4] = signals::cosine(1000, 1e-9, 49.7);
    Call call(RT305_4_INPUT_VOLTAGES_AND_CURRENTS, RT305_4_OPERATION_SIGNALS, six);
    for (ChannelData& channel : call.channels) {
        channel.coefficient = channel.signalKind == RT305_4_KIND_VOLTAGE ? 100.0 : -2.5;
    }
    ASSERT_TRUE(call.run());
    for (std::size_t channel = 0; channel < 6; ++channel) {
        SCOPED_TRACE(channel);
        const Reference expected(six[channel], channel < 3 ? 100.0L : -2.5L);
        const json row = json::parse(call.text(channel < 3 ? 1 : 2)).front()[channel % 3];
        ASSERT_EQ(row.at("dataName").size(), expected.y.size());
        for (std::size_t i = 0; i < expected.y.size(); ++i) {
            expectNear(row.at("dataName")[i], expected.y[i], 1e-12L * expected.statistics[1]);
        }
        if (channel != 2) {  // to the bit, as up to 1024 samples are summed from left to right
            const Samples x = row.at("dataName");
            EXPECT_EQ(row.at("paramData")[0].at("dataName"), std::accumulate(x.begin(), x.end(), 0.0) / 1000.0);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            const long double scale = i == 2 ? expected.statistics[2] : expected.statistics[1];
            expectNear(row.at("paramData")[i].at("dataName"), expected.statistics[i], 1e-12L * scale);
        }
    }
}

TEST(Documents, SignalTextOfAConstantChannelIsFixedToTheByte) {
    Call call(RT305_4_INPUT_VOLTAGES, RT305_4_OPERATION_SIGNALS, {{2, 2, 2}, {2, 2, 2}, {2, 2, 2}});
    ASSERT_TRUE(call.run());
    const std::string row = R"("LastNameX":"Sample","LastNameY":"Voltage, V","dataName":[0.0,0.0,0.0],"paramData":[)"
                            R"({"LastName":"mean","UomName":"V","dataName":0.0},)"
                            R"({"LastName":"rms","UomName":"V","dataName":0.0},)"
                            R"({"LastName":"peak2rms","UomName":"V","dataName":null},)"
                            R"({"LastName":"peak2peak","UomName":"V","dataName":0.0}]})";
    EXPECT_EQ(call.text(RT305_4_TEXT_SIGNALS_U), R"({"signalDataU":[{"LastName":"Va",)" + row +
                                                     R"(,{"LastName":"Vb",)" + row + R"(,{"LastName":"Vc",)" + row +
                                                     "]}");
}

// --- Operation 3 ---

struct HarmonicCase {
    std::uint32_t type;
    double rate;  // Hz, assumed for the type
    std::size_t n;
    std::size_t shown;      // harmonics in each row
    double frequencies[3];  // fundamentals, Hz
};

/// Amplitude a / k at every harmonic k up to half the rate; the currents are a tenth of the voltages.
double amplitudeOf(std::uint32_t channel) {
    return (10.0 + channel % 3) * (channel < 3 ? 1.0 : 0.1);
}

TEST(Operations, DistortionTextsHoldTheHarmonicsOfEachPhase) {
    for (const HarmonicCase& c :
         {HarmonicCase{4, 500.0, 1000, 5, {40.0, 37.3, 70.0}}, HarmonicCase{8, 500.0, 1001, 5, {31.0, 45.0, 61.7}},
          HarmonicCase{21, 10000.0, 5000, 40, {210.0, 180.3, 340.0}}}) {
        Call call(c.type, RT305_4_OPERATION_DISTORTION, support::sixChannels([&](std::uint32_t channel) {
                      std::vector<signals::Cosine> lines;
                      const double fundamental = c.frequencies[channel % 3];
                      for (int k = 1; k * fundamental < c.rate / 2.0; ++k) {
                          lines.push_back({amplitudeOf(channel) / k, k * fundamental, 0.7 * k});
                      }
                      return signals::wave(Samples(c.n), lines, c.rate);
                  }));
        ASSERT_TRUE(call.run());
        for (std::uint32_t channel = c.type == 8 ? 3 : 0; channel < (c.type == 4 ? 3U : 6U); ++channel) {
            const json row = json::parse(call.text(channel < 3 ? 5 : 6)).front()[channel % 3];
            ASSERT_EQ(row.at("dataX").size(), c.shown);
            ASSERT_EQ(row.at("dataY").size(), c.shown);
            for (std::size_t i = 0; i < c.shown; ++i) {
                const double k = static_cast<double>(i) + 1.0;
                const double frequency = k * c.frequencies[channel % 3];
                const bool measured = frequency <= c.rate / 2.0;
                SCOPED_TRACE(testing::Message() << "type " << c.type << ", channel " << channel << ", harmonic " << k);
                expectNear(row.at("dataX")[i], measured ? frequency : NAN, 1e-6 * frequency);
                const double level = 20.0 * std::log10(amplitudeOf(channel) / k / std::sqrt(2.0));
                expectNear(row.at("dataY")[i], measured ? level : NAN, 1e-3);
            }
        }
    }
}

}  // namespace
