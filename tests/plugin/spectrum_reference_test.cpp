// The spectrum texts of every combination of options against their definition, computed in extended precision.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <random>

#include "adapter/nlohmann/json.h"
#include "extended_precision.h"
#include "plugin_host.h"
#include "toolkit/long_double_fft.h"

namespace {

using nlohmann::json;
using Row = std::vector<long double>;

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr long double tolerance = 1e-13L;  // of a row's largest line

/// What differs between the quantities of each input type.
struct Kind {
    std::uint32_t type;
    std::int32_t quantity;
    Call::Text text;
    const char* table;
    const char* letter;
    const char* axis;
    int longPadding;
    double rate;
    double limit;
};
const Kind kinds[]{
    {4, Call::voltage, Call::spectrumU, "spectrumDataU", "V", "U, V", 4, 500.0, 250.0},
    {8, Call::current, Call::spectrumI, "spectrumDataI", "I", "I, A", 16, 500.0, 250.0},
    {21, Call::voltage, Call::spectrumU, "spectrumDataU", "V", "U, V", 4, 10000.0, 1000.0},
    {21, Call::current, Call::spectrumI, "spectrumDataI", "I", "I, A", 16, 10000.0, 1000.0},
};

/// An offset, noise and lines, the largest one of phase a above 1000 Hz at a rate of 10 kHz.
std::vector<double> signalOf(std::size_t n, std::int32_t quantity, std::uint32_t phase) {
    std::mt19937_64 random(10 * n + phase + 3 * static_cast<std::uint64_t>(quantity));
    std::normal_distribution<double> normal(3.0, 1.0);
    std::vector<double> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double t = 6.283185307179586 * static_cast<double>(i);
        x[i] = normal(random) + 100.0 * std::cos(0.02 * t + phase) + 20.0 * std::cos(0.0613 * t) +
               5.0 * std::cos(0.0871 * t + 1.0) + (phase == 0 ? 170.0 : 40.0) * std::cos(0.317 * t);
    }
    return x;
}

/// Six channels of n samples, already in volts and amperes.
void fill(Call& call, std::uint32_t type, std::size_t n) {
    for (const std::int32_t quantity : {Call::voltage, Call::current}) {
        for (std::uint32_t phase = 0; phase < 3; ++phase) {
            call.add(quantity, phase, signalOf(n, quantity, phase));
        }
    }
    call.request.samplesNumber = n;
    call.request.inputType = type;
    call.request.operation = RT305_4_OPERATION_SPECTRUM;
    call.request.options.measurementFlags = RT305_4_SIMULATED_SOURCE_MASK;
}

json rowsOf(const Call& call, const Kind& kind) {
    json document = json::parse(call.texts[kind.text]);
    EXPECT_EQ(document.size(), 1U);
    return document.at(kind.table);
}

long double i0(long double z) {
    long double term = 1.0L;
    long double sum = 1.0L;
    for (int k = 1; term > sum * 1e-22L; ++k) {
        term *= z * z / (4.0L * k * k);
        sum += term;
    }
    return sum;
}

long double windowAt(std::uint32_t window, std::size_t k, std::size_t n) {
    const long double twoPi = 8.0L * std::atan(1.0L);
    const long double last = static_cast<long double>(n) - 1.0L;
    const long double at = static_cast<long double>(k);
    if (n == 1 || window == RT305_4_SPECTRUM_WINDOW_RECT) {
        return 1.0L;
    }
    if (window == RT305_4_SPECTRUM_WINDOW_HANN) {
        return 0.5L - 0.5L * std::cos(twoPi * (at + 1.0L) / (last + 2.0L));
    }
    if (window == RT305_4_SPECTRUM_WINDOW_HAMMING) {
        return 0.54L - 0.46L * std::cos(twoPi * at / last);
    }
    const long double r = 2.0L * at / last - 1.0L;
    return i0(0.5L * std::sqrt((1.0L - r) * (1.0L + r))) / i0(0.5L);
}

/// 2 |X[k]| / n of the windowed, centred row, for the whole half spectrum.
Row amplitudesOf(LongDoubleFft& fft, const std::vector<double>& x, std::uint32_t window) {
    const std::size_t n = x.size();
    long double sum = 0.0L;
    for (const double sample : x) {
        sum += sample;
    }
    Row weighted;
    for (std::size_t k = 0; k < n; ++k) {
        weighted.push_back((x[k] - sum / static_cast<long double>(n)) * windowAt(window, k, n));
    }
    Row amplitudes;
    for (const std::complex<long double> bin : fft.transform(weighted)) {
        amplitudes.push_back(2.0L * std::abs(bin) / static_cast<long double>(n));
    }
    return amplitudes;
}

/// k fs / nfft for k = 0 ... nfft / 2: whole steps as multiples; all others from both ends towards the middle, where
/// the end is fs / 2 itself when the sum of the steps differs from it by rounding only.
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

