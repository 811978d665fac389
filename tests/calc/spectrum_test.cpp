// The computation with all seven records given: which stage fills which record, and at what sample rate.

#include "calc/spectrum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "calc/calc_modul_K9_web.h"

namespace calc_modul_K9_web_ns {
namespace {

constexpr int n = 500;
constexpr double inf = std::numeric_limits<double>::infinity();
constexpr std::uint32_t levels = 2;

struct SetOfRecords {
    coder::b_table signals;
    coder::f_table spectrum;
    coder::c_table distortion;

    SetRecords all() { return {&signals, &spectrum, &distortion}; }
};

/// A line at a tenth of the sample rate in every channel.
struct Computed {
    coder::d_table parameters;
    SetOfRecords voltages;
    SetOfRecords currents;
    std::vector<double> x;
    Measurement measurement;

    explicit Computed(double type, std::uint32_t mode, double rate) {
        for (int i = 0; i < n; ++i) {
            x.push_back(5.0 * std::cos(0.6283185307179586 * i) + 0.01 * std::cos(2.0 * i));
        }
        for (std::size_t phase = 0; phase < 3; ++phase) {
            measurement.voltages[phase].samples = x;
            measurement.currents[phase].samples = x;
        }
        measurement.samplesNumber = n;
        measurement.sampleRate = rate;
        measurement.auxMode = 2;
        measurement.inputType = type;
        measurement.measurementFlags = 0x10000000U;
        measurement.processingMode = mode;
    }

    void run() { calc_modul_K9_web(measurement, {&parameters, voltages.all(), currents.all()}); }
};

/// Bins that are kept of a spectrum padded to factor * n samples.
int keptBins(double rate, double limit, int factor) {
    return std::min(static_cast<int>(std::floor(limit * factor * n / rate)), factor * n / 2) + 1;
}

void expectSpectrum(const coder::f_table& spectrum, double rate, double limit, int factor) {
    const int kept = keptBins(rate, limit, factor);
    const double step = rate / (factor * n);
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const coder::row& f = spectrum.frequencies[phase];
        ASSERT_EQ(spectrum.spectra[phase].numel(), kept);
        EXPECT_EQ(spectrum.spectra[phase].size(0), 1) << "a row";
        ASSERT_EQ(f.numel(), kept);
        for (int k = 0; k < kept; k += 7) {
            EXPECT_NEAR(f[k], k * step, 1e-12 * rate);
        }
        const bool shown = 0.1 * rate < limit;
        EXPECT_EQ(spectrum.maxima[phase].frequencies.numel(), 2);
        if (shown) {
            EXPECT_NEAR(spectrum.maxima[phase].frequencies[0], 0.1 * rate, 1e-12 * rate);
            EXPECT_NEAR(spectrum.maxima[phase].magnitudes[0], 5.0, 0.01);
        }
    }
}

void expectSet(const SetOfRecords& records, const Computed& call, int ownType, int padding) {
    const auto type = static_cast<int>(call.measurement.inputType);
    const std::uint32_t mode = type == ownType || type == 21 ? call.measurement.processingMode : 0;
    if (mode != 2) {
        const double rate = call.measurement.sampleRate;
        expectSpectrum(records.spectrum, rate, rate == 500.0 ? 250.0 : 1000.0, padding);
    } else if (type == 21) {
        expectSpectrum(records.spectrum, 10000.0, 1000.0, padding);
    } else {
        expectSpectrum(records.spectrum, 500.0, 250.0, padding);
    }
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const int harmonics = mode != 3 ? 0 : type == 21 ? 40 : 5;
        EXPECT_EQ(records.distortion.frequencies[phase].numel(), harmonics);
        EXPECT_EQ(records.distortion.levels[phase].numel(), harmonics);
        const coder::row& signal = records.signals.variables.signals[phase];
        EXPECT_EQ(signal.numel(), mode == 1 ? n : 1);
        EXPECT_EQ(std::isnan(signal[0]), mode != 1);
        EXPECT_EQ(std::isnan(records.signals.variables.statistics[phase].values[1]), mode != 1);
    }
}

