// The spectrum texts of every combination of options against their definition, computed in extended precision.

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "adapter/nlohmann/json.h"
#include "support/plain.h"
#include "support/request.h"
#include "support/signals.h"

namespace {

using nlohmann::json;
using Row = std::vector<long double>;

constexpr long double tolerance = 1e-13L;  // relative to the largest line of a row

/// What depends on the input type and on the kind of channel.
struct Kind {
    std::uint32_t type;
    std::uint32_t firstChannel;  // 0: voltages, 3: currents
    std::size_t longPadding;     // of mode 1
    double rate;                 // Hz
    double limit;                // of mode 1, Hz
};
constexpr Kind kinds[]{
    {4, 0, 4, 500.0, 250.0}, {8, 3, 16, 500.0, 250.0}, {21, 0, 4, 10000.0, 1000.0}, {21, 3, 16, 10000.0, 1000.0}};

struct Setting {
    bool levels;
    bool byCriterion;
    double criterion;
    std::int16_t wanted;
};
constexpr Setting settings[]{
    {false, false, 0.0, 12}, {true, false, 0.0, 25}, {false, true, 4.0, 30}, {true, true, -45.0, 25}};

/// An offset, noise and lines. In phase a the largest line is above 1000 Hz at a rate of 10 kHz.
signals::Samples signalOf(std::size_t n, std::uint32_t channel) {
    const double above = channel % 3 == 0 ? 170.0 : 40.0;
    return signals::wave(signals::noise(n, 10 * n + channel, 3.0),
                         {{100.0, 200.0, channel % 3 + 0.0}, {20.0, 613.0}, {5.0, 871.0, 1.0}, {above, 3170.0}});
}

long double windowAt(std::uint32_t window, std::size_t k, std::size_t n) {
    if (n == 1 || window == RT305_4_SPECTRUM_WINDOW_RECT) {
        return 1.0L;
    }
    if (window == RT305_4_SPECTRUM_WINDOW_HANN) {
        return plain::raisedCosine(k + 1, n + 1);
    }
    return window == RT305_4_SPECTRUM_WINDOW_HAMMING ? 0.08L + 0.92L * plain::raisedCosine(k, n - 1)
                                                     : plain::kaiser(k, n, 0.5L);
}

/// 2 |X[k]| / n of the centred and windowed samples, for the whole half spectrum.
Row amplitudesOf(const signals::Samples& x, std::uint32_t window, std::size_t nfft) {
    const auto n = static_cast<long double>(x.size());
    const long double mean = std::accumulate(x.begin(), x.end(), 0.0L) / n;
    Row row;
    for (std::size_t k = 0; k < x.size(); ++k) {
        row.push_back((x[k] - mean) * windowAt(window, k, x.size()));
    }
    const auto bins = plain::halfSpectrum(row, nfft);
    row.resize(bins.size());
    std::transform(bins.begin(), bins.end(), row.begin(), [n](auto bin) { return 2.0L * std::abs(bin) / n; });
    return row;
}

/// k fs / nfft for k = 0 ... nfft / 2. Whole steps are multiples of the step. Others are filled from both ends, where
/// the last frequency is exactly fs / 2 when the sum of the steps differs from it by rounding only.
std::vector<double> axisOf(double fs, std::size_t nfft) {
    const double step = fs / static_cast<double>(nfft);
    const std::size_t last = nfft / 2;
    const double sum = static_cast<double>(last) * step;
    const double end = std::fabs(sum - fs / 2.0) < 4.440892098500626e-16 * (fs / 2.0) ? fs / 2.0 : sum;
    const bool whole = step == std::floor(step);
    std::vector<double> axis(last + 1);
    for (std::size_t k = 0; k <= last; ++k) {
        const bool upper = !whole && 2 * k > last;
        axis[k] = upper ? end - static_cast<double>(last - k) * step : static_cast<double>(k) * step;
    }
    if (!whole && last % 2 == 0) {
        axis[last / 2] = end / 2.0;
    }
    return axis;
}

/// One row of a document against its axis and the amplitudes of the whole half spectrum.
void checkRow(const json& row, Row exact, const std::vector<double>& axis, const Setting& setting) {
    const long double largest = *std::max_element(exact.begin(), exact.end());
    const auto amplitude = [&](long double value) {
        return setting.levels ? largest * std::pow(10.0L, value / 20.0L) : value;
    };
    exact.resize(axis.size());
    if (setting.levels) {
        exact[0] = exact[1];
    }
    const json& values = row.at("dataTnv");
    ASSERT_EQ(values.size(), axis.size());
    ASSERT_EQ(row.at("dataTnvf"), json(axis));
    for (std::size_t k = 0; k < axis.size(); ++k) {
        if (setting.levels && largest == 0.0L) {
            ASSERT_TRUE(values[k].is_null());
            continue;
        }
        const long double value = values[k].is_null() ? -HUGE_VALL : values[k].get<double>();
        ASSERT_LE(std::fabs(amplitude(value) - exact[k]), tolerance * largest) << "bin " << k;
    }
    const auto expected = setting.byCriterion
                              ? plain::peaks(exact, amplitude(setting.criterion), setting.wanted, true)
                              : plain::peaks(exact, -HUGE_VALL, std::min<int>(setting.wanted, 20), false);
    const json& maxima = row.at("paramData");
    ASSERT_EQ(maxima.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(maxima[i], json({{"fi", axis[expected[i]]}, {"mag", values[expected[i]]}})) << "maximum " << i;
    }
}

/// One length, window and mode under every setting.
void checkSettings(const Kind& kind, std::size_t n, std::uint32_t window, std::uint32_t mode) {
    const bool cut = mode == RT305_4_SPECTRUM_MODE_1;
    const std::size_t nfft = (cut ? kind.longPadding : 2) * n;
    const auto limit = static_cast<std::size_t>(kind.limit * static_cast<double>(nfft) / kind.rate);
    std::vector<double> axis = axisOf(kind.rate, nfft);
    axis.resize(cut ? std::min(limit + 1, axis.size()) : axis.size());
    support::Call call(kind.type, RT305_4_OPERATION_SPECTRUM,
                       support::sixChannels([n](std::uint32_t channel) { return signalOf(n, channel); }));
    Row amplitudes[3];
    for (std::uint32_t phase = 0; phase < 3; ++phase) {
        amplitudes[phase] = amplitudesOf(call.samples[kind.firstChannel + phase], window, nfft);
    }
    for (const Setting& setting : settings) {
        call.request.options.spectrumFlags = window | mode | (setting.levels ? RT305_4_SPECTRUM_LEVEL_DB : 0) |
                                             (setting.byCriterion ? RT305_4_SPECTRUM_CRITERION : 0);
        call.request.auxValue = setting.criterion;
        call.request.auxMode = setting.wanted;
        ASSERT_TRUE(call.run());
        const json rows = json::parse(call.text(kind.firstChannel == 0 ? 3 : 4)).front();
        for (std::size_t phase = 0; phase < 3; ++phase) {
            SCOPED_TRACE(testing::Message() << "type " << kind.type << ", channel " << kind.firstChannel + phase
                                            << ", n " << n << ", flags " << call.request.options.spectrumFlags);
            const char* const unit = kind.firstChannel == 0 ? "U, V" : "I, A";
            EXPECT_EQ(rows[phase].at("LastNameY"), setting.levels ? "L,dB" : unit);
            checkRow(rows[phase], amplitudes[phase], axis, setting);
        }
    }
}

TEST(SpectrumReference, EveryCombinationFollowsTheDefinition) {
    REQUIRE_EXTENDED_PRECISION();
    for (const std::size_t n : {1, 2, 3, 5, 500, 983, 2000}) {
        for (const Kind& kind : kinds) {
            for (std::uint32_t window = 0; window < 4; ++window) {
                for (const std::uint32_t mode : {RT305_4_SPECTRUM_MODE_1, RT305_4_SPECTRUM_MODE_2}) {
                    checkSettings(kind, n, window << 24U, mode);
                }
            }
        }
    }
}

}  // namespace