/// Positions of the maxima that a row shows, in the order of the document.
std::vector<std::size_t> maximaOf(const Row& row, bool byCriterion, long double criterion, int wanted) {
    std::vector<std::size_t> found;
    for (std::size_t k = 1; k + 1 < row.size(); ++k) {
        std::size_t next = k + 1;
        while (next + 1 < row.size() && row[next] == row[k]) {
            ++next;
        }
        if (row[k] > row[k - 1] && row[k] > row[next] && (!byCriterion || row[k] > criterion)) {
            found.push_back(k);
        }
    }
    std::stable_sort(found.begin(), found.end(), [&](std::size_t a, std::size_t b) { return row[a] > row[b]; });
    const int most = std::max(byCriterion ? wanted : std::min(wanted, 20), 0);
    found.resize(std::min(found.size(), static_cast<std::size_t>(most)));
    if (byCriterion) {
        std::sort(found.begin(), found.end());
    }
    return found;
}

struct Setting {
    bool levels;
    bool byCriterion;
    double criterion;
    std::int16_t wanted;

    std::uint32_t flags() const {
        return (levels ? RT305_4_SPECTRUM_LEVEL_DB : 0U) | (byCriterion ? RT305_4_SPECTRUM_CRITERION : 0U);
    }
};

/// One row of a document against the amplitudes of its whole half spectrum.
void checkRow(const json& row, const Row& amplitudes, std::size_t kept, const std::vector<double>& axis,
              const Setting& setting) {
    const long double largest = *std::max_element(amplitudes.begin(), amplitudes.end());
    Row exact(amplitudes.begin(), amplitudes.begin() + static_cast<std::ptrdiff_t>(kept));
    if (setting.levels) {
        exact[0] = amplitudes[1];
    }
    const json& values = row.at("dataTnv");
    ASSERT_EQ(values.size(), kept);
    ASSERT_EQ(row.at("dataTnvf").get<std::vector<double>>(),
              std::vector<double>(axis.begin(), axis.begin() + static_cast<std::ptrdiff_t>(kept)));
    for (std::size_t k = 0; k < kept; ++k) {
        if (setting.levels && largest == 0.0L) {
            ASSERT_TRUE(values[k].is_null());
            continue;
        }
        const long double value = values[k].is_null() ? -static_cast<long double>(inf) : values[k].get<double>();
        const long double amplitude = setting.levels ? largest * std::pow(10.0L, value / 20.0L) : value;
        ASSERT_LE(std::fabs(amplitude - exact[k]), tolerance * largest) << "bin " << k;
    }
    const long double criterion =
        setting.levels ? largest * std::pow(10.0L, setting.criterion / 20.0L) : setting.criterion;
    const auto expected = maximaOf(exact, setting.byCriterion, criterion, setting.wanted);
    const json& maxima = row.at("paramData");
    ASSERT_EQ(maxima.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const json line{{"fi", axis[expected[i]]}, {"mag", values[expected[i]]}};
        ASSERT_EQ(maxima[i], line) << "maximum " << i;
    }
}