TEST(Spectrum, EveryTypeAndModeFillsItsRecords) {
    for (const double type : {0.0, 4.0, 8.0, 21.0, 4.9, 21.9, 22.0}) {
        for (const std::uint32_t mode : {0U, 1U, 2U, 3U, 7U}) {
            for (const double rate : {500.0, 10000.0, 1000.0, 7001.0}) {
                SCOPED_TRACE("type " + std::to_string(type) + ", mode " + std::to_string(mode) + ", " +
                             std::to_string(rate) + " Hz");
                Computed call(type, mode, rate);
                call.run();
                expectSet(call.voltages, call, 4, 4);
                expectSet(call.currents, call, 8, 16);
                EXPECT_EQ(std::isnan(call.parameters[coder::Parameter::Uda]), std::floor(type) != 21.0);
            }
        }
    }
}

TEST(Spectrum, OddRatesCutTheRowAndTheAxis) {
    const struct {
        double rate;
        int bins;  // of the voltages
        int frequencies;
        double first;
    } cases[]{
        {rtNaN, 1, 1, rtNaN}, {inf, 1, 1, rtNaN},        {-inf, 1, 1, rtNaN},    {-1.0, 1, 1, 0.0},
        {1e300, 1, 1, 0.0},   {1e-300, 1001, 1001, 0.0}, {5e-324, 1001, 0, 0.0}, {0.0, 1001, 0, 0.0},
    };
    for (const auto& c : cases) {
        for (const std::uint32_t flags : {0U, levels}) {
            Computed whole(0.0, 0, 500.0);
            Computed call(0.0, 0, c.rate);
            whole.measurement.spectrumFlags = call.measurement.spectrumFlags = flags;
            whole.run();
            call.run();
            const coder::f_table& spectrum = call.voltages.spectrum;
            const coder::row& row = spectrum.spectra[0];
            ASSERT_EQ(row.numel(), c.bins) << c.rate;
            EXPECT_TRUE(std::equal(row.begin(), row.end(), whole.voltages.spectrum.spectra[0].begin())) << c.rate;
            ASSERT_EQ(spectrum.frequencies[0].numel(), c.frequencies) << c.rate;
            if (c.frequencies > 0) {
                EXPECT_TRUE(spectrum.frequencies[0][0] == c.first || std::isnan(c.first)) << c.rate;
            }
            const coder::e_table& maxima = spectrum.maxima[0];
            ASSERT_EQ(maxima.frequencies.numel(), c.bins > 1 ? 2 : 0) << c.rate;
            if (c.frequencies == 0) {
                EXPECT_TRUE(std::isnan(maxima.frequencies[0])) << "a line beyond the axis has no frequency";
            }
        }
    }
}

TEST(Spectrum, AChannelOfAnotherLengthRunsNone) {
    for (const double samplesNumber : {n - 1.0, n + 1.0, 0.0, 1e18, rtNaN}) {
        Computed call(0.0, 2, 500.0);
        call.measurement.samplesNumber = samplesNumber;
        call.run();
        EXPECT_EQ(call.voltages.spectrum.spectra[0].numel() + call.currents.spectrum.frequencies[2].numel(), 0);
    }
    Computed call(0.0, 2, 500.0);
    call.measurement.currents[1].samples = coder::samples(call.x).first(n - 1);
    call.run();
    EXPECT_EQ(call.voltages.spectrum.spectra[1].numel(), 2 * n + 1) << "the other set is not affected";
    for (std::size_t phase = 0; phase < 3; ++phase) {
        EXPECT_EQ(call.currents.spectrum.spectra[phase].numel(), 0);
        EXPECT_EQ(call.currents.spectrum.maxima[phase].frequencies.numel(), 0);
    }
    EXPECT_EQ(call.currents.spectrum.labels[0], "Ia");
    EXPECT_EQ(call.currents.spectrum.verticalAxis[2], "I, A");
}

}  // namespace
}  // namespace calc_modul_K9_web_ns