/// One length, window and transform mode under every setting of one input type.
void checkSettings(const Kind& kind, std::size_t n, std::uint32_t window, std::uint32_t mode) {
    const bool cut = mode == RT305_4_SPECTRUM_MODE_1;
    const std::size_t factor = cut ? static_cast<std::size_t>(kind.longPadding) : 2;
    const std::size_t nfft = factor * n;
    const auto limit = static_cast<std::size_t>(kind.limit * static_cast<double>(nfft) / kind.rate);
    const std::size_t kept = cut ? std::min(limit, nfft / 2) + 1 : nfft / 2 + 1;
    const std::vector<double> axis = axisOf(kind.rate, nfft);
    LongDoubleFft fft(nfft);
    Row amplitudes[3];
    for (std::uint32_t phase = 0; phase < 3; ++phase) {
        amplitudes[phase] = amplitudesOf(fft, signalOf(n, kind.quantity, phase), window);
    }
    for (const Setting& setting : {Setting{false, false, 0.0, 12}, Setting{true, false, 0.0, 25},
                                   Setting{false, true, 4.0, 30}, Setting{true, true, -45.0, 25}}) {
        Call call;
        fill(call, kind.type, n);
        call.request.options.spectrumFlags = window | mode | setting.flags();
        call.request.auxValue = setting.criterion;
        call.request.auxMode = setting.wanted;
        ASSERT_EQ(call.run(), 1);
        const json rows = rowsOf(call, kind);
        ASSERT_EQ(rows.size(), 3U);
        for (std::size_t phase = 0; phase < 3; ++phase) {
            SCOPED_TRACE(std::string(kind.table) + " of type " + std::to_string(kind.type) + ", phase " +
                         std::to_string(phase) + ", n " + std::to_string(n) + ", flags " +
                         std::to_string(call.request.options.spectrumFlags));
            const json& row = rows[phase];
            EXPECT_EQ(row.size(), 6U);
            EXPECT_EQ(row.at("name"), std::string(kind.letter) + "abc"[phase]);
            EXPECT_EQ(row.at("LastNameX"), "Frequency, Hz");
            EXPECT_EQ(row.at("LastNameY"), setting.levels ? "L,dB" : kind.axis);
            checkRow(row, amplitudes[phase], kept, axis, setting);
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

TEST(SpectrumReference, LevelsReferToTheLargestLineOfTheWholeHalfSpectrum) {
    for (const std::int32_t quantity : {Call::voltage, Call::current}) {
        const Kind& kind = kinds[quantity == Call::voltage ? 2 : 3];
        Call call;
        fill(call, kind.type, 1000);
        for (std::vector<double>& x : call.samples) {
            const std::vector<double> inside = sine(1000, 0.1, 200.0);
            x = sine(1000, 10.0, 3000.0);
            std::transform(x.begin(), x.end(), inside.begin(), x.begin(), std::plus<>());
        }
        call.request.options.spectrumFlags = RT305_4_SPECTRUM_LEVEL_DB | RT305_4_SPECTRUM_WINDOW_HANN;
        call.request.auxMode = 1;
        ASSERT_EQ(call.run(), 1);
        for (const json& row : rowsOf(call, kind)) {
            EXPECT_EQ(row.at("paramData")[0].at("fi"), 200.0);
            EXPECT_NEAR(row.at("paramData")[0].at("mag").get<double>(), -40.0, 1e-3);
        }
    }
}

TEST(SpectrumReference, MissingSamplesGiveNoNumbersAndSilenceGivesNoLevels) {
    for (const bool levels : {false, true}) {
        for (const double sample : {0.0, nan}) {
            Call call;
            fill(call, 21, 64);
            call.request.options.spectrumFlags = Setting{levels, false, 0.0, 0}.flags();
            call.request.auxMode = 20;
            call.samples[1] = std::vector<double>(64, 0.0);
            call.samples[1][40] = sample;
            call.samples[5] = call.samples[1];
            ASSERT_EQ(call.run(), 1);
            for (const auto& [kind, phase] : {std::pair(kinds[2], 1), std::pair(kinds[3], 2)}) {
                const json row = rowsOf(call, kind).at(static_cast<std::size_t>(phase));
                EXPECT_GT(row.at("dataTnv").size(), 0U);
                const bool isNull = levels || std::isnan(sample);
                for (const json& value : row.at("dataTnv")) {
                    ASSERT_EQ(value.dump(), isNull ? "null" : "0.0");
                }
                EXPECT_FALSE(row.at("dataTnvf")[1].is_null());
                EXPECT_TRUE(row.at("paramData").empty());
            }
        }
    }
}

TEST(SpectrumReference, CountsAndCriteriaBoundTheMaxima) {
    const struct {
        std::int16_t wanted;
        double criterion;
        std::size_t byCount;
        std::size_t byCriterion;
    } cases[]{
        {0, -inf, 0, 0},  {-1, -inf, 0, 0},   {-32768, -inf, 0, 0}, {3, -inf, 3, 3}, {3, inf, 3, 0},
        {25, nan, 20, 0}, {25, -inf, 20, 25}, {20, 0.0, 20, 0},     {1, -0.1, 1, 0}, {1, -20.0, 1, 1},
    };
    for (const auto& c : cases) {
        for (const bool byCriterion : {false, true}) {
            Call call;
            fill(call, 21, 500);
            call.request.options.spectrumFlags = Setting{true, byCriterion, 0.0, 0}.flags();
            call.request.auxValue = c.criterion;
            call.request.auxMode = c.wanted;
            ASSERT_EQ(call.run(), 1);
            // Of phase a the largest line lies above the band, 5 dB above the largest one inside.
            const json maxima = rowsOf(call, kinds[2])[0].at("paramData");
            EXPECT_EQ(maxima.size(), byCriterion ? c.byCriterion : c.byCount) << c.wanted << " above " << c.criterion;
        }
    }
}

TEST(SpectrumReference, TheRequestsRateHasNoEffect) {
    for (const Kind& kind : kinds) {
        std::string expected;
        for (const double rate : {500.0, 10000.0, nan, inf, -inf, -1.0, 1e-300, 1e300, 5e-324}) {
            Call call;
            fill(call, kind.type, 200);
            call.request.sampleRate = rate;
            call.request.auxMode = 5;
            ASSERT_EQ(call.run(), 1);
            expected = expected.empty() ? call.texts[kind.text] : expected;
            EXPECT_EQ(call.texts[kind.text], expected) << kind.type << " at " << rate;
        }
    }
}

}  // namespace
